#pragma once

#include "zelvar/connections/ConnectionDraft.h"

#include <QtWidgets/QWidget>

#include <map>
#include <optional>

class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;

namespace zelvar {

/// The fields of a connection: those of its kind, where its password is, and, folded away, what most do without. What
/// is wrong with a field stands below it. An address that is pasted into one of them fills all. User-interface thread.
class ConnectionForm : public QWidget {
    Q_OBJECT

public:
    explicit ConnectionForm(QWidget *parent = nullptr);

    /// `isNew`: its name follows what it leads to until somebody types one.
    void Show(ConnectionDraft draft, bool isNew);
    void SetKind(ConnectionKind kind);
    /// Writes a text into a field that is typed, and unfolds it.
    void Fill(DString const &key, DString const &text);
    [[nodiscard]] ConnectionDraft const &Draft() const { return m_draft; }
    /// That was typed or pasted; empty for none.
    [[nodiscard]] Secret Password() const;
    /// Whether a field held an address that was typed where one cannot stand, which now fills the fields. The focus
    /// stays in its field.
    bool TakeTypedAddress();
    /// Shows what is wrong, and goes to the uppermost field of them. Empty takes all signs away.
    void ShowFaults(std::vector<ConnectionFault> const &faults);

    /// What can have the focus, in the order of the page.
    [[nodiscard]] std::vector<QWidget *> const &FocusOrder() const { return m_focusOrder; }
    /// The control of a field, or null: by its key, "name", "secret", "password", "allow", "timeLimit", and
    /// "more" and "move" for the buttons.
    [[nodiscard]] QWidget *Control(DString const &key) const;

Q_SIGNALS:
    /// A pasted address is one of another kind.
    void KindPasted();
    /// The controls are other ones now.
    void Rebuilt();

private:
    struct Row {
        QLabel *label = nullptr; ///< children of the rows' window
        QWidget *control = nullptr;
        QLabel *fault = nullptr;
        bool isRare = false;
    };

    void Build();
    Row &AddRow(QGridLayout &grid, DString const &key, char const *label, QWidget *control, bool isRare);
    void AddField(QGridLayout &grid, ConnectionField const &field);
    [[nodiscard]] QLineEdit *AddEdit(QGridLayout &grid, DString const &key, char const *label, DString const &text,
                                     bool isRare, std::function<void(DString const &)> take);
    void AddSecretRows(QGridLayout &grid);
    void AddFold(QGridLayout &grid);
    void SetSecretPlace(SecretPlace place);
    void ShowSecretPlace();
    /// Whoever names a user or a key is asked for its secret, unless somebody has said where that is.
    void SuggestSecretPlace();
    /// Of a store: fields that only some of them have.
    void ShowService();
    void ShowRare(bool isShown);
    [[nodiscard]] bool HasRareValues() const;
    void Suggest();
    /// Whether the text is all of an address, which then fills the fields.
    bool TakePasted(DString const &text);
    static void ShowFault(Row &row, DString const &words);

    ConnectionDraft m_draft;
    bool m_isNameOwn = false;        ///< typed, or that of a connection that is there
    bool m_isSecretPlaceOwn = false; ///< chosen, or that of a connection that is there
    bool m_wasInDefinition = false;
    std::map<DString, Row> m_rows;
    std::vector<QWidget *> m_focusOrder;
    QWidget *m_window = nullptr; ///< the rows' parent, made anew for each kind
    QLineEdit *m_password = nullptr;
    QLabel *m_hint = nullptr;
    QPushButton *m_move = nullptr; ///< moves the password out of the definition
    QToolButton *m_more = nullptr;
};

} // namespace zelvar
