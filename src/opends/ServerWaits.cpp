#include "zelvar/opends/ServerWaits.h"

#include "zelvar/base/Redaction.h"
#include "zelvar/base/Translation.h"
#include "zelvar/base/TypedSecrets.h"
#include "zelvar/model/OpenOutcome.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/HierarchyList.h"
#include "zelvar/opends/PlaceNotice.h"
#include "zelvar/opends/PlaceOpener.h"

#include <utility>

namespace zelvar {

namespace {

/// What is wrong with a place, what to do about it, and what its server said.
DString FaultInWords(DString const &name, DError const &error) {
    DString text = Format(Translated("%s cannot be opened: %s"), name.c_str(), CauseInWords(error).c_str());
    if (DString const remedy = RemedyInWords(error); !remedy.empty())
        text += "; " + remedy;
    return text.find(error.Text()) == DString::npos ? text + "\n\n" + error.Text() : text;
}

DString NameOf(DataSourceItem const &item) {
    DString const name = item.GetName();
    return name.empty() ? item.GetPath() : name;
}

TemplDataSourceItem const *OnServer(RefItemPtr<DataSourceItem> const &item) {
    auto const *const tree = dynamic_cast<TemplDataSourceItem const *>(item.get());
    return tree != nullptr && tree->IsOnServer() ? tree : nullptr;
}

} // namespace

platform::MessageId const ServerWaits::kFoundMessage = platform::RegisterMessage();

ServerWaits::ServerWaits(Panes const &panes, Actions actions, bool hasNotice)
    : m_panes(panes), m_actions(std::move(actions)), m_target(this), m_opener(PlaceOpener::Create()) {
    m_messages.On(kFoundMessage, this, &ServerWaits::OnFound);
    m_opener->SetOwner(m_target, kFoundMessage);
    if (!hasNotice)
        return;
    m_notice = new PlaceNotice(m_panes.items);
    m_notice->SetHandler([this] { std::ignore = IsWaiting() ? Stop() : Retry(); });
}

ServerWaits::~ServerWaits() {
    m_target.Detach();
    m_opener->Release();
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
        return connectingTo(m_place);
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
    if (m_failure.IsSet())
        return {.words = FaultInWords(m_place, m_failure)};
    if (HasRows() || m_panes.items.IsShowingResults())
        return {};
    DSListCtrl::ItemList roots;
    m_panes.items.GetRootItems(roots);
    if (m_isStopped && roots == m_stoppedRoots)
        return {.words = Translated("Stopped.")};
    TemplDataSourceItem const *const root = roots.size() == 1 ? OnServer(roots.front()) : nullptr;
    DError const failure = root == nullptr ? DError() : root->GetFailure();
    return failure.IsSet() ? State{.words = FaultInWords(NameOf(*root), failure)} : State();
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
    if (state.isWaiting)
        m_isStopped = false;
    if (m_isBusy != state.isWaiting)
        ShowBusy(state.isWaiting);
    if (m_notice == nullptr)
        return;
    bool const isWaiting = state.isWaiting;
    if (!isWaiting)
        state = Failed();
    DString const button = isWaiting ? Translated("Stop") : Translated("Retry");
    int top = 0;
    if (m_panes.items.GetNumRow() == 1 && m_panes.items.ShowParentFolderItem() && !m_failure.IsSet()) {
        Rect const row = m_panes.items.GetItemRect(0);
        top = row.bottom;
    }
    m_notice->Show(Redacted(state.words), button, top);
}

} // namespace zelvar
