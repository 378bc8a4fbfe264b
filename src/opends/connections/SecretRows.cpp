#include "zelvar/opends/connections/SecretRows.h"

#include "zelvar/base/Translation.h"
#include "zelvar/opends/connections/FormRows.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QComboBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>

#include <algorithm>

namespace zelvar {

using platform::Shown;
using platform::ToDString;
using platform::ToQString;

namespace {

constexpr char const *kPassword = Mark("Password");
constexpr char const *kOfKey = Mark("Secret key");
constexpr char const *kOfAccount = Mark("Access key");
constexpr char const *kOldPassword = Mark("The password stands in the definition, where anybody may read it.");
constexpr char const *kMoves = Mark("The password leaves the definition with OK.");
constexpr char const *kUnchanged = Mark("unchanged");

bool IsStore(ConnectionDraft const &draft) { return draft.Kind() == ConnectionKind::ObjectStore; }

} // namespace

bool HasProfiles(ConnectionDraft const &draft) {
    DString const service = draft.Text("service");
    return IsStore(draft) && (service.empty() || service == "s3");
}

bool HasAccounts(ConnectionDraft const &draft) { return IsStore(draft) && draft.Text("service") == "az"; }

SecretRows::SecretRows(ConnectionDraft &draft, QObject *parent) : QObject(parent), m_draft(draft) {}

void SecretRows::Begin(bool isNew) {
    m_isNew = isNew;
    m_isPlaceOwn = !isNew;
    m_wasInDefinition = m_draft.secret == SecretPlace::Definition;
}

void SecretRows::AddTo(FormRows &rows) {
    QString const typed = m_password == nullptr ? QString() : m_password->text();
    m_rows = &rows;
    AddPlaces(rows);
    m_password = FormRows::MakeEdit({});
    m_password->setEchoMode(QLineEdit::Password);
    m_password->setPlaceholderText(m_isNew ? QString() : Shown(kUnchanged));
    m_password->setText(typed);
    rows.Add("password", kPassword, m_password);
    connect(m_password, &QLineEdit::textEdited, &rows, [&rows] { rows.ShowFault("password", {}); });
    m_hint = rows.AddHint();
    m_move = new QPushButton(Shown("Move the password to the keyring"));
    m_move->setAutoDefault(false);
    rows.AddButton("move", m_move);
    connect(m_move, &QPushButton::clicked, this, [this] {
        m_places->setFocus(); // the button goes
        SetPlace(SecretPlace::Keyring);
    });
}

void SecretRows::AddPlaces(FormRows &rows) {
    m_places = FormRows::MakeBox();
    std::vector<SecretPlace> offered = SecretPlacesOf(m_draft.Kind());
    if (m_wasInDefinition)
        offered.insert(offered.begin(), SecretPlace::Definition);
    for (SecretPlace const place : offered)
        m_places->addItem(ToQString(SecretPlaceInWords(place, m_draft.Kind())), static_cast<int>(place));
    m_places->setCurrentIndex(std::max(0, m_places->findData(static_cast<int>(m_draft.secret))));
    m_draft.secret = static_cast<SecretPlace>(m_places->currentData().toInt());
    rows.Add("secret", Mark("Password kept"), m_places);
    connect(m_places, &QComboBox::currentIndexChanged, this, [this, places = m_places] {
        m_draft.secret = static_cast<SecretPlace>(places->currentData().toInt());
        Update();
    });
    connect(m_places, &QComboBox::activated, this, [this] { m_isPlaceOwn = true; });
}

void SecretRows::Update() {
    bool const isInDefinition = m_draft.secret == SecretPlace::Definition;
    m_rows->SetVisible("password", IsTyped());
    m_rows->SetLabel("password", Shown(HasAccounts(m_draft) ? kOfAccount : IsStore(m_draft) ? kOfKey : kPassword));
    m_hint->setText(isInDefinition ? Shown(kOldPassword) : m_wasInDefinition ? Shown(kMoves) : QString());
    m_hint->setVisible(!m_hint->text().isEmpty());
    m_move->setVisible(isInDefinition);
}

void SecretRows::OnService() {
    if (!HasProfiles(m_draft) && m_draft.secret == SecretPlace::Profile)
        SetPlace(SecretPlace::Keyring);
    Update();
}

void SecretRows::SetPlace(SecretPlace place) { m_places->setCurrentIndex(m_places->findData(static_cast<int>(place))); }

void SecretRows::Take(Secret const &secret) {
    if (m_draft.secret != SecretPlace::Ask)
        m_draft.secret = SecretPlace::Keyring;
    m_password->setText(ToQString(secret.Reveal()));
}

void SecretRows::Suggest() {
    bool const isNamed = !m_draft.Text("user").empty() || !m_draft.Text("key").empty();
    bool const hasNoProfile = IsStore(m_draft) && m_draft.Text("profile").empty();
    bool const isWithout =
        m_draft.secret == SecretPlace::None || (m_draft.secret == SecretPlace::Profile && hasNoProfile);
    if (!m_isPlaceOwn && isNamed && isWithout)
        SetPlace(SecretPlace::Keyring);
}

bool SecretRows::IsTyped() const {
    return m_draft.secret == SecretPlace::Keyring || m_draft.secret == SecretPlace::Ask;
}

Secret SecretRows::Typed() const {
    if (!IsTyped())
        return {};
    DString text = ToDString(m_password->text());
    return Secret::TakenFrom(text);
}

} // namespace zelvar
