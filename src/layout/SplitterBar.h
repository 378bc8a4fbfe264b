#pragma once

#include "zelvar/base/Export.h"

#include <QtCore/QPointer>
#include <QtWidgets/QWidget>

#include <vector>

namespace zelvar {

class DSplitterWnd;

/// Bar of a splitter for those who do not use a mouse: it lies over the drawn bar, can have the focus, and moves by the
/// arrow keys. Mouse events pass through to the splitter.
///
/// It is no stop of the Tab key. `DSplitterWnd::MoveBarsByKeyboard` gives it the focus; F8 and Tab lead on to the next
/// bar of the window. Enter keeps what was moved, Escape puts all bars back; both give the focus to where it was.
class ZELVAR_API SplitterBar : public QWidget {
    Q_OBJECT

public:
    /// The bar behind track `before`, a column for a vertical bar.
    SplitterBar(DSplitterWnd &splitter, Qt::Orientation orientation, int before);

    [[nodiscard]] Qt::Orientation Orientation() const { return m_orientation; }
    [[nodiscard]] int Before() const { return m_before; }

    // Size of the track before the bar, pixels, and the limits that it can be moved to.
    [[nodiscard]] int Position() const;
    [[nodiscard]] int MinPosition() const;
    [[nodiscard]] int MaxPosition() const;
    /// Moves as far as the limits allow and tells screen readers.
    void MoveTo(int position);

    /// Gives the focus to the first bar of `splitter` or of those inside it. False if none is seen.
    static bool Enter(DSplitterWnd &splitter);

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    /// The bars of the outermost splitter around this one and of all splitters inside, those that are seen.
    [[nodiscard]] std::vector<SplitterBar *> Ring() const;
    void Begin(QWidget *former);
    void Leave();

    Qt::Orientation m_orientation;
    int m_before;
    DSplitterWnd *m_splitter;   ///< the parent
    int m_positionAtBegin = 0;  ///< where Escape puts it
    QPointer<QWidget> m_former; ///< had the focus before the bars
};

} // namespace zelvar
