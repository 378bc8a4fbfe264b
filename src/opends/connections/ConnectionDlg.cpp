#include "zelvar/opends/connections/ConnectionDlg.h"

#include "zelvar/base/Report.h"
#include "zelvar/base/Translation.h"
#include "zelvar/lists/CZelListCtrl.h"
#include "zelvar/opends/connections/ConnectionForm.h"
#include "zelvar/opends/connections/TrialPane.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QSignalBlocker>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollArea>

#include <algorithm>
#include <utility>

namespace zelvar {

namespace {

using platform::ControlKind;
using platform::DialogItem;
using platform::GetDlgItem;

enum ControlIds { kOk = 1, kCancel = 2, kKinds = 1001, kFields = 1002, kTrial = 1003, kTest = 1004 };

// The fields get two thirds of what the window grows by. With letters half as large again it still fits 800 pixels.
constexpr DialogItem kItems[] = {
    {kKinds, ControlKind::List, "", 7, 7, 66, 124, {0, 0, 0, 66}},
    {kFields, ControlKind::Place, "", 78, 7, 179, 124, {0, 0, 100, 66}},
    {kTrial, ControlKind::Place, "", 7, 136, 250, 86, {0, 66, 100, 100}},
    {kTest, ControlKind::Button, Mark("Test"), 7, 227, 60, 14, {0, 100, 0, 100}},
    {kOk, ControlKind::DefaultButton, Mark("OK"), 151, 227, 50, 14, {100, 100, 100, 100}},
    {kCancel, ControlKind::Button, Mark("Cancel"), 207, 227, 50, 14, {100, 100, 100, 100}},
};
constexpr platform::DialogTemplate kTemplate{
    .id = 6120, .caption = Mark("Connection"), .width = 264, .height = 248, .items = kItems};
constexpr unsigned kFlags = 3;

constexpr char const *kNotTested = Mark("Test tries the connection step by step. Nothing is kept before OK.");
constexpr char const *kTesting = Mark("Testing... Escape stops it.");
constexpr char const *kSaving = Mark("Saving... The keyring may ask to be unlocked.");
constexpr char const *kWorks = Mark("The connection works.");
constexpr char const *kNoThread = Mark("There is no thread for it now. Try again.");

platform::MessageId const kNews = platform::RegisterMessage();

} // namespace

ConnectionDlg::ConnectionDlg(QWidget *parent, std::optional<ConnectionBook::Entry> former)
    : cdxCDynamicDialog(kTemplate, parent, FreedomAll, kFlags), m_target(this), m_former(std::move(former)),
      m_results(std::make_shared<Handover<TrialResult>>()), m_saved(std::make_shared<Handover<SavedConnection>>()) {
    m_messages.On(kNews, this, &ConnectionDlg::OnNews);
}

ConnectionDlg::~ConnectionDlg() {
    m_target.Detach();
    End();
}

bool ConnectionDlg::event(QEvent *event) { return m_messages.Dispatch(*event) || cdxCDynamicDialog::event(event); }

// ------------------------------------------------------------------------------------------------------ building

QWidget *ConnectionDlg::MakeControl(DialogItem const &item) {
    switch (item.id) {
    case kFields: {
        auto *const area = new QScrollArea(this);
        area->setWidgetResizable(true);
        area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // fields get narrower
        area->setFocusPolicy(Qt::NoFocus);
        area->setWidget(m_form = new ConnectionForm);
        return area;
    }
    case kTrial:
        return m_trial = new TrialPane(this);
    default:
        return nullptr;
    }
}

bool ConnectionDlg::OnInitDialog() {
    cdxCDynamicDialog::OnInitDialog();
    GetDlgItem(*this, kFields)->show(); // no mere places
    m_trial->show();
    m_kinds = GetDlgItem<QListWidget>(*this, kKinds);
    m_testButton = GetDlgItem<QPushButton>(*this, kTest);
    m_okButton = GetDlgItem<QPushButton>(*this, kOk);
    m_kinds->setAccessibleName(platform::Shown("Kind"));
    m_kinds->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWindowTitle(m_former ? platform::Shown("Connection \"%1\"").arg(platform::ToQString(m_former->connection.name))
                            : platform::Shown("New Connection"));
    m_form->Show(m_former ? ConnectionDraft(m_former->connection) : ConnectionDraft(), !m_former);
    FillKinds();
    FitKinds();
    OrderFocus();
    connect(m_form, &ConnectionForm::Rebuilt, this, &ConnectionDlg::OrderFocus);
    connect(m_kinds, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row >= 0)
            m_form->SetKind(static_cast<ConnectionKind>(m_kinds->item(row)->data(Qt::UserRole).toInt()));
    });
    connect(m_form, &ConnectionForm::KindPasted, this, &ConnectionDlg::ShowKind);
    connect(m_testButton, &QPushButton::clicked, this, &ConnectionDlg::OnTest);
    connect(m_trial, &TrialPane::CertificateAccepted, this,
            [this](DString const &fingerprint) { OnOffer("fingerprint", fingerprint); });
    connect(m_trial, &TrialPane::HostAllowed, this, [this](DString const &host) { OnOffer("allow", host); });
    m_trial->Clear(kNotTested);
    if (m_former)
        m_form->Control("name")->setFocus();
    else
        m_kinds->setFocus();
    if (std::exchange(m_testsAtOnce, false))
        platform::PostMessage(this, kNews, 1);
    return false; // the focus is set
}

