#pragma once

class QWidget;

namespace zelvar {

class CZelButton;
namespace platform {
struct DialogItem;
}

// Controls of the open dialog's template that are not the usual ones.

/// A child of the dialog for that item, null for one that is as usual.
[[nodiscard]] QWidget *MakeOpenControl(QWidget &dialog, platform::DialogItem const &item);
/// Makes a tool button of that control of the dialog: flat, with a picture of that name and a tip in the user's
/// language. The control must be there.
CZelButton *SetUpToolButton(QWidget &dialog, int id, char const *picture, char const *tip);

} // namespace zelvar
