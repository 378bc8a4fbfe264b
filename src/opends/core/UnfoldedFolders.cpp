#include "zelvar/opends/core/UnfoldedFolders.h"

#include "zelvar/base/ByteEscapes.h"

#include <algorithm>

namespace zelvar {

UnfoldedFolders::UnfoldedFolders(std::string_view text) {
    while (!text.empty()) {
        std::string_view const line = text.substr(0, text.find('\n'));
        Add(UnescapeBytes(line));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
    }
}

bool UnfoldedFolders::Contains(DString const &folder) const {
    return std::find(m_folders.begin(), m_folders.end(), folder) != m_folders.end();
}

void UnfoldedFolders::Add(DString const &folder) {
    Remove(folder);
    m_folders.push_back(folder);
    if (m_folders.size() > kMost)
        m_folders.erase(m_folders.begin());
}

void UnfoldedFolders::Remove(DString const &folder) { std::erase(m_folders, folder); }

DString UnfoldedFolders::Text() const {
    DString text;
    for (DString const &folder : m_folders)
        if (folder.find('\n') == DString::npos) // for once then, while the dialog is open
            text.append(text.empty() ? "" : "\n").append(EscapeToUtf8(folder));
    return text;
}

} // namespace zelvar
