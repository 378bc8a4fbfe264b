#include "zelvar/opends/ItemColors.h"

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/platform/ui/ReportPainter.h"

namespace zelvar {

void DrawItemPicture(QPainter &painter, Rect const &row, DataSourceItem const &item) {
    if (item.GetImageList() != nullptr && item.GetIconIndex() >= 0)
        platform::DrawListPicture(painter, {row.left, row.top}, item.GetImageList(), item.GetIconIndex(), false);
}

} // namespace zelvar
