#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/ImageList.h"

#include <QtWidgets/QPushButton>

#include <cstdint>

namespace zelvar {

/// Push button with a picture. It adds to the platform's button pictures by name or from an image list, before, behind
/// or above the text; text that may stand at either side; a tip that also names a button without text; a style that
/// stays down, and a flat one that shows its frame only under the mouse and when it is down.
class ZELVAR_API CZelButton : public QPushButton {
    Q_OBJECT

public:
    /// Where text and picture stand in a button that is wider than both. Before is left where one reads from left to
    /// right, and right otherwise.
    enum class Align : std::uint8_t { Before, Center, Behind };
    enum class ImageSide : std::uint8_t { Before, Behind, Above };

    explicit CZelButton(QWidget *parent = nullptr);

    /// One of the pictures of `platform::ResourceIcon`; an empty name takes the picture away.
    void SetImage(DString const &name);
    /// Picture of an image list, which must outlive the button; -1 takes the picture away.
    void SetImage(HIMAGELIST list, int image);
    void SetImageSide(ImageSide side);
    void SetAlign(Align align);
    /// Tool tip, and the button's name for those who cannot see its picture.
    void SetTooltip(DString const &text);
    [[nodiscard]] DString GetWindowText() const;
    void SetWindowText(DString const &text); ///< '&' stands before the letter that presses it with Alt
    void SetFlatStyle(bool flat = true) { setFlat(flat); }
    /// Makes it a button that stays down.
    void SetCheckStyle() { setCheckable(true); }
    void SetCheck(bool down) { setChecked(down); }
    [[nodiscard]] bool GetCheck() const { return isChecked(); }
    void SizeToContent() { resize(sizeHint()); }

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    /// Picture and text into `area`, cut where they do not fit.
    void DrawContent(QPainter &painter, QRect const &area, QColor const &textColor) const;

private:
    ImageSide m_imageSide = ImageSide::Before;
    Align m_align = Align::Center;
};

} // namespace zelvar
