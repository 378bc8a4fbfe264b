#include "zelvar/opends/ServerWaits.h"

#include "zelvar/base/Redaction.h"
#include "zelvar/base/Translation.h"
#include "zelvar/base/TypedSecrets.h"
#include "zelvar/connections/ListingWords.h"
#include "zelvar/data/Connection.h"
#include "zelvar/model/OpenOutcome.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/HierarchyList.h"
#include "zelvar/opends/PlaceNotice.h"
#include "zelvar/opends/PlaceOpener.h"

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
platform::MessageId const ServerWaits::kFolderMessage = platform::RegisterMessage();

ServerWaits::ServerWaits(Panes const &panes, Actions actions, bool hasNotice)
    : m_panes(panes), m_actions(std::move(actions)), m_target(this), m_opener(PlaceOpener::Create()),
      m_empty(m_target, kFolderMessage), m_offer(panes.sources, m_target, kChangedMessage) {
    m_messages.On(kFoundMessage, this, &ServerWaits::OnFound);
    m_messages.On(kChangedMessage, this, &ServerWaits::OnChanged);
    m_messages.On(kFolderMessage, this, &ServerWaits::Update);
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
}

bool ServerWaits::event(QEvent *event) { return m_messages.Dispatch(*event) || QObject::event(event); }

bool ServerWaits::GoTo(DString const &place, bool report) {
    if (!PlaceOpener::IsFor(place))
        return false;
    Find(place, {}, report);
    return true;
}

bool ServerWaits::GoToData(DString const &moniker, bool report) {
    if (!PlaceOpener::IsFor(moniker))
        return false;
    Want(moniker);
    // Elsewhere the place itself lists them.
    bool const mayLieInGroups = IsMapServiceAddress(moniker);
    Find(PlaceOpener::PlaceOf(moniker), mayLieInGroups ? WithFewerOptions(moniker) : std::vector<DString>(), report);
    return true;
}

void ServerWaits::Find(DString const &place, std::vector<DString> data, bool report) {
    Forget();
    m_place = TakeSecrets(place);
    m_data = std::move(data);
    m_reports = report;
    m_opener->Find(m_place, m_data);
    Update();
}

void ServerWaits::Want(DString const &moniker) { m_wanted.Want(moniker, m_panes.items); }

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
    } else if (m_notice == nullptr || (!m_reports && m_panes.items.HasItemRows())) {
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
    bool const isData = tree != nullptr && tree->IsRoot() && !tree->IsFolder() && m_data.empty();
    if (m_notice == nullptr || !isData || place == data)
        return false;
    return GoToData(data, m_reports);
}

void ServerWaits::Forget() {
    m_opener->Cancel();
    m_place.clear();
    m_data.clear();
    m_shown.reset();
    m_failure.Clear();
}

bool ServerWaits::IsWaiting() const { return Waiting().isWaiting; }

bool ServerWaits::Stop() {
    if (!IsWaiting()) {
        bool const hidesRows = m_failure.IsSet() && m_panes.items.HasItemRows();
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
    if (Failed().words.empty()) {
        m_empty.Forget(); // the place that is listed anew may have gone meanwhile
        return false;
    }
    m_isStopped = false;
    m_failure.Clear();
    if (auto *const tree = dynamic_cast<TemplDataSourceItem *>(m_shown.get())) {
        m_opener->Open(*tree);
    } else if (!m_place.empty()) {
        m_opener->Find(m_place, m_data);
    } else {
        DSListCtrl::ItemList roots;
        m_panes.items.GetRootItems(roots);
        TemplDataSourceItem const *const root = roots.empty() ? nullptr : OnServer(roots.front());
        if (m_empty.Forget() || (root != nullptr && root->IsOpen())) {
            m_panes.folders.Refresh();
            m_panes.items.Refresh();
        } else {
            m_panes.sources.ResetSelectedItems();
        }
    }
    Update();
    return true;
}

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
    if (m_panes.items.IsListing() && !m_panes.items.HasItemRows() && !roots.empty())
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
    if (m_panes.items.HasItemRows() || m_panes.items.IsShowingResults())
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

void ServerWaits::TakeOffer() {
    QPointer<ServerWaits> const self(this);
    if (m_offer.Take() && !self.isNull())
        Update();
}

void ServerWaits::OnChanged() {
    if (m_offer.OnChanged())
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
    if (m_empty.Look(m_panes.items, folders, state.isWaiting))
        m_actions.forget();
    bool const isWaiting = state.isWaiting;
    if (!isWaiting)
        state = Failed();
    DString const button = isWaiting ? Translated("Stop") : Translated("Retry");
    int top = 0;
    if (m_panes.items.GetNumRow() == 1 && m_panes.items.ShowParentFolderItem() && !m_failure.IsSet()) {
        Rect const row = m_panes.items.GetItemRect(0);
        top = row.bottom;
    }
    m_offer.Look(state.place, state.failure);
    if (!m_offer.Login().empty())
        state.words =
            Format(Translated("%s cannot be opened: %s"), m_offer.Connection().c_str(), m_offer.Login().c_str()) +
            "\n\n" + state.failure.Text();
    m_notice->Offer(m_offer.Button());
    m_notice->Show(Redacted(state.words), button, top);
}

} // namespace zelvar
