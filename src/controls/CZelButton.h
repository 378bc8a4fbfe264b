#pragma once

#include "zelvar/base/DString.h"

#include <QtWidgets/QPushButton>

namespace zelvar {

/// Push button with a picture, plain or one that stays down.
class ZELVAR_API CZelButton : public QPushButton {
    Q_OBJECT

public:
    explicit CZelButton(QWidget *parent = nullptr);

    /// One of the pictures of `platform::ResourceIcon`; an empty name takes the picture away.
    void SetImage(DString const &name);
    /// Tool tip, and the button's name for those who cannot see its picture.
    void SetTooltip(DString const &text);
    /// Makes it a button that stays down.
    void SetCheckStyle() { setCheckable(true); }
    void SetCheck(bool down) { setChecked(down); }
    [[nodiscard]] bool GetCheck() const { return isChecked(); }
};

} // namespace zelvar