void ConnectionDlg::FillKinds() {
    for (ConnectionKindWords const &kind : ConnectionKinds()) {
        // An address of no kind says all by itself; it is changed here, and made in the definition's file.
        bool const isOffered =
            kind.kind != ConnectionKind::Address || (m_former && m_former->connection.kind == ConnectionKind::Address);
        if (!isOffered)
            continue;
        auto *const item = new QListWidgetItem(platform::Shown(kind.label), m_kinds);
        item->setData(Qt::UserRole, static_cast<int>(kind.kind));
        item->setToolTip(item->text());
    }
    ShowKind();
}

void ConnectionDlg::FitKinds() {
    int const missing = m_kinds->sizeHintForColumn(0) + 2 * m_kinds->frameWidth() - m_kinds->width();
    Position kinds;
    Position fields;
    QWidget *const area = GetDlgItem(*this, kFields);
    if (missing <= 0 || !GetControlPosition(m_kinds, kinds) || !GetControlPosition(area, fields))
        return;
    kinds.right += missing;
    fields.left += missing;
    AddSzControl(m_kinds, kinds, true);
    AddSzControl(area, fields, true);
}

void ConnectionDlg::OrderFocus() {
    QWidget *former = m_kinds;
    for (QWidget *const control : m_form->FocusOrder())
        setTabOrder(std::exchange(former, control), control);
    setTabOrder(former, m_trial->List());
    setTabOrder(m_trial->List(), m_trial->OfferButton());
    setTabOrder(m_trial->OfferButton(), m_testButton);
}

void ConnectionDlg::ShowKind() {
    QSignalBlocker const blocker(m_kinds); // the form has it already
    for (int row = 0; row < m_kinds->count(); ++row)
        if (m_kinds->item(row)->data(Qt::UserRole).toInt() == static_cast<int>(m_form->Draft().Kind()))
            m_kinds->setCurrentRow(row);
}

bool ConnectionDlg::DestroyWindow() {
    End();
    m_form = nullptr;
    m_trial = nullptr;
    return cdxCDynamicDialog::DestroyWindow();
}

// ----------------------------------------------------------------------------------------------- what is under way

bool ConnectionDlg::IsRight() {
    m_form->TakeTypedAddress();
    std::vector<ConnectionFault> const faults = m_form->Draft().Faults();
    m_form->ShowFaults(faults);
    return faults.empty();
}

ConnectionBook::Entry ConnectionDlg::Entered() const {
    ConnectionBook::Entry entry{.connection = m_form->Draft().ToConnection(), .secret = m_form->Password()};
    // One that leaves the definition with OK is known, and not kept elsewhere yet.
    SecretPlace const place = entry.connection.secret;
    bool const isKept = place == SecretPlace::Definition || place == SecretPlace::Keyring || place == SecretPlace::Ask;
    if (entry.secret.IsEmpty() && m_former && isKept)
        entry.secret = m_former->secret;
    return entry;
}

