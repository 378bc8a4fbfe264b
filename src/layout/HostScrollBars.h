#pragma once

#include "zelvar/base/Geometry.h"

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtWidgets/QScrollBar>

#include <functional>

namespace zelvar {

/// The scroll bars of a window that its children do not fit into: they stand over its right and lower edges as long as
/// they are needed, hear the wheel, and bring the child that gets the keyboard into view.
///
/// They move nothing themselves but tell by how much. They are children of the window, which no operation but the end
/// may outlive.
class HostScrollBars : public QObject {
public:
    /// `content`: what can be scrolled to, pixels. `scrolled` hears by how much the content has moved up and left.
    HostScrollBars(QWidget &window, Size content, std::function<void(Point by)> scrolled);
    ~HostScrollBars() override;

    /// Shows, hides and places the bars for the window's present size.
    void Fit();
    /// What the bars leave of the window.
    [[nodiscard]] Size ClientSize() const;
    [[nodiscard]] Point Position() const;
    [[nodiscard]] bool Owns(QWidget const *child) const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void ShowChild(QWidget const *child);
    void TellMove();

    QWidget &m_window;
    Size m_content;
    std::function<void(Point by)> m_scrolled;
    QPointer<QScrollBar> m_horizontal; ///< children of the window, as the two below
    QPointer<QScrollBar> m_vertical;
    QPointer<QWidget> m_corner; ///< between the bars
    Point m_told;               ///< the position that was told last
};

} // namespace zelvar
