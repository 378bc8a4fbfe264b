#include "zelvar/data/options/OptionMemory.h"

#include "zelvar/base/Percent.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace zelvar {

void OptionMemory::Put(Entry entry) {
    m_entries.remove_if([&](Entry const &known) { return known.driver == entry.driver && known.file == entry.file; });
    m_entries.push_front(std::move(entry));
}

void OptionMemory::Note(DString const &driver, DString const &file, DString const &text) {
    if (driver.empty())
        return;
    Put({driver, {}, text});
    if (!file.empty())
        Put({driver, file, text});
    std::size_t files = 0;
    m_entries.remove_if([&](Entry const &entry) { return !entry.file.empty() && ++files > kMostFiles; });
}

DString OptionMemory::For(DString const &driver, DString const &file) const {
    auto const find = [&](DString const &wanted) {
        return std::find_if(m_entries.begin(), m_entries.end(),
                            [&](Entry const &entry) { return entry.driver == driver && entry.file == wanted; });
    };
    auto at = file.empty() ? m_entries.end() : find(file);
    if (at == m_entries.end())
        at = find({});
    return at == m_entries.end() ? DString() : at->text;
}

DString OptionMemory::ToText() const {
    DString text;
    for (Entry const &entry : m_entries)
        text += PercentEncoded(entry.driver) + " " + PercentEncoded(entry.file, true) + " " +
                PercentEncoded(entry.text) + "\n";
    return text;
}

OptionMemory OptionMemory::FromText(DString const &text) {
    OptionMemory memory;
    constexpr std::size_t fields = 3;
    for (DString const &line : Split(text, '\n'))
        if (std::vector<DString> const parts = Split(line, ' '); parts.size() == fields && !parts[0].empty())
            memory.m_entries.push_back({PercentDecoded(parts[0]), PercentDecoded(parts[1]), PercentDecoded(parts[2])});
    return memory;
}

} // namespace zelvar
