#include "zelvar/controls/CZelImageList.h"

#include <QtWidgets/QWidget>

#include <unordered_map>

namespace zelvar {

namespace {

std::unordered_map<unsigned, ImageDescription> &RegisteredIcons() {
    static std::unordered_map<unsigned, ImageDescription> icons;
    return icons;
}

} // namespace

CZelImageList::CZelImageList() = default;
CZelImageList::~CZelImageList() = default;

void CZelImageList::RegisterIcon(unsigned iconId, DString const &themeName, DString const &fallback) {
    RegisteredIcons()[iconId] = {.name = themeName, .fallback = fallback};
}

void CZelImageList::Create() {
    if (m_list == nullptr)
        m_list = std::make_unique<ImageList>();
}

void CZelImageList::Clear() { m_list.reset(); }

int CZelImageList::Add(ImageDescription const &description) {
    if (m_list == nullptr)
        return -1;
    int const index = m_list->Add(description);
    if (m_window != nullptr)
        m_window->update();
    return index;
}

int CZelImageList::GetIcon(unsigned iconId, char const *file) {
    if (file != nullptr && *file != '\0')
        return Add({.kind = ImageDescription::Kind::File, .name = file});
    auto const icon = RegisteredIcons().find(iconId);
    return icon == RegisteredIcons().end() ? -1 : Add(icon->second);
}

} // namespace zelvar
