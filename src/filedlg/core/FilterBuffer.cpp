#include "zelvar/filedlg/core/FilterBuffer.h"

#include "zelvar/filedlg/core/FilterText.h"

#include <algorithm>
#include <cstring>

namespace zelvar {

namespace {

constexpr std::size_t kEnd = 1; // byte that `FinishFilter` appends

} // namespace

void FilterBuffer::InitFilter() {
    m_text.front() = '\0';
    m_full = false;
}

bool FilterBuffer::Add(DFileFrmt const &format) {
    m_full = m_full || !format.GetFilter(m_text.data(), kSize - kEnd);
    return !m_full;
}

void FilterBuffer::FinishFilter() {
    std::size_t const length = std::strlen(m_text.data()); // at most kSize - kEnd - 1
    m_text[length] = '|';
    m_text[length + 1] = '\0';
}

int IndexOfPattern(std::string_view filter, std::string_view extension) {
    std::vector<FileFilter> const entries = ParseFilterText(filter);
    auto const found = std::find_if(entries.begin(), entries.end(), [extension](FileFilter const &entry) {
        return !entry.masks.empty() && entry.masks.find(extension) != DString::npos;
    });
    return static_cast<int>(found - entries.begin());
}

} // namespace zelvar
