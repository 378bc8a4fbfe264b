#include "zelvar/model/SystemImages.h"

#include "zelvar/base/PathStyle.h"

namespace zelvar {

ImageList &SystemImages() {
    static ImageList &images = *new ImageList; // items on forgotten threads may outlive static objects
    return images;
}

int IconLookup::IndexOf(platform::ShellChild const &child) {
    m_key.assign(1, child.link ? 'l' : '-');
    m_key += static_cast<char>('0' + static_cast<int>(child.kind));
    if (child.kind == platform::ShellKind::File)
        m_key += ExtensionOf(child.name);
    auto const [entry, isNew] = m_known.try_emplace(m_key, -1);
    if (isNew)
        entry->second = SystemImages().Add(m_shell.Icon(child.id, child.link));
    return entry->second;
}

} // namespace zelvar
