#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/ImageList.h"

#include <QtCore/QPointer>
#include <QtWidgets/QAbstractButton>

#include <optional>

class QMenu;

namespace zelvar {

/// Drop-down bitmap button. It adds to the platform's button pictures of its own for up, down, focused and disabled,
/// and a zone with an arrow: a press there, Alt+Down or F4 shows a menu at once, while the button stays down; without a
/// menu `DropDown` tells the owner instead. A click on the picture, Space and Enter are `clicked`, as of any button.
class ZELVAR_API CDownBmpButton : public QAbstractButton {
    Q_OBJECT

public:
    explicit CDownBmpButton(QWidget *parent = nullptr);

    /// Pictures of `platform::ResourceIcon` by name. An empty one is made of `up`: pushed in, framed, washed out.
    void LoadBitmaps(DString const &up, DString const &down = {}, DString const &focused = {},
                     DString const &disabled = {});
    /// The same from any source of pictures.
    void SetBitmaps(ImageDescription const &up, std::optional<ImageDescription> const &down = {},
                    std::optional<ImageDescription> const &focused = {},
                    std::optional<ImageDescription> const &disabled = {});
    void SetPictureSide(int pixels);
    void SetTooltip(DString const &text); ///< and the button's name
    /// Not owned; null for none. `QMenu::aboutToShow` is the time to fill it.
    void SetMenu(QMenu *menu);
    /// Whether the zone with the arrow is there; `SetMenu` sees to it too.
    void SetDropDown(bool shown);
    /// The whole button is the arrow's zone: it never is `clicked` with the mouse.
    void SetWholeDropDown(bool whole) { m_whole = whole; }
    void ShowDropDown(); ///< as a press on the arrow
    [[nodiscard]] bool IsDropped() const { return m_dropped; }
    [[nodiscard]] QRect ArrowRect() const; ///< empty without the zone

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    /// Asked for the menu while there is none.
    void DropDown();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    [[nodiscard]] QPixmap PresentPicture() const;

    ImageDescription m_up;
    std::optional<ImageDescription> m_down;
    std::optional<ImageDescription> m_focused;
    std::optional<ImageDescription> m_disabled;
    QPointer<QMenu> m_menu;
    int m_side = 16;
    bool m_dropDown = false;
    bool m_whole = false;
    bool m_dropped = false;
};

} // namespace zelvar
