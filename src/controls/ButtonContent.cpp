#include "zelvar/controls/ButtonContent.h"

#include <QtWidgets/QStyle>

#include <algorithm>

namespace zelvar {

namespace {

using Align = CZelButton::Align;
using ImageSide = CZelButton::ImageSide;

int Aligned(int from, int room, int size, Align align) {
    if (align == Align::Before)
        return from;
    return align == Align::Behind ? from + room - size : from + (room - size) / 2;
}

} // namespace

ContentPlaces LayOutContent(QRect const &area, QSize const &image, QSize const &text, ImageSide side, Align align,
                            Qt::LayoutDirection direction) {
    bool const both = !image.isEmpty() && !text.isEmpty();
    int const gap = both ? kContentGap : 0;
    QSize const picture = image.isEmpty() ? QSize(0, 0) : image;
    bool const above = side == ImageSide::Above;
    int const mostWidth = above ? area.width() : area.width() - picture.width() - gap;
    QSize const words =
        text.isEmpty() ? QSize(0, 0) : QSize(std::clamp(text.width(), 0, std::max(0, mostWidth)), text.height());
    ContentPlaces places;
    if (above) {
        int const height = picture.height() + gap + words.height();
        int const top = area.top() + (area.height() - height) / 2;
        places.image = QRect(QPoint(Aligned(area.left(), area.width(), picture.width(), align), top), picture);
        places.text = QRect(
            QPoint(Aligned(area.left(), area.width(), words.width(), align), top + picture.height() + gap), words);
    } else {
        int const width = picture.width() + gap + words.width();
        int const left = Aligned(area.left(), area.width(), width, align);
        bool const behind = side == ImageSide::Behind;
        auto const middle = [&](QSize const &size) { return area.top() + (area.height() - size.height()) / 2; };
        places.image = QRect(QPoint(behind ? left + words.width() + gap : left, middle(picture)), picture);
        places.text = QRect(QPoint(behind ? left : left + picture.width() + gap, middle(words)), words);
    }
    places.image = QStyle::visualRect(direction, area, places.image);
    places.text = QStyle::visualRect(direction, area, places.text);
    return places;
}

} // namespace zelvar
