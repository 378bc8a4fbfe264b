#include "zelvar/opends/connections/ConnectionForm.h"

#include "zelvar/base/Translation.h"
#include "zelvar/platform/ui/HintColor.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QComboBox>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>
#include <optional>

namespace zelvar {

using platform::Shown;
using platform::ToDString;
using platform::ToQString;

namespace {

constexpr int kMargin = 4; // pixels around the rows

constexpr char const *kPasteHint = Mark("Type it, or paste an address");
constexpr char const *kSourceHint = Mark("As in ~/.odbc.ini");

/// Where somebody who has an address begins.
bool TakesAddress(ConnectionField const &field) {
    std::string_view const key = field.key;
    return key == "address" || key == "host" || key == "bucket";
}

} // namespace

ConnectionForm::ConnectionForm(QWidget *parent) : QWidget(parent), m_secret(m_draft) {
    auto *const whole = new QVBoxLayout(this);
    whole->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    platform::KeepHintsReadable(*this);
    Build();
}

void ConnectionForm::Show(ConnectionDraft draft, bool isNew) {
    m_draft = std::move(draft);
    m_isNameOwn = !isNew;
    m_secret.Begin(isNew);
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
    m_rows->Unfold(key);
    edit->setText(ToQString(text));
    edit->setCursorPosition(0);
    Q_EMIT edit->textEdited(edit->text()); // as if somebody had typed it
}

// ------------------------------------------------------------------------------------------------------ building

void ConnectionForm::Build() {
    FormRows *const former = m_rows;
    m_rows = new FormRows;
    QLineEdit *const name = AddEdit("name", Mark("Name"), m_draft.name, [this](DString const &text) {
        m_draft.name = text;
        m_isNameOwn = !text.empty();
    });
    name->setToolTip(Shown("What the connection is called in the list of data sources"));
    std::vector<ConnectionField> const fields = FieldsOf(m_draft.Kind());
    for (ConnectionField const &field : fields)
        if (!IsRareField(field))
            AddField(field);
    m_secret.AddTo(*m_rows);
    m_rows->AddFold();
    for (ConnectionField const &field : fields)
        if (IsRareField(field))
            AddField(field);
    AddEdit("timeLimit", Mark("Time limit [s]"), m_draft.timeLimit, [this](DString const &text) {
        m_draft.timeLimit = text;
    })->setToolTip(Shown("How long a connection to the server may take, from 1 to 3600 seconds"));
    AddEdit("allow", Mark("Hosts also allowed"), m_draft.allow, [this](DString const &text) {
        m_draft.allow = text;
    })->setToolTip(Shown("Other servers that this one sends on to, as cdn.lab:443"));
    m_rows->End();
    // A field may be at work on what makes its page another one.
    if (former != nullptr) {
        former->hide();
        layout()->removeWidget(former);
        former->deleteLater();
    }
    layout()->addWidget(m_rows);
    m_rows->show();
    m_rows->SetUnfolded(HasRareValues());
    m_secret.Update();
    ShowService();
    Q_EMIT Rebuilt();
}

QLineEdit *ConnectionForm::AddEdit(DString const &key, char const *label, DString const &text,
                                   std::function<void(DString const &)> take) {
    QLineEdit *const edit = FormRows::MakeEdit(text);
    m_rows->Add(key, label, edit);
    connect(edit, &QLineEdit::textEdited, this, [this, key, take = std::move(take)](QString const &typed) {
        DString const now = ToDString(typed);
        // One letter more is typed; a whole address comes at once.
        bool const isPasted = now.size() > DString(Trimmed(m_draft.Text(key))).size() + 1;
        if (key != "name" && isPasted && TakePasted(now))
            return;
        take(now);
        if (key == "user" || key == "key")
            m_secret.Suggest();
        Suggest();
        m_rows->ShowFault(key, {});
    });
    return edit;
}

void ConnectionForm::AddField(ConnectionField const &field) {
    if (field.rule == ConnectionField::Rule::Choice)
        return AddChoice(field);
    DString const key = field.key;
    QLineEdit *const edit =
        AddEdit(key, field.label, m_draft.Text(key), [this, key](DString const &text) { m_draft.SetText(key, text); });
    if (key == "dsn")
        edit->setPlaceholderText(Shown(kSourceHint));
    if (TakesAddress(field)) {
        edit->setPlaceholderText(Shown(kPasteHint));
        // Later: the field that is left would be gone before it has told all of that.
        connect(edit, &QLineEdit::editingFinished, this, &ConnectionForm::TakeTypedAddress, Qt::QueuedConnection);
    }
}

void ConnectionForm::AddChoice(ConnectionField const &field) {
    DString const key = field.key;
    QComboBox *const box = FormRows::MakeBox();
    for (DString const &choice : Split(field.choices, '|'))
        box->addItem(ToQString(ChoiceInWords(field, choice)), ToQString(choice));
    // What a definition says and nobody knows stays until something else is chosen.
    if (DString const text = m_draft.Text(key); !text.empty()) {
        if (box->findData(ToQString(text)) < 0)
            box->addItem(ToQString(text), ToQString(text));
        box->setCurrentIndex(box->findData(ToQString(text)));
    }
    m_rows->Add(key, field.label, box);
    connect(box, &QComboBox::currentIndexChanged, this, [this, box, key] {
        m_draft.SetText(key, ToDString(box->currentData().toString()));
        if (key == "service" && m_draft.Kind() == ConnectionKind::ObjectStore) {
            m_secret.OnService();
            ShowService();
        }
        Suggest();
        m_rows->ShowFault(key, {});
    });
}

void ConnectionForm::ShowService() {
    if (m_draft.Kind() != ConnectionKind::ObjectStore)
        return;
    m_rows->SetVisible("profile", HasProfiles(m_draft) || !m_draft.Text("profile").empty());
    m_rows->SetLabel("key", HasAccounts(m_draft) ? Shown("Account") : Shown("Key ID"));
    m_rows->SetLabel("bucket", HasAccounts(m_draft) ? Shown("Container") : Shown("Bucket"));
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
    static_cast<QLineEdit *>(Control("name"))->setText(ToQString(m_draft.name));
    if (!m_draft.name.empty())
        m_rows->ShowFault("name", {});
}

bool ConnectionForm::TakePasted(DString const &text) {
    bool const isAddress = text.find("://") != DString::npos || text.find('=') != DString::npos;
    std::optional<PastedConnection> const pasted =
        isAddress ? ConnectionFromPasted(text) : std::optional<PastedConnection>();
    if (!pasted)
        return false;
    m_draft.Take(*pasted);
    if (!pasted->secret.IsEmpty())
        m_secret.Take(pasted->secret);
    Build();
    m_secret.Suggest();
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

} // namespace zelvar
