#include "zelvar/opends/WrapLayout.h"

#include <QtWidgets/QLabel>
#include <QtWidgets/QStyle>

#include <algorithm>

namespace zelvar {

namespace {

int WantedWidth(QLayoutItem const &item) { return item.sizeHint().width(); }

QSize SizeIn(QLayoutItem const &item, int width) {
    int const own = std::max(std::min(WantedWidth(item), width), item.minimumSize().width());
    return {own, item.hasHeightForWidth() ? item.heightForWidth(own) : item.sizeHint().height()};
}

bool Names(QLayoutItem const &item, QLayoutItem const &next) {
    auto const *const label = qobject_cast<QLabel const *>(const_cast<QLayoutItem &>(item).widget());
    return label != nullptr && label->buddy() != nullptr && label->buddy() == const_cast<QLayoutItem &>(next).widget();
}

} // namespace

WrapLayout::WrapLayout(int spacing) { setSpacing(spacing); }

WrapLayout::~WrapLayout() {
    for (QLayoutItem *item : m_items)
        delete item;
}

void WrapLayout::addItem(QLayoutItem *item) { m_items.push_back(item); }

int WrapLayout::count() const { return static_cast<int>(m_items.size()); }

QLayoutItem *WrapLayout::itemAt(int index) const {
    return index >= 0 && index < count() ? m_items[static_cast<std::size_t>(index)] : nullptr;
}

QLayoutItem *WrapLayout::takeAt(int index) {
    QLayoutItem *const item = itemAt(index);
    if (item != nullptr)
        m_items.erase(m_items.begin() + index);
    return item;
}

std::vector<WrapLayout::Placed> WrapLayout::Place(int width) const {
    std::vector<Placed> placed;
    int x = 0, y = 0, lineHeight = 0;
    std::size_t lineBegin = 0;
    auto const endLine = [&] {
        for (std::size_t i = lineBegin; i < placed.size(); ++i)
            placed[i].rect.moveTop(y + (lineHeight - placed[i].rect.height()) / 2);
        y += lineHeight + spacing();
        x = lineHeight = 0;
        lineBegin = placed.size();
    };
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        QLayoutItem const &item = *m_items[i];
        if (item.isEmpty())
            continue; // hidden
        int together = WantedWidth(item);
        if (i + 1 < m_items.size() && Names(item, *m_items[i + 1])) {
            int const both = together + spacing() + WantedWidth(*m_items[i + 1]);
            together = both <= width ? both : together;
        }
        if (x > 0 && x + together > width)
            endLine();
        QSize const size = SizeIn(item, width);
        placed.push_back({m_items[i], QRect(QPoint(x, y), size)});
        x += size.width() + spacing();
        lineHeight = std::max(lineHeight, size.height());
    }
    endLine();
    return placed;
}

int WrapLayout::heightForWidth(int width) const {
    int bottom = 0;
    for (Placed const &placed : Place(width))
        bottom = std::max(bottom, placed.rect.y() + placed.rect.height());
    return bottom;
}

QSize WrapLayout::sizeHint() const {
    QSize size;
    for (QLayoutItem const *item : m_items) {
        if (item->isEmpty())
            continue;
        QSize const hint = item->sizeHint();
        size = {size.width() + hint.width() + (size.isEmpty() ? 0 : spacing()), std::max(size.height(), hint.height())};
    }
    return size.expandedTo({0, 0});
}

QSize WrapLayout::minimumSize() const {
    QSize size(0, 0);
    for (QLayoutItem const *item : m_items)
        size = size.expandedTo(item->minimumSize());
    return size;
}

void WrapLayout::setGeometry(QRect const &rect) {
    QLayout::setGeometry(rect);
    Qt::LayoutDirection const direction =
        parentWidget() == nullptr ? Qt::LeftToRight : parentWidget()->layoutDirection();
    for (Placed const &placed : Place(rect.width()))
        placed.item->setGeometry(QStyle::visualRect(direction, rect, placed.rect.translated(rect.topLeft())));
}

} // namespace zelvar
