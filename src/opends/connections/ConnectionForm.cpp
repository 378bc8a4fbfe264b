#include "zelvar/opends/connections/ConnectionForm.h"

#include "zelvar/base/Translation.h"
#include "zelvar/platform/ui/HintColor.h"
#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/platform/ui/WheelPast.h"

#include <QtCore/QSignalBlocker>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QToolButton>

#include <algorithm>

namespace zelvar {

using platform::Shown;
using platform::ToDString;
using platform::ToQString;

namespace {

constexpr int kSpacing = 4;      // pixels between rows
constexpr int kColumns = 16;     // characters that a field keeps in a narrow window
constexpr int kSecretColumn = 1; // of the grid: the controls'

// Services of a store.
constexpr char const *kWithProfiles = "s3";
constexpr char const *kOfAccounts = "az";

constexpr char const *kPasteHint = Mark("Type it, or paste an address");
constexpr char const *kSourceHint = Mark("As in ~/.odbc.ini");
constexpr char const *kOldPassword = Mark("The password stands in the definition, where anybody may read it.");
constexpr char const *kMoves = Mark("The password leaves the definition with OK.");
constexpr char const *kUnchanged = Mark("unchanged");

QComboBox *MakeBox() {
    auto *const box = new QComboBox;
    platform::LetWheelPast(*box);
    // Long entries must not widen the page.
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(kColumns);
    return box;
}

/// Where somebody who has an address begins.
bool TakesAddress(ConnectionField const &field) {
    std::string_view const key = field.key;
    return key == "address" || key == "host" || key == "bucket";
}

} // namespace

ConnectionForm::ConnectionForm(QWidget *parent) : QWidget(parent) {
    auto *const whole = new QVBoxLayout(this);
    whole->setContentsMargins(kSpacing, kSpacing, kSpacing, kSpacing);
    platform::KeepHintsReadable(*this);
    Build();
}

void ConnectionForm::Show(ConnectionDraft draft, bool isNew) {
    m_draft = std::move(draft);
    m_isNameOwn = !isNew;
    m_isSecretPlaceOwn = !isNew;
    m_wasInDefinition = m_draft.secret == SecretPlace::Definition;
    Build();
}

void ConnectionForm::SetKind(ConnectionKind kind) {
    if (kind == m_draft.Kind())
        return;
    m_draft.SetKind(kind);
    Build();
    Suggest();
}

void ConnectionForm::Fill(DString const &key, DString const &text) {
    auto *const edit = qobject_cast<QLineEdit *>(Control(key));
    if (edit == nullptr)
        return;
    m_more->setChecked(m_more->isChecked() || m_rows[key].isRare);
    edit->setText(ToQString(text));
    edit->setCursorPosition(0);
    Q_EMIT edit->textEdited(edit->text()); // as if somebody had typed it
}

Secret ConnectionForm::Password() const {
    if (m_draft.secret != SecretPlace::Keyring && m_draft.secret != SecretPlace::Ask)
        return {};
    DString text = ToDString(m_password->text());
    return Secret::TakenFrom(text);
}

QWidget *ConnectionForm::Control(DString const &key) const {
    auto const control = std::find_if(m_focusOrder.begin(), m_focusOrder.end(),
                                      [&](QWidget const *one) { return ToDString(one->objectName()) == key; });
    return control == m_focusOrder.end() ? nullptr : *control;
}

// ------------------------------------------------------------------------------------------------------ building

void ConnectionForm::Build() {
    // A field may be at work on what makes its page another one.
    if (m_window != nullptr) {
        m_window->hide();
        layout()->removeWidget(m_window);
        m_window->deleteLater();
    }
    m_rows.clear();
    m_focusOrder.clear();
    QString const password = m_password == nullptr ? QString() : m_password->text();
    m_window = new QWidget;
    auto *const grid = new QGridLayout(m_window);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setVerticalSpacing(kSpacing);
    grid->setColumnStretch(1, 1);
    QLineEdit *const name = AddEdit(*grid, "name", Mark("Name"), m_draft.name, false, [this](DString const &text) {
        m_draft.name = text;
        m_isNameOwn = !text.empty();
    });
    name->setToolTip(Shown("What the connection is called in the list of data sources"));
    std::vector<ConnectionField> const fields = FieldsOf(m_draft.Kind());
    for (ConnectionField const &field : fields)
        if (!IsRareField(field))
            AddField(*grid, field);
    AddSecretRows(*grid);
    m_password->setText(password);
    AddFold(*grid);
    for (ConnectionField const &field : fields)
        if (IsRareField(field))
            AddField(*grid, field);
    AddEdit(*grid, "timeLimit", Mark("Time limit [s]"), m_draft.timeLimit, true, [this](DString const &text) {
        m_draft.timeLimit = text;
    })->setToolTip(Shown("How long a connection to the server may take, from 1 to 3600 seconds"));
    AddEdit(*grid, "allow", Mark("Hosts also allowed"), m_draft.allow, true, [this](DString const &text) {
        m_draft.allow = text;
    })->setToolTip(Shown("Other servers that this one sends on to, as cdn.lab:443"));
    grid->setRowStretch(grid->rowCount(), 1);
    layout()->addWidget(m_window);
    m_window->show();
    bool const isUnfolded = HasRareValues();
    m_more->setChecked(isUnfolded);
    ShowRare(isUnfolded);
    ShowSecretPlace();
    ShowService();
    Q_EMIT Rebuilt();
}

ConnectionForm::Row &ConnectionForm::AddRow(QGridLayout &grid, DString const &key, char const *label, QWidget *control,
                                            bool isRare) {
    int const at = grid.rowCount();
    Row row{.label = new QLabel(Shown(label)), .control = control, .fault = new QLabel, .isRare = isRare};
    row.label->setTextFormat(Qt::PlainText);
    row.label->setBuddy(control);
    row.label->setWordWrap(true); // fields come before labels where there is little room
    row.fault->setTextFormat(Qt::PlainText);
    row.fault->setWordWrap(true);
    row.fault->hide();
    control->setObjectName(ToQString(key));
    control->setAccessibleName(row.label->text());
    grid.addWidget(row.label, at, 0);
    grid.addWidget(control, at, kSecretColumn);
    grid.addWidget(row.fault, at + 1, kSecretColumn);
    m_focusOrder.push_back(control);
    return m_rows[key] = row;
}

QLineEdit *ConnectionForm::AddEdit(QGridLayout &grid, DString const &key, char const *label, DString const &text,
                                   bool isRare, std::function<void(DString const &)> take) {
    auto *const edit = new QLineEdit(ToQString(text));
    edit->setCursorPosition(0); // of a long text its beginning is shown
    edit->setMinimumWidth(edit->fontMetrics().averageCharWidth() * kColumns);
    AddRow(grid, key, label, edit, isRare);
    connect(edit, &QLineEdit::textEdited, this, [this, edit, key, take = std::move(take)](QString const &typed) {
        DString const now = ToDString(typed);
        // One letter more is typed; a whole address comes at once.
        bool const isPasted = now.size() > DString(Trimmed(m_draft.Text(key))).size() + 1;
        if (key != "name" && key != "password" && isPasted && TakePasted(now))
            return;
        take(now);
        if (key == "user" || key == "key")
            SuggestSecretPlace();
        Suggest();
        if (auto const row = m_rows.find(key); row != m_rows.end())
            ShowFault(row->second, {});
    });
    return edit;
}

void ConnectionForm::AddField(QGridLayout &grid, ConnectionField const &field) {
    DString const key = field.key;
    bool const isRare = IsRareField(field);
    auto const take = [this, key](DString const &text) { m_draft.SetText(key, text); };
    if (field.rule != ConnectionField::Rule::Choice) {
        QLineEdit *const edit = AddEdit(grid, key, field.label, m_draft.Text(key), isRare, take);
        if (key == "dsn")
            edit->setPlaceholderText(Shown(kSourceHint));
        if (TakesAddress(field)) {
            edit->setPlaceholderText(Shown(kPasteHint));
            // Later: the field that is left would be gone before it has told all of that.
            connect(edit, &QLineEdit::editingFinished, this, &ConnectionForm::TakeTypedAddress, Qt::QueuedConnection);
        }
        return;
    }
    QComboBox *const box = MakeBox();
    for (DString const &choice : Split(field.choices, '|'))
        box->addItem(ToQString(ChoiceInWords(field, choice)), ToQString(choice));
    // What a definition says and nobody knows stays until something else is chosen.
    if (DString const text = m_draft.Text(key); !text.empty()) {
        if (box->findData(ToQString(text)) < 0)
            box->addItem(ToQString(text), ToQString(text));
        box->setCurrentIndex(box->findData(ToQString(text)));
    }
    AddRow(grid, key, field.label, box, isRare);
    connect(box, &QComboBox::currentIndexChanged, this, [this, box, take, key] {
        take(ToDString(box->currentData().toString()));
        if (key == "service" && m_draft.Kind() == ConnectionKind::ObjectStore) {
            // Profiles are those of Amazon's tools.
            if (m_draft.Text(key) != kWithProfiles && m_draft.secret == SecretPlace::Profile)
                SetSecretPlace(SecretPlace::Keyring);
            ShowService();
        }
        Suggest();
        ShowFault(m_rows[key], {});
    });
}

void ConnectionForm::AddSecretRows(QGridLayout &grid) {
    QComboBox *const places = MakeBox();
    std::vector<SecretPlace> offered = SecretPlacesOf(m_draft.Kind());
    if (m_wasInDefinition)
        offered.insert(offered.begin(), SecretPlace::Definition);
    for (SecretPlace const place : offered)
        places->addItem(ToQString(SecretPlaceInWords(place, m_draft.Kind())), static_cast<int>(place));
    places->setCurrentIndex(std::max(0, places->findData(static_cast<int>(m_draft.secret))));
    m_draft.secret = static_cast<SecretPlace>(places->currentData().toInt());
    AddRow(grid, "secret", Mark("Password kept"), places, false);
    connect(places, &QComboBox::currentIndexChanged, this, [this, places] {
        m_draft.secret = static_cast<SecretPlace>(places->currentData().toInt());
        ShowSecretPlace();
    });
    connect(places, &QComboBox::activated, this, [this] { m_isSecretPlaceOwn = true; });
    bool const isStore = m_draft.Kind() == ConnectionKind::ObjectStore;
    m_password =
        AddEdit(grid, "password", isStore ? Mark("Secret key") : Mark("Password"), {}, false, [](DString const &) {});
    m_password->setEchoMode(QLineEdit::Password);
    m_password->setPlaceholderText(m_isNameOwn ? Shown(kUnchanged) : QString());
    m_hint = new QLabel;
    m_hint->setTextFormat(Qt::PlainText);
    m_hint->setWordWrap(true);
    grid.addWidget(m_hint, grid.rowCount(), kSecretColumn);
    m_move = new QPushButton(Shown("Move the password to the keyring"));
    m_move->setObjectName(QStringLiteral("move"));
    m_move->setAutoDefault(false);
    grid.addWidget(m_move, grid.rowCount(), kSecretColumn, Qt::AlignLeft);
    m_focusOrder.push_back(m_move);
    connect(m_move, &QPushButton::clicked, this, [this, places] {
        places->setFocus(); // the button goes
        SetSecretPlace(SecretPlace::Keyring);
    });
}

void ConnectionForm::SetSecretPlace(SecretPlace place) {
    if (auto *const places = qobject_cast<QComboBox *>(Control("secret")))
        places->setCurrentIndex(places->findData(static_cast<int>(place)));
}

void ConnectionForm::ShowSecretPlace() {
    bool const isInDefinition = m_draft.secret == SecretPlace::Definition;
    bool const isTyped = m_draft.secret == SecretPlace::Keyring || m_draft.secret == SecretPlace::Ask;
    Row const &row = m_rows["password"];
    row.label->setVisible(isTyped);
    row.control->setVisible(isTyped);
    m_hint->setText(isInDefinition ? Shown(kOldPassword) : m_wasInDefinition ? Shown(kMoves) : QString());
    m_hint->setVisible(!m_hint->text().isEmpty());
    m_move->setVisible(isInDefinition);
}

void ConnectionForm::SuggestSecretPlace() {
    bool const isNamed = !m_draft.Text("user").empty() || !m_draft.Text("key").empty();
    bool const hasNoProfile = m_draft.Kind() == ConnectionKind::ObjectStore && m_draft.Text("profile").empty();
    bool const isWithout =
        m_draft.secret == SecretPlace::None || (m_draft.secret == SecretPlace::Profile && hasNoProfile);
    if (!m_isSecretPlaceOwn && isNamed && isWithout)
        SetSecretPlace(SecretPlace::Keyring);
}

void ConnectionForm::ShowService() {
    if (m_draft.Kind() != ConnectionKind::ObjectStore)
        return;
    DString const service = m_draft.Text("service");
    Row const &profile = m_rows["profile"];
    bool const hasProfiles = service.empty() || service == kWithProfiles || !m_draft.Text("profile").empty();
    profile.label->setVisible(hasProfiles);
    profile.control->setVisible(hasProfiles);
    bool const hasAccounts = service == kOfAccounts;
    for (auto const &[field, label] : {std::pair{"key", hasAccounts ? Shown("Account") : Shown("Key ID")},
                                       std::pair{"bucket", hasAccounts ? Shown("Container") : Shown("Bucket")}}) {
        m_rows[field].label->setText(label);
        m_rows[field].control->setAccessibleName(label);
    }
}

void ConnectionForm::AddFold(QGridLayout &grid) {
    m_more = new QToolButton;
    m_more->setText(Shown("More"));
    m_more->setObjectName(QStringLiteral("more"));
    m_more->setCheckable(true);
    m_more->setAutoRaise(true);
    m_more->setFocusPolicy(Qt::StrongFocus);
    m_more->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_more->setToolTip(Shown("Fields that most connections do without"));
    grid.addWidget(m_more, grid.rowCount(), 0, 1, 2, Qt::AlignLeft);
    m_focusOrder.push_back(m_more);
    connect(m_more, &QToolButton::toggled, this, &ConnectionForm::ShowRare);
}

void ConnectionForm::ShowRare(bool isShown) {
    m_more->setArrowType(isShown ? Qt::DownArrow : isRightToLeft() ? Qt::LeftArrow : Qt::RightArrow);
    for (auto const &[key, row] : m_rows) {
        if (!row.isRare)
            continue;
        row.label->setVisible(isShown);
        row.control->setVisible(isShown);
        row.fault->setVisible(isShown && !row.fault->text().isEmpty());
    }
}

bool ConnectionForm::HasRareValues() const {
    Connection const connection = m_draft.ToConnection();
    std::vector<ConnectionField> const fields = FieldsOf(m_draft.Kind());
    return !m_draft.allow.empty() || !m_draft.timeLimit.empty() ||
           std::any_of(fields.begin(), fields.end(), [&](ConnectionField const &field) {
               return IsRareField(field) && !connection.Field(field.key).empty();
           });
}

// ------------------------------------------------------------------------------------------------- what is typed

void ConnectionForm::Suggest() {
    if (m_isNameOwn)
        return;
    m_draft.name = SuggestedName(m_draft.ToConnection());
    static_cast<QLineEdit *>(m_rows["name"].control)->setText(ToQString(m_draft.name));
    if (!m_draft.name.empty())
        ShowFault(m_rows["name"], {});
}

bool ConnectionForm::TakePasted(DString const &text) {
    bool const isAddress = text.find("://") != DString::npos || text.find('=') != DString::npos;
    std::optional<PastedConnection> const pasted =
        isAddress ? ConnectionFromPasted(text) : std::optional<PastedConnection>();
    if (!pasted)
        return false;
    m_draft.Take(*pasted);
    if (!pasted->secret.IsEmpty()) {
        if (m_draft.secret != SecretPlace::Ask)
            m_draft.secret = SecretPlace::Keyring;
        m_password->setText(ToQString(pasted->secret.Reveal()));
    }
    Build();
    SuggestSecretPlace();
    Suggest();
    Control("name")->setFocus();
    Q_EMIT KindPasted();
    return true;
}

bool ConnectionForm::TakeTypedAddress() {
    for (ConnectionFault const &fault : m_draft.Faults()) {
        auto const *const edit = qobject_cast<QLineEdit *>(Control(fault.field));
        if (edit == nullptr || !edit->text().contains("://"))
            continue;
        QWidget const *const focus = window()->focusWidget();
        DString const field = focus == nullptr || !isAncestorOf(focus) ? DString() : ToDString(focus->objectName());
        if (!TakePasted(ToDString(edit->text())))
            continue;
        if (QWidget *const same = Control(field))
            same->setFocus();
        return true;
    }
    return false;
}

void ConnectionForm::ShowFault(Row &row, DString const &words) {
    QPalette palette; // without a fault that of the page
    if (!words.empty())
        palette.setColor(QPalette::WindowText, platform::IsPaletteDark() ? QColor(255, 130, 120) : QColor(190, 0, 0));
    row.fault->setPalette(palette);
    row.fault->setText(ToQString(words));
    row.fault->setVisible(!words.empty());
    row.control->setAccessibleDescription(row.fault->text());
}

void ConnectionForm::ShowFaults(std::vector<ConnectionFault> const &faults) {
    for (auto &[key, row] : m_rows)
        ShowFault(row, {});
    QWidget *first = nullptr;
    auto const isAbove = [this](QWidget *one, QWidget *other) {
        return std::ranges::find(m_focusOrder, one) < std::ranges::find(m_focusOrder, other);
    };
    for (ConnectionFault const &fault : faults) {
        auto const at = m_rows.find(fault.field);
        if (at == m_rows.end())
            continue;
        if (at->second.isRare)
            m_more->setChecked(true);
        ShowFault(at->second, fault.words);
        if (first == nullptr || isAbove(at->second.control, first))
            first = at->second.control;
    }
    if (first != nullptr)
        first->setFocus();
}

} // namespace zelvar
