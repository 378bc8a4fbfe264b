#include "zelvar/controls/CZelImageList.h"

#include "zelvar/platform/ui/Pictures.h"

#include <QtWidgets/QWidget>

#include <unordered_map>

namespace zelvar {

namespace {

std::unordered_map<unsigned, ImageDescription> &RegisteredIcons() {
    static std::unordered_map<unsigned, ImageDescription> icons;
    return icons;
}

std::unordered_map<unsigned, DString> &RegisteredBitmaps() {
    static std::unordered_map<unsigned, DString> bitmaps;
    return bitmaps;
}

ImageDescription Shape(ImageDescription::Shapes shape, ColorRef fill, ColorRef border) {
    return {.kind = ImageDescription::Kind::Shape, .shape = shape, .fill = fill, .border = border};
}

} // namespace

CZelImageList::CZelImageList() = default;
CZelImageList::~CZelImageList() = default;

void CZelImageList::RegisterIcon(unsigned iconId, DString const &themeName, DString const &fallback) {
    RegisteredIcons()[iconId] = {.name = themeName, .fallback = fallback};
}

void CZelImageList::RegisterBitmap(unsigned bitmapId, DString const &strip) { RegisteredBitmaps()[bitmapId] = strip; }

void CZelImageList::Create(unsigned bitmapId, int cx, int /*grow*/, unsigned long /*mask*/) {
    if (m_list != nullptr)
        return;
    Create();
    m_side = cx;
    auto const bitmap = RegisteredBitmaps().find(bitmapId);
    int const count = bitmap == RegisteredBitmaps().end() ? 0 : platform::StripCount(bitmap->second);
    for (int i = 0; i < count; ++i)
        m_list->Add({.kind = ImageDescription::Kind::Strip, .name = bitmap->second, .index = i});
}

ImageDescription const *CZelImageList::FindIcon(unsigned iconId) {
    auto const icon = RegisteredIcons().find(iconId);
    return icon == RegisteredIcons().end() ? nullptr : &icon->second;
}

void CZelImageList::Create() {
    if (m_list == nullptr)
        m_list = std::make_unique<ImageList>();
}

void CZelImageList::Clear() {
    m_list.reset();
    m_side = platform::kSmallPicture;
}

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
    ImageDescription const *const icon = FindIcon(iconId);
    return icon == nullptr ? -1 : Add(*icon);
}

int CZelImageList::GetCircleSmall(ColorRef fill, ColorRef border) {
    return Add(Shape(ImageDescription::Shapes::SmallCircle, fill, border));
}

int CZelImageList::GetRect(ColorRef fill, ColorRef border) {
    return Add(Shape(ImageDescription::Shapes::Rectangle, fill, border));
}

int CZelImageList::GetCircle(ColorRef fill, ColorRef border, bool flag) {
    using Shapes = ImageDescription::Shapes;
    return Add(Shape(flag ? Shapes::DottedCircle : Shapes::Circle, fill, border));
}

} // namespace zelvar