void ConnectionDlg::Begin(Errand::Work work) {
    m_errand = Errand::Start(std::move(work), m_target, kNews);
    if (m_errand == nullptr)
        m_trial->SayBelow(Translated(kNoThread));
    ShowBusy();
}

void ConnectionDlg::End() {
    if (m_errand != nullptr)
        std::exchange(m_errand, nullptr)->Release();
}

void ConnectionDlg::ShowBusy() {
    m_testButton->setText(IsBusy() ? platform::Shown("Stop") : platform::Shown("Test"));
    m_okButton->setEnabled(!IsBusy());
}

void ConnectionDlg::OnTest() {
    if (IsBusy()) {
        m_errand->Stop();
        return;
    }
    if (!IsRight())
        return;
    m_trial->Clear(kTesting);
    m_results = std::make_shared<Handover<TrialResult>>();
    Begin([entry = Entered(), former = m_former ? m_former->connection.name : DString(), results = m_results,
           target = m_target](StopSignal const &stop) {
        auto const list = [&] { return ListConnection(entry, former, &stop); };
        std::ignore = ConnectionTrial(entry, list)
                          .Run(
                              [&](TrialResult const &result) {
                                  results->Put(result);
                                  target.Post(kNews);
                              },
                              &stop);
    });
}

void ConnectionDlg::OnNews(platform::MessageParam testsAtOnce) {
    if (m_trial == nullptr)
        return; // the window has gone
    if (testsAtOnce != 0)
        OnTest();
    bool const hasEnded = m_errand != nullptr && !m_errand->IsAtWork(); // asked before what it left is taken
    bool const isStopped = m_errand != nullptr && m_errand->IsStopped();
    for (TrialResult const &result : m_results->TakeAll())
        m_trial->Add(result);
    std::vector<SavedConnection> const saved = m_saved->TakeAll();
    if (hasEnded) {
        End();
        ShowBusy();
        if (saved.empty())
            OnTrialEnded();
    }
    if (!saved.empty())
        OnSaved(saved.back(), isStopped);
}

void ConnectionDlg::OnTrialEnded() {
    std::vector<TrialResult> const &results = m_trial->Results();
    if (results.empty() || results.back().state != TrialState::Works)
        return; // the last step says why
    auto const listing = std::find_if(results.begin(), results.end(),
                                      [](TrialResult const &result) { return result.step == TrialStep::Listing; });
    m_trial->SayBelow(listing == results.end() ? Translated(kWorks) : listing->words);
}

void ConnectionDlg::OnOffer(DString const &field, DString const &value) {
    if (IsBusy())
        return;
    DString const former = field == "allow" ? m_form->Draft().allow : DString();
    m_form->Fill(field, former.empty() ? value : former + ", " + value);
    m_testButton->setFocus(); // the button of the offer goes
    OnTest();
}

void ConnectionDlg::OnOK() {
    if (IsBusy() || !IsRight())
        return;
    m_trial->SayBelow(Translated(kSaving));
    m_saved = std::make_shared<Handover<SavedConnection>>();
    Begin([connection = m_form->Draft().ToConnection(), typed = m_form->Password(), former = m_former,
           saved = m_saved](StopSignal const &stop) {
        saved->Put(SaveWithSecret(former ? &*former : nullptr, connection, typed, &stop));
    });
}

void ConnectionDlg::OnSaved(SavedConnection const &saved, bool isStopped) {
    if (!saved.change.isDone) {
        m_trial->SayBelow(saved.change.words);
        if (!isStopped)
            m_form->ShowFaults({{"name", saved.change.words}});
        return;
    }
    m_savedName = saved.change.names.empty() ? DString() : saved.change.names.front();
    cdxCDynamicDialog::OnOK();
    if (!saved.words.empty())
        Report::UserNotification("The connection is saved. %s", saved.words.c_str());
}

void ConnectionDlg::OnCancel() {
    if (IsBusy() && !m_errand->IsStopped())
        m_errand->Stop();
    else // nothing is under way, or who says so twice does not wait for its end
        cdxCDynamicDialog::OnCancel();
}

} // namespace zelvar
