#pragma once

#include "zelvar/base/DString.h"

#include <QtWidgets/QWidget>

#include <functional>

class QFormLayout;
class QHBoxLayout;
class QLabel;

namespace zelvar::gallery {

/// What most pages are made of: rows with a label and a control, a row of buttons, and a line at the bottom that says
/// what happened last. Texts that are given as constants are marked by that, see tools/translations.sh, and shown in
/// the user's language.
class PageForm : public QWidget {
public:
    PageForm();

    /// A row with a label that names the control to those who cannot see it, too.
    void Add(char const *label, QWidget *control);
    /// A control over the whole width, `name` for those who cannot see it; the one with `stretch` takes the height that
    /// is left.
    void AddWide(char const *name, QWidget *control, bool stretch = false);
    /// In the row of buttons.
    void AddButton(char const *text, std::function<void()> act);
    void AddSwitch(char const *text, bool on, std::function<void(bool)> act);
    void Say(char const *text) const;
    void Say(DString const &text) const; ///< as it is
    /// Says the answer of a dialog that `ask` runs, unless the page dies under it.
    void SayAnswer(std::function<DString()> const &ask);

private:
    QFormLayout *m_form;
    QHBoxLayout *m_buttons;
    QLabel *m_said;
};

} // namespace zelvar::gallery
