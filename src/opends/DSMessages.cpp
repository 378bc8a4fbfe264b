#include "zelvar/opends/DSMessages.h"

namespace zelvar {

const platform::MessageId WM_DS_DATA_SOURCE_SELECTED = platform::RegisterMessage();
const platform::MessageId WM_DS_DATA_SOURCE_DBLCLICK = platform::RegisterMessage();
const platform::MessageId WM_DS_DATA_ITEM_SELECTED = platform::RegisterMessage();
const platform::MessageId WM_DS_DATA_ITEM_DBLCLICK = platform::RegisterMessage();
const platform::MessageId WM_DS_FIRST_PANE_DATA_ITEM_SELECTED = platform::RegisterMessage();
const platform::MessageId WM_DS_FIRST_PANE_DATA_ITEM_DBLCLICK = platform::RegisterMessage();
const platform::MessageId WM_DS_IMAGE_SELECTED = platform::RegisterMessage();
const platform::MessageId WM_DS_IMAGE_DBLCLICK = platform::RegisterMessage();
const platform::MessageId WM_DS_OPTIONS_CHANGED = platform::RegisterMessage();
const platform::MessageId WM_DS_FILTER_CHANGED = platform::RegisterMessage();
const platform::MessageId WM_DS_ROOT_ITEM_CHANGED = platform::RegisterMessage();
const platform::MessageId WM_DS_FIRST_PANE_ROOT_ITEM_CHANGED = platform::RegisterMessage();
const platform::MessageId WM_DS_RESET_PATH_BUTTONS = platform::RegisterMessage();
const platform::MessageId WM_ITEM_CANVAS_READY = platform::RegisterMessage();
const platform::MessageId WM_ITEM_PROPPERTY_MAP_READY = platform::RegisterMessage();
const platform::MessageId WM_DS_APPLY_FILTER = platform::RegisterMessage();
const platform::MessageId WM_DS_APPLY_OPTIONS = platform::RegisterMessage();

} // namespace zelvar
