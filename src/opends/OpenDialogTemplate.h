#pragma once

#include "zelvar/base/Translation.h"
#include "zelvar/platform/ui/DialogTemplate.h"

#include <array>
#include <iterator>

namespace zelvar {

/// Control ids of the open data source dialog.
enum OpenDialogId {
    kOpenDialog = 6104,
    kOkId = 1,
    kCancelId = 2,
    kSplitterId = 1000,
    kFirstPathButtonId = 2000,
    kLastPathButtonId = 2100,
    kMeasureButtonId = 3001,
    kRestoreLayoutId = 6005,
    kFileFilterId = 6012,
    kSplitterPlaceId = 6013,
    kPathPlaceId = 6016,
    kHistoryId = 6017,
    kFileTypeId = 6018,
    kFavoritesId = 6022,
    kReadOnlyId = 6023,
    kEditOnlyId = 6024,
    kHomeId = 6025,
    kStatusId = 6026,
    kRecursiveId = 6027,
    kLineId = 6028,
    kSearchId = 6029,
};

namespace open_dialog {

using platform::ControlKind;

inline constexpr platform::MoveRule kFill{0, 0, 100, 100};
inline constexpr platform::MoveRule kWiden{0, 0, 100, 0};
inline constexpr platform::MoveRule kTopRight{100, 0, 100, 0};
inline constexpr platform::MoveRule kBottom{0, 100, 100, 100};
inline constexpr platform::MoveRule kBottomLeft{0, 100, 0, 100};
inline constexpr platform::MoveRule kBottomRight{100, 100, 100, 100};

// In tab order.
inline constexpr platform::DialogItem kItems[] = {
    {kHomeId, ControlKind::Button, "", 7, 7, 20, 16, {}},
    {kPathPlaceId, ControlKind::Place, "", 30, 7, 362, 16, kWiden},
    {kFavoritesId, ControlKind::Button, "", 393, 7, 20, 16, kTopRight},
    {kRestoreLayoutId, ControlKind::Button, "", 414, 7, 20, 16, kTopRight},
    {kRecursiveId, ControlKind::CheckButton, "", 434, 7, 20, 16, kTopRight},
    {kSplitterPlaceId, ControlKind::Place, "", 7, 26, 446, 222, kFill},
    {6019, ControlKind::CenteredLabel, Mark("Go to folder"), 8, 252, 157, 8, kBottom},
    {kHistoryId, ControlKind::Combo, "", 8, 262, 157, 81, kBottom},
    {6021, ControlKind::CenteredLabel, Mark("File Name Filter"), 169, 251, 141, 8, kBottomRight},
    {kFileFilterId, ControlKind::Edit, "", 169, 262, 141, 14, kBottomRight},
    {6020, ControlKind::CenteredLabel, Mark("File Type"), 316, 252, 137, 8, kBottomRight},
    {kFileTypeId, ControlKind::DropDownList, "", 316, 262, 137, 79, kBottomRight},
    {kReadOnlyId, ControlKind::CheckBox, Mark("Open as Read-Only"), 9, 279, 74, 10, kBottomLeft, false},
    {kEditOnlyId, ControlKind::CheckBox, Mark("Open as Edit-Only"), 87, 279, 77, 10, kBottomLeft, false},
    {kStatusId, ControlKind::EllipsisLabel, "", 7, 292, 338, 13, kBottom},
    {kOkId, ControlKind::DefaultButton, Mark("OK"), 349, 291, 50, 14, kBottomRight},
    {kCancelId, ControlKind::Button, Mark("Cancel"), 403, 291, 50, 14, kBottomRight},
};

/// The same with the line below the panes, which are lower by as much.
inline constexpr auto kItemsWithLine = [] {
    constexpr int kHeight = 14; // dialog units
    std::array<platform::DialogItem, std::size(kItems) + 1> items{};
    std::size_t at = 0;
    for (platform::DialogItem const &item : kItems) {
        items[at] = item;
        if (item.id != kSplitterPlaceId) {
            ++at;
            continue;
        }
        platform::DialogItem &panes = items[at++];
        panes.h -= kHeight + 1;
        items[at++] = {kLineId, ControlKind::EllipsisLabel, "", panes.x, panes.y + panes.h + 1, panes.w, kHeight,
                       kBottom};
    }
    return items;
}();

} // namespace open_dialog

inline constexpr platform::DialogTemplate kOpenDialogTemplate{
    .id = kOpenDialog, .caption = "", .width = 460, .height = 312, .items = open_dialog::kItems};
inline constexpr platform::DialogTemplate kOpenDialogWithLine{.id = kOpenDialogTemplate.id,
                                                              .caption = kOpenDialogTemplate.caption,
                                                              .width = kOpenDialogTemplate.width,
                                                              .height = kOpenDialogTemplate.height,
                                                              .items = open_dialog::kItemsWithLine};

} // namespace zelvar
