#pragma once

#include "zelvar/base/DString.h"

#include <QtWidgets/QGroupBox>

#include <cstdint>

namespace zelvar {

/// Group control: a frame with a title around what belongs together. It adds to the platform's group box a title that
/// folds and unfolds its content with an arrow in place of the check box that enables and disables it. A folded group
/// is as high as its title and as wide as it was, so that a window does not jump sideways. Space turns either;
/// Right and Plus unfold, Left and Minus fold.
class ZELVAR_API CGrpCtrl : public QGroupBox {
    Q_OBJECT

public:
    enum class Mode : std::uint8_t {
        Plain,
        Enables, ///< a check box enables the content
        Folds,   ///< an arrow shows the content
    };

    explicit CGrpCtrl(QWidget *parent = nullptr);

    [[nodiscard]] DString GetWindowText() const;
    void SetWindowText(DString const &text); ///< '&' stands before the letter that turns it with Alt
    /// Enabled and unfolded afterwards.
    void SetMode(Mode mode);
    [[nodiscard]] Mode GetMode() const { return m_mode; }
    /// What the frame is around: layouts and controls are put here.
    [[nodiscard]] QWidget &Content() const { return *m_content; }

    // Of `Mode::Enables`; a group of another mode is always checked.
    void SetCheck(bool checked);
    [[nodiscard]] bool GetCheck() const { return m_mode != Mode::Enables || isChecked(); }
    // Of `Mode::Folds`; a group of another mode is never folded.
    void SetFolded(bool folded);
    [[nodiscard]] bool IsFolded() const { return m_mode == Mode::Folds && !isChecked(); }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    // By the user or the application.
    void CheckChanged(bool checked);
    void FoldChanged(bool folded);

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void OnToggled(bool on);
    /// As high as the title and as wide as the content.
    [[nodiscard]] QSize FoldedHint(QSize const &hint) const;

    Mode m_mode = Mode::Plain;
    QWidget *m_content;
    QSizePolicy m_unfolded;
};

} // namespace zelvar
