#include "zelvar/controls/CZelImageList.h"

#include "zelvar/platform/ui/Pictures.h"

#include <QtGui/QPainter>
#include <QtWidgets/QWidget>

#include <algorithm>
#include <unordered_map>

namespace zelvar {

namespace {

constexpr double kDisabledOpacity = 0.35;

std::unordered_map<unsigned, ImageDescription> &IconMap() {
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
    IconMap()[iconId] = {.name = themeName, .fallback = fallback};
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
    auto const icon = IconMap().find(iconId);
    return icon == IconMap().end() ? nullptr : &icon->second;
}

std::vector<unsigned> CZelImageList::RegisteredIcons() {
    std::vector<unsigned> numbers;
    for (auto const &[number, icon] : IconMap())
        numbers.push_back(number);
    std::ranges::sort(numbers);
    return numbers;
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

void CZelImageList::SetPictureSide(int side) {
    m_side = std::max(1, side);
    if (m_window != nullptr)
        m_window->update();
}

void CZelImageList::Copy(CZelImageList const &other) {
    if (&other == this)
        return;
    m_list = other.m_list == nullptr ? nullptr : std::make_unique<ImageList>(*other.m_list);
    SetPictureSide(other.m_side);
}

bool CZelImageList::GetImageInfo(int index, ImageDescription &description) const {
    if (index < 0 || index >= GetCount())
        return false;
    description = m_list->Get(index);
    return true;
}

bool CZelImageList::Draw(QPainter &painter, Point at, int index, bool enabled) const {
    QPixmap const picture = platform::ListPicture(GetHandle(), index, painter.device()->devicePixelRatioF(), m_side);
    if (picture.isNull())
        return false;
    double const opacity = painter.opacity();
    painter.setOpacity(enabled ? opacity : opacity * kDisabledOpacity);
    painter.drawPixmap(at.x, at.y, picture);
    painter.setOpacity(opacity);
    return true;
}

QIcon CZelImageList::ExtractIcon(int index) const {
    ImageDescription description;
    return GetImageInfo(index, description) ? platform::DescribedIcon(description) : QIcon();
}

} // namespace zelvar
