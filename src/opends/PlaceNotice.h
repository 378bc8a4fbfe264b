#pragma once

#include "zelvar/base/DString.h"

#include <QtWidgets/QWidget>

#include <functional>

class QLabel;
class QPushButton;
class QAbstractScrollArea;

namespace zelvar {

/// What is said where the rows of a list would stand: that a server is waited for, or why there are none, with a button
/// to end the wait or to try again. User-interface thread.
class PlaceNotice : public QWidget {
public:
    /// Lies over the rows of `list` and goes with it.
    explicit PlaceNotice(QAbstractScrollArea &list);

    /// Shows the words, in the user's language, and the button; hidden without words. `top`: pixels that are left free
    /// for rows.
    void Show(DString const &words, DString const &button, int top);
    /// Told when the button is pressed.
    void SetHandler(std::function<void()> handler) { m_onButton = std::move(handler); }
    /// Shows a second button beside it, for what would remove the cause; none with an empty text.
    void Offer(DString const &text);
    void SetOfferHandler(std::function<void()> handler) { m_onOffer = std::move(handler); }
    /// The button that the focus goes on to from there, the list or a button; null where it leaves.
    [[nodiscard]] QPushButton *NextButton(QWidget const *focus) const;
    [[nodiscard]] QLabel *Label() const { return m_label; }
    [[nodiscard]] QPushButton *Button() const { return m_button; }
    [[nodiscard]] QPushButton *OfferButton() const { return m_offer; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void Place();

    QAbstractScrollArea &m_list;
    QLabel *m_label; ///< children
    QPushButton *m_button;
    QPushButton *m_offer;
    std::function<void()> m_onButton;
    std::function<void()> m_onOffer;
    int m_top = 0;
};

} // namespace zelvar
