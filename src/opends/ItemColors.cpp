#include "zelvar/opends/ItemColors.h"

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/opends/KindPicture.h"
#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/views/ReportPainter.h"

namespace zelvar {

ItemColors ItemColorsOf(bool selected, bool listHasFocus) {
    using platform::SystemColor, platform::ToQColor;
    QColor back = platform::Themed(selected ? QColor(212, 208, 200) : QColor(Qt::white));
    QColor text = Qt::black;
    if (selected && listHasFocus) {
        bool const isDark = platform::IsPaletteDark(); // a dark blue would not stand out there
        back = isDark ? ToQColor(SystemColor(COLOR_HIGHLIGHT)) : QColor(10, 36, 106);
        text = isDark ? ToQColor(SystemColor(COLOR_HIGHLIGHTTEXT)) : QColor(Qt::white);
    }
    return {back, platform::ThemedInk(text, back)};
}

void DrawItemPicture(QPainter &painter, Rect const &row, DataSourceItem const &item) {
    if (item.GetImageList() != nullptr && item.GetIconIndex() >= 0)
        DrawListPicture(painter, {row.left, row.top}, item.GetImageList(), item.GetIconIndex(), false);
}

void DrawItemOrKindPicture(QPainter &painter, Rect const &row, DataSourceItem const &item) {
    if (KindPicture const picture = PictureOfKind(item); picture.list != nullptr)
        DrawListPicture(painter, {row.left, row.top}, picture.list, picture.index, false);
    else
        DrawItemPicture(painter, row, item);
}

} // namespace zelvar
