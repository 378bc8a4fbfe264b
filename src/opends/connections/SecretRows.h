#pragma once

#include "zelvar/connections/ConnectionDraft.h"

#include <QtCore/QObject>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace zelvar {

class FormRows;

/// Of a store: whether its service knows the profiles of Amazon's tools, and whether it has accounts, as Azure's, where
/// others have keys. False for any other kind.
[[nodiscard]] bool HasProfiles(ConnectionDraft const &draft);
[[nodiscard]] bool HasAccounts(ConnectionDraft const &draft);

/// What the form of a connection does about its secret: the choice of where that is kept, which follows what is named
/// until somebody makes it, the field to type it, and the button that moves a password out of the definition.
/// User-interface thread.
class SecretRows : public QObject {
    Q_OBJECT

public:
    /// The draft is the form's, and written to.
    explicit SecretRows(ConnectionDraft &draft, QObject *parent = nullptr);

    /// The draft is that of another connection. `isNew`: that is not there yet.
    void Begin(bool isNew);
    /// Adds rows as the draft's kind has them. What was typed stays.
    void AddTo(FormRows &rows);
    /// Shows and hides what the rows are for, once all of them are there.
    void Update();
    /// A store's service was chosen, which may keep secrets elsewhere and call them something else.
    void OnService();

    /// What came with an address.
    void Take(Secret const &secret);
    /// Whoever names a user or a key is asked for its secret, unless somebody has said where that is.
    void Suggest();
    /// That was typed or came with an address; empty for none, and where none is typed.
    [[nodiscard]] Secret Typed() const;

private:
    void SetPlace(SecretPlace place);
    void AddPlaces(FormRows &rows);
    [[nodiscard]] bool IsTyped() const;

    ConnectionDraft &m_draft;
    bool m_isNew = true;
    bool m_isPlaceOwn = false;      ///< chosen, or that of a connection that is there
    bool m_wasInDefinition = false; ///< the password
    FormRows *m_rows = nullptr;     ///< not owned, as its controls; those of the last `AddTo`
    QComboBox *m_places = nullptr;
    QLineEdit *m_password = nullptr;
    QLabel *m_hint = nullptr;
    QPushButton *m_move = nullptr;
};

} // namespace zelvar
