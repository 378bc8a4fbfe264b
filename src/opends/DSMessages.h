#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/platform/ui/WindowMessage.h"

namespace zelvar {

// The protocol between the panes of the open data source dialog. A pane knows its coordinator only as a receiver and
// these numbers; which pane sends which number is decided in one place, DlgOpenDS::CreateViewWnd.
// docs/messages.md holds the same table for readers; a test compares the two.
//
// message                                                  from                  how     parameters         meaning
ZELVAR_API extern const platform::MessageId
    WM_DS_DATA_SOURCE_SELECTED; // DataSourceList posted, DSDataSourceWnd sent on; 0, 0
ZELVAR_API extern const platform::MessageId WM_DS_DATA_SOURCE_DBLCLICK; // DataSourceList posted; 0, 0
ZELVAR_API extern const platform::MessageId
    WM_DS_DATA_ITEM_SELECTED; // folder panes posted: window id, 0; HierarchyList sent: pane index, 0
ZELVAR_API extern const platform::MessageId
    WM_DS_DATA_ITEM_DBLCLICK; // folder panes posted: window id, row; HierarchyList sent: pane index, 0
ZELVAR_API extern const platform::MessageId WM_DS_FIRST_PANE_DATA_ITEM_SELECTED; // DSDataSourceWnd sent; 0, 0
ZELVAR_API extern const platform::MessageId WM_DS_FIRST_PANE_DATA_ITEM_DBLCLICK; // registered, unused
ZELVAR_API extern const platform::MessageId WM_DS_IMAGE_SELECTED;                // main list posted: window id, 0
ZELVAR_API extern const platform::MessageId WM_DS_IMAGE_DBLCLICK;  // main list posted: window id, row; the same as OK
ZELVAR_API extern const platform::MessageId WM_DS_OPTIONS_CHANGED; // DSPropertyWnd posted; 0, 0
ZELVAR_API extern const platform::MessageId WM_DS_FILTER_CHANGED;  // DSPropertyWnd posted; 0, 0; nobody handles it here
ZELVAR_API extern const platform::MessageId WM_DS_ROOT_ITEM_CHANGED;            // HierarchyList sent; 0, 0
ZELVAR_API extern const platform::MessageId WM_DS_FIRST_PANE_ROOT_ITEM_CHANGED; // DSDataSourceWnd sent; 0, 0
ZELVAR_API extern const platform::MessageId WM_DS_RESET_PATH_BUTTONS;           // DlgOpenDS posted to itself; 0, 0
ZELVAR_API extern const platform::MessageId WM_ITEM_CANVAS_READY; // PropertyWorker posted: 1 for a picture, 0 for none
// The spelling is part of the protocol.
ZELVAR_API extern const platform::MessageId WM_ITEM_PROPPERTY_MAP_READY; // PropertyWorker posted; 0, 0
ZELVAR_API extern const platform::MessageId WM_DS_APPLY_FILTER;  // nobody here posts it; DSPropertyWnd handles it
ZELVAR_API extern const platform::MessageId WM_DS_APPLY_OPTIONS; // ImageExtraWnd posted; 0, 0

} // namespace zelvar
