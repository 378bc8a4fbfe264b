#include "zelvar/opends/ServerWaits.h"

#include "zelvar/base/Redaction.h"
#include "zelvar/base/Translation.h"
#include "zelvar/base/TypedSecrets.h"
#include "zelvar/connections/ConnectionBook.h"
#include "zelvar/connections/ConnectionFiles.h"
#include "zelvar/connections/ListingWords.h"
#include "zelvar/connections/SecretStore.h"
#include "zelvar/model/OpenOutcome.h"
#include "zelvar/opends/ConnectionRows.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/HierarchyList.h"
#include "zelvar/opends/PlaceNotice.h"
#include "zelvar/opends/PlaceOpener.h"
#include "zelvar/opends/TextQuestion.h"
#include "zelvar/opends/connections/Errand.h"

#include <QtCore/QPointer>

#include <utility>

namespace zelvar {

namespace {

constexpr std::string_view kByName = "source:"; // before the name of a connection

DString NameOf(DString const &place) { return place.starts_with(kByName) ? place.substr(kByName.size()) : place; }

/// What is wrong with a place, what to do about it, and what its server said.
DString FaultInWords(DString const &name, DError const &error) {
    DString text = Format(Translated("%s cannot be opened: %s"), name.c_str(), CauseInWords(error).c_str());
    if (DString const remedy = RemedyInWords(error); !remedy.empty())
        text += "; " + remedy;
    bool const isTold = text.find(error.Text()) != DString::npos || HostSentOnTo(error.Text());
    return !isTold ? text + "\n\n" + error.Text() : text;
}

DString NameOf(DataSourceItem const &item) {
    DString const name = item.GetName();
    return name.empty() ? item.GetPath() : name;
}

/// Several connections may have one address.
DString PlaceOf(TemplDataSourceItem const &tree) {
    DString const definition = tree.GetDefinition();
    return definition.empty() ? tree.GetSource() : DString(kByName) + definition;
}

TemplDataSourceItem const *OnServer(RefItemPtr<DataSourceItem> const &item) {
    auto const *const tree = dynamic_cast<TemplDataSourceItem const *>(item.get());
    return tree != nullptr && tree->IsOnServer() ? tree : nullptr;
}

} // namespace

platform::MessageId const ServerWaits::kFoundMessage = platform::RegisterMessage();
platform::MessageId const ServerWaits::kChangedMessage = platform::RegisterMessage();

/// The change of a definition or of a password, on a thread of its own.
struct ServerWaits::Changing {
    std::shared_ptr<Errand> errand;
    std::shared_ptr<Handover<ConnectionChange>> result = std::make_shared<Handover<ConnectionChange>>();
};

ServerWaits::ServerWaits(Panes const &panes, Actions actions, bool hasNotice)
    : m_panes(panes), m_actions(std::move(actions)), m_target(this), m_opener(PlaceOpener::Create()) {
    m_messages.On(kFoundMessage, this, &ServerWaits::OnFound);
    m_messages.On(kChangedMessage, this, &ServerWaits::OnChanged);
    m_opener->SetOwner(m_target, kFoundMessage);
    if (!hasNotice)
        return;
    m_notice = new PlaceNotice(m_panes.items);
    m_notice->SetHandler([this] { std::ignore = IsWaiting() ? Stop() : Retry(); });
    m_notice->SetOfferHandler([this] { TakeOffer(); });
}

ServerWaits::~ServerWaits() {
    m_target.Detach();
    m_opener->Release();
    if (m_changing != nullptr)
        m_changing->errand->Release(); // what it has begun it ends
}

bool ServerWaits::event(QEvent *event) { return m_messages.Dispatch(*event) || QObject::event(event); }

bool ServerWaits::GoTo(DString const &place, bool report) {
    if (!PlaceOpener::IsFor(place))
        return false;
    Forget();
    m_place = TakeSecrets(place);
    m_reports = report;
    m_opener->Find(m_place);
    Update();
    return true;
}

bool ServerWaits::Show(RefItemPtr<DataSourceItem> const &item) {
    auto *const tree = dynamic_cast<TemplDataSourceItem *>(item.get());
    if (tree == nullptr || !tree->IsOnServer() || tree->TakeOpened())
        return false;
    Forget();
    m_place = NameOf(*tree);
    m_shown = item;
    m_reports = true;
    m_opener->Open(*tree);
    Update();
    return true;
}

void ServerWaits::OnFound() {
    std::optional<PlaceOpener::Answer> answer = m_opener->TakeAnswer();
    if (!answer)
        return;
    m_failure = answer->error;
    if (auto *const shown = dynamic_cast<TemplDataSourceItem *>(m_shown.get()); shown != nullptr)
        answer->item = shown->TakeOpened() ? m_shown : nullptr;
    if (answer->item == nullptr && !m_failure.IsSet())
        m_failure.Set("\"" + m_place + "\" is not there", DError::Cause::Missing);
    if (!m_failure.IsSet() && GoToPlaceOf(answer->item.get()))
        return;
    if (!m_failure.IsSet()) {
        Forget();
        m_actions.show(answer->item);
    } else if (m_notice == nullptr || (!m_reports && HasRows())) {
        DString const place = m_place;
        DError const failure = m_failure;
        Forget();
        if (m_reports)
            m_actions.refuse(place, failure);
        return;
    }
    Update();
}

/// False, and nothing done, for what can be listed itself.
bool ServerWaits::GoToPlaceOf(DataSourceItem const *found) {
    auto const *const tree = dynamic_cast<TemplDataSourceItem const *>(found);
    DString const data = m_shown == nullptr ? m_place : DString();
    DString const place = PlaceOpener::PlaceOf(data);
    if (m_notice == nullptr || tree == nullptr || !tree->IsRoot() || tree->IsFolder() || place == data)
        return false;
    m_wanted.Want(data, m_panes.items);
    return GoTo(place, m_reports);
}

void ServerWaits::Forget() {
    m_opener->Cancel();
    m_place.clear();
    m_shown.reset();
    m_failure.Clear();
}

bool ServerWaits::IsWaiting() const { return Waiting().isWaiting; }

bool ServerWaits::Stop() {
    if (!IsWaiting()) {
        bool const hidesRows = m_failure.IsSet() && HasRows();
        if (hidesRows)
            Forget(), Update();
        return hidesRows;
    }
    m_opener->Cancel();
    m_panes.sources.StopOpening();
    m_panes.folders.StopListing();
    m_panes.parents.StopListing();
    m_panes.items.StopListing();
    m_isStopped = true;
    m_panes.items.GetRootItems(m_stoppedRoots);
    Update();
    return true;
}

bool ServerWaits::Retry() {
    if (Failed().words.empty())
        return false;
    m_isStopped = false;
    m_failure.Clear();
    if (auto *const tree = dynamic_cast<TemplDataSourceItem *>(m_shown.get())) {
        m_opener->Open(*tree);
    } else if (!m_place.empty()) {
        m_opener->Find(m_place);
    } else {
        DSListCtrl::ItemList roots;
        m_panes.items.GetRootItems(roots);
        TemplDataSourceItem const *const root = roots.empty() ? nullptr : OnServer(roots.front());
        if (root != nullptr && root->IsOpen()) {
            m_panes.folders.Refresh();
            m_panes.items.Refresh();
        } else {
            m_panes.sources.ResetSelectedItems();
        }
    }
    Update();
    return true;
}

/// Rows that somebody can pick from; the way up is none.
bool ServerWaits::HasRows() const { return m_panes.items.GetNumRow() > (m_panes.items.ShowParentFolderItem() ? 1 : 0); }

ServerWaits::State ServerWaits::Waiting() const {
    auto const connectingTo = [](DString const &name) -> State {
        return {.words = Format(Translated("Connecting to %s ..."), name.c_str()), .isWaiting = true};
    };
    if (RefItemPtr<DataSourceItem> const source = m_panes.sources.Opening(); source != nullptr)
        return connectingTo(NameOf(*source));
    if (m_opener->IsBusy())
        return connectingTo(NameOf(m_place));
    bool const isListing = m_panes.items.IsListing() || m_panes.parents.IsListing() || m_panes.folders.IsListing();
    if (!isListing)
        return {};
    DSListCtrl::ItemList roots;
    m_panes.items.GetRootItems(roots);
    State state{.isWaiting = true};
    if (m_panes.items.IsListing() && !HasRows() && !roots.empty())
        state.words = Format(Translated("Listing %s ..."), NameOf(*roots.front()).c_str());
    return state;
}

ServerWaits::State ServerWaits::Failed() const {
    if (m_failure.IsSet()) {
        auto const *const tree = dynamic_cast<TemplDataSourceItem const *>(m_shown.get());
        return {.words = FaultInWords(NameOf(m_place), m_failure),
                .failure = m_failure,
                .place = tree == nullptr ? m_place : PlaceOf(*tree)};
    }
    if (HasRows() || m_panes.items.IsShowingResults())
        return {};
    DSListCtrl::ItemList roots;
    m_panes.items.GetRootItems(roots);
    if (m_isStopped && roots == m_stoppedRoots)
        return {.words = Translated("Stopped.")};
    TemplDataSourceItem const *const root = roots.size() == 1 ? OnServer(roots.front()) : nullptr;
    DError const failure = root == nullptr ? DError() : root->GetFailure();
    if (failure.IsSet())
        return {.words = FaultInWords(NameOf(*root), failure), .failure = failure, .place = PlaceOf(*root)};
    return {.words = m_empty.Words()};
}

// --------------------------------------------------------------------------------------- what the user can allow

ServerWaits::Offer ServerWaits::OfferFor(State const &state) {
    if (!state.failure.IsSet())
        return {};
    std::shared_ptr<ConnectionBook const> const book = ConnectionBook::Now();
    ConnectionBook::Entry const *const entry = state.place.starts_with(kByName)
                                                   ? book->Find(state.place.substr(kByName.size()))
                                                   : book->FindByAddress(state.place);
    if (entry == nullptr)
        return {};
    Connection const &connection = entry->connection;
    if (state.failure.Why() == DError::Cause::Refused) {
        std::optional<HostAndPort> host = HostSentOnTo(state.failure.Text());
        return host ? Offer{.connection = connection.name, .host = *std::move(host)} : Offer();
    }
    if (state.failure.Why() == DError::Cause::Untrusted && !HostUntrustedElsewhere(state.failure.Text()))
        return {.connection = connection.name, .isCertificate = true};
    bool const isTyped = connection.secret == SecretPlace::Ask || connection.secret == SecretPlace::Keyring;
    DString login = isTyped ? LoginFailureInWords(connection, state.failure) : DString();
    if (DString const refusal = SecretStore::Instance().KeyringRefusal(connection); !login.empty() && !refusal.empty())
        login = refusal; // which is why the server was told none
    return login.empty() ? Offer() : Offer{.connection = connection.name, .login = std::move(login)};
}

DString ServerWaits::ButtonOf(Offer const &offer) {
    if (offer.isCertificate)
        return Translated("Certificate...");
    return offer.login.empty() ? Format(Translated("Allow %s"), TextOf(offer.host).c_str())
                               : DString(Translated("Password..."));
}

void ServerWaits::TakeOffer() {
    Offer const offer = m_offer;
    if (offer.connection.empty() || m_changing != nullptr)
        return;
    if (offer.isCertificate)
        return m_panes.sources.Connections()->Edit(offer.connection, true);
    if (offer.login.empty())
        return Change([offer](StopSignal const &) { return AllowHost(offer.connection, offer.host); });
    QPointer<ServerWaits> const self(this);
    std::optional<Secret> const typed =
        AskForPassword(m_panes.items.window(), Format(Translated("Password of %s:"), offer.connection.c_str()));
    ConnectionBook::Entry const *const entry = ConnectionBook::Now()->Find(offer.connection);
    if (!typed || typed->IsEmpty() || self.isNull() || entry == nullptr)
        return;
    Change([connection = entry->connection, typed = *typed](StopSignal const &stop) {
        std::ignore = SecretStore::Instance().Keep(connection, typed, &stop); // in memory at least
        return ConnectionChange{.isDone = true};
    });
}

void ServerWaits::Change(std::function<ConnectionChange(StopSignal const &)> change) {
    auto changing = std::make_unique<Changing>();
    changing->errand = Errand::Start(
        [change = std::move(change), result = changing->result](StopSignal const &stop) { result->Put(change(stop)); },
        m_target, kChangedMessage);
    if (changing->errand == nullptr)
        return Report::UserNotification("There is no thread for it now. Try again.");
    m_changing = std::move(changing);
    Update();
}

void ServerWaits::OnChanged() {
    if (m_changing == nullptr || m_changing->errand->IsAtWork())
        return;
    std::unique_ptr<Changing> const done = std::move(m_changing);
    done->errand->Release();
    for (ConnectionChange const &change : done->result->TakeAll())
        if (!change.isDone)
            Report::UserNotification("The connections stay as they are: %s", change.words.c_str());
        else
            std::ignore = Retry();
    Update();
}

void ServerWaits::ShowBusy(bool isBusy) {
    m_isBusy = isBusy;
    if (isBusy)
        m_panes.items.viewport()->setCursor(Qt::BusyCursor);
    else
        m_panes.items.viewport()->unsetCursor();
}

void ServerWaits::Update() {
    State state = Waiting();
    m_wanted.Update(m_panes.items, state.isWaiting);
    if (state.isWaiting)
        m_isStopped = false;
    if (m_isBusy != state.isWaiting)
        ShowBusy(state.isWaiting);
    if (m_notice == nullptr)
        return;
    std::vector<DSListCtrl const *> folders{&m_panes.parents};
    for (int pane = 0; pane < m_panes.folders.GetPaneCount(); ++pane)
        folders.push_back(m_panes.folders.GetPane(pane));
    m_empty.Look(m_panes.items, folders, state.isWaiting);
    bool const isWaiting = state.isWaiting;
    if (!isWaiting)
        state = Failed();
    DString const button = isWaiting ? Translated("Stop") : Translated("Retry");
    int top = 0;
    if (m_panes.items.GetNumRow() == 1 && m_panes.items.ShowParentFolderItem() && !m_failure.IsSet()) {
        Rect const row = m_panes.items.GetItemRect(0);
        top = row.bottom;
    }
    // Whoever cannot make connections cannot change them here either.
    m_offer = m_panes.sources.Connections() == nullptr || isWaiting ? Offer() : OfferFor(state);
    bool const isOffered = !m_offer.connection.empty() && m_changing == nullptr;
    if (!m_offer.login.empty())
        state.words = Format(Translated("%s cannot be opened: %s"), m_offer.connection.c_str(), m_offer.login.c_str()) +
                      "\n\n" + state.failure.Text();
    m_notice->Offer(isOffered ? ButtonOf(m_offer) : DString());
    m_notice->Show(Redacted(state.words), button, top);
}

} // namespace zelvar
