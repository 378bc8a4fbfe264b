#pragma once

#include "zelvar/connections/ConnectionDraft.h"

#include <QtWidgets/QWidget>

#include <map>
#include <vector>

class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QToolButton;

namespace zelvar {

/// The rows of a form, made for one set of fields: a label, its control, and below it what is wrong with it. Rows
/// behind the fold are those that most do without; a button shows and hides them. User-interface thread.
class FormRows : public QWidget {
    Q_OBJECT

public:
    explicit FormRows(QWidget *parent = nullptr);

    /// Controls as these rows have them, which keep some room in a narrow window. The caller adds them.
    [[nodiscard]] static QLineEdit *MakeEdit(DString const &text);
    [[nodiscard]] static QComboBox *MakeBox();

    /// Takes the control, which is found by its key from now on.
    void Add(DString const &key, char const *label, QWidget *control);
    /// The same without a label; nothing can be wrong with it.
    void AddButton(DString const &key, QWidget *button);
    /// Words below the controls so far.
    [[nodiscard]] QLabel *AddHint();
    /// What is added from now on is folded away.
    void AddFold();
    /// No row follows.
    void End();

    /// What can have the focus, in the order of the rows.
    [[nodiscard]] std::vector<QWidget *> const &FocusOrder() const { return m_focusOrder; }
    /// Null for none; the button of the fold is "more".
    [[nodiscard]] QWidget *Control(DString const &key) const;
    /// These do nothing for a key without a row.
    void SetLabel(DString const &key, QString const &text);
    void SetVisible(DString const &key, bool isVisible);
    /// Shows what is behind the fold if the row is there.
    void Unfold(DString const &key);
    void SetUnfolded(bool isUnfolded);
    /// Empty for nothing.
    void ShowFault(DString const &key, DString const &words);
    /// Of all rows, unfolded where need be, and goes to the uppermost that has one.
    void ShowFaults(std::vector<ConnectionFault> const &faults);

private:
    struct Row {
        QLabel *label = nullptr; ///< children of this window
        QWidget *control = nullptr;
        QLabel *fault = nullptr;
        bool isFolded = false; ///< stands behind the fold
    };

    static void ShowFault(Row &row, DString const &words);
    void ShowFolded(bool isShown);

    QGridLayout *m_grid;
    QToolButton *m_more = nullptr; ///< null before the fold
    std::map<DString, Row> m_rows;
    std::vector<QWidget *> m_focusOrder;
};

} // namespace zelvar
