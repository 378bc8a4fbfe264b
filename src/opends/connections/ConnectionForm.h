#pragma once

#include "zelvar/opends/connections/FormRows.h"
#include "zelvar/opends/connections/SecretRows.h"

#include <functional>

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
    [[nodiscard]] Secret Password() const { return m_secret.Typed(); }
    /// Whether a field held an address that was typed where one cannot stand, which now fills the fields. The focus
    /// stays in its field.
    bool TakeTypedAddress();
    /// Shows what is wrong, and goes to the uppermost field of them. Empty takes all signs away.
    void ShowFaults(std::vector<ConnectionFault> const &faults) { m_rows->ShowFaults(faults); }

    /// What can have the focus, in the order of the page.
    [[nodiscard]] std::vector<QWidget *> const &FocusOrder() const { return m_rows->FocusOrder(); }
    /// The control of a field, or null: by its key, "name", "secret", "password", "allow", "timeLimit", and
    /// "more" and "move" for the buttons.
    [[nodiscard]] QWidget *Control(DString const &key) const { return m_rows->Control(key); }

Q_SIGNALS:
    /// A pasted address is one of another kind.
    void KindPasted();
    /// The controls are other ones now.
    void Rebuilt();

private:
    void Build();
    void AddField(ConnectionField const &field);
    /// `take` is given what is typed.
    QLineEdit *AddEdit(DString const &key, char const *label, DString const &text,
                       std::function<void(DString const &)> take);
    void AddChoice(ConnectionField const &field);
    /// Of a store: fields that only some of them have.
    void ShowService();
    [[nodiscard]] bool HasRareValues() const;
    void Suggest();
    /// Whether the text is all of an address, which then fills the fields.
    bool TakePasted(DString const &text);

    ConnectionDraft m_draft;
    bool m_isNameOwn = false; ///< typed, or that of a connection that is there
    SecretRows m_secret;
    FormRows *m_rows = nullptr; ///< a child, made anew for each kind
};

} // namespace zelvar
