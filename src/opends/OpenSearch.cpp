#include "zelvar/opends/OpenSearch.h"

#include "zelvar/base/Translation.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/search/SearchForm.h"
#include "zelvar/opends/search/SearchLine.h"
#include "zelvar/opends/search/SearchRun.h"
#include "zelvar/opends/search/StoredSearch.h"
#include "zelvar/platform/os/MountTable.h"
#include "zelvar/platform/ui/Announce.h"
#include "zelvar/platform/ui/EllipsisLabel.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QAccessible>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLineEdit>

#include <algorithm>
#include <utility>

namespace zelvar {

namespace {

constexpr std::size_t kTogether = 5000; // hits that are taken into the list at a time
constexpr int kLookEvery = 100;         // ms
constexpr int kSoon = 20;               // ms, for the first hits and where more are waiting

DString NameOf(DataSourceItem const &item) {
    DString const name = item.GetName();
    return name.empty() ? item.GetPath() : name;
}

/// Who is on a network place means what lies below it.
bool IsOnNetwork(DataSourceItem const &place) {
    DString const path = dynamic_cast<NtwDataSourceItem const *>(&place) == nullptr ? DString() : place.GetPath();
    return !path.empty() && platform::MayBlockAt(path);
}

} // namespace

OpenSearch::OpenSearch(QWidget &dialog, DSListCtrl &items, int nodeMask, Actions actions)
    : m_dialog(dialog), m_items(items), m_nodeMask(nodeMask), m_actions(std::move(actions)) {
    connect(&m_items, &DSListCtrl::ResultsLeft, this, &OpenSearch::OnResultsLeft);
    connect(&m_timer, &QTimer::timeout, this, &OpenSearch::TakeHits);
}

void OpenSearch::MakeForm() {
    m_form = new SearchForm(&m_dialog);
    m_form->hide();
    connect(m_form, &SearchForm::SearchPressed, this, [this] {
        if (IsSearching())
            m_run->Stop();
        else
            Begin();
    });
    connect(m_form, &SearchForm::ClosePressed, this, &OpenSearch::Close);
    connect(m_form, &SearchForm::HeightChanged, this, [this] { m_actions.layOut(); });
    m_form->SetPlace(m_placeName);
    m_actions.take(*m_form);
}

OpenSearch::~OpenSearch() { Release(); }

void OpenSearch::Release() {
    m_timer.stop();
    if (m_run != nullptr)
        m_run->Release();
    m_run.reset();
}

// --------------------------------------------------------------------------------------------------- opening, ending

bool OpenSearch::IsShown() const { return m_form != nullptr && !m_form->isHidden(); }

bool OpenSearch::HasFocus() const { return IsShown() && m_form->isAncestorOf(m_dialog.focusWidget()); }

void OpenSearch::Open() {
    if (m_form == nullptr)
        MakeForm();
    if (!IsShown()) {
        Update();
        m_form->show();
        m_actions.layOut();
    }
    m_form->FocusOnName();
}

void OpenSearch::Hide() {
    if (!IsShown())
        return;
    bool const hadFocus = HasFocus();
    m_form->hide();
    m_form->ShowLine({});
    m_actions.layOut();
    if (hadFocus)
        m_items.setFocus();
}

void OpenSearch::Close() {
    m_items.LeaveResults();
    Hide();
}

// Another place was chosen, or the folder is to be seen again.
void OpenSearch::OnResultsLeft() {
    Release();
    if (m_form != nullptr)
        m_form->ShowSearching(false);
    if (m_items.GetNumSlct() == 0)
        m_actions.forget();
    Hide();
}

bool OpenSearch::Stop() {
    if (IsSearching())
        m_run->Stop();
    else if (m_items.IsShowingResults() || HasFocus())
        Close();
    else
        return false;
    return true;
}

void OpenSearch::Update() {
    if (m_form == nullptr)
        return;
    ItemList roots;
    m_items.GetRootItems(roots);
    std::erase(roots, nullptr);
    DString name;
    for (RefItemPtr<DataSourceItem> const &root : roots)
        name += (name.empty() ? "" : ", ") + NameOf(*root);
    if (name == m_placeName)
        return;
    m_placeName = name;
    m_form->SetPlace(name);
}

// ------------------------------------------------------------------------------------------------------- searching

void OpenSearch::Begin(DString const &name) {
    Open();
    m_form->SetName(name);
    Begin();
}

void OpenSearch::Begin(SearchDraft const &draft) {
    Open();
    m_form->SetDraft(draft);
    Begin();
}

std::optional<StoredSearch> OpenSearch::Searched() const {
    if (!m_items.IsShowingResults())
        return std::nullopt;
    StoredSearch search{.draft = *m_draft};
    for (RefItemPtr<DataSourceItem> const &place : m_places)
        search.places.push_back(place->GetPath());
    bool const isNamed = std::ranges::none_of(search.places, &DString::empty);
    return isNamed ? std::optional(std::move(search)) : std::nullopt;
}

void OpenSearch::Begin() {
    if (!IsShown())
        Open();
    SearchDraft::Fault fault;
    std::optional<SearchQuery> query = m_form->Draft().ToQuery(fault);
    if (!query) {
        m_form->ShowFault(fault);
        return;
    }
    ItemList roots;
    m_items.GetRootItems(roots);
    m_places.assign(roots.begin(), roots.end());
    std::erase(m_places, nullptr);
    if (m_places.empty()) {
        m_form->ShowLine(Translated("Choose a place to search below"));
        return;
    }
    m_query = *std::move(query);
    m_draft = std::make_unique<SearchDraft>(m_form->Draft());
    m_query.remote = m_query.remote || std::any_of(m_places.begin(), m_places.end(),
                                                   [](auto const &place) { return IsOnNetwork(*place); });
    Run();
}

bool OpenSearch::Again() {
    if (!m_items.IsShowingResults())
        return false;
    if (IsShown())
        Begin(); // by what the fields say now
    else
        Run();
    return true;
}

bool OpenSearch::GoToResults(QWidget const &focus) {
    // In a box the key chooses.
    bool const isOfForm =
        IsShown() && m_form->isAncestorOf(&focus) && qobject_cast<QComboBox const *>(&focus) == nullptr;
    if (!isOfForm || m_items.GetNumRow() == 0)
        return false;
    m_items.setFocus(Qt::TabFocusReason);
    if (m_items.GetFocusRow() < 0) {
        m_items.SetItemState(0, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
        m_items.SetSelectionMark(0);
    }
    return true;
}

void OpenSearch::Run() {
    Release();
    m_query.files = m_items.GetFileFilter(); // as in a listing
    m_items.ShowResults();
    m_actions.forget();
    m_run = SearchRun::Start({.query = m_query, .places = m_places, .nodeMask = m_nodeMask});
    m_form->ShowSearching(m_run != nullptr);
    ShowProgress();
    if (m_run != nullptr)
        m_timer.start(kSoon);
}

void OpenSearch::TakeHits() {
    // Asked before the look: what is found last is not left behind. Nobody waits for the end of what was stopped.
    bool const isAtWork = m_run->IsAtWork() && !m_run->IsStopped();
    m_items.AppendResults(m_run->TakeHits(kTogether));
    bool const isMore = m_run->HasHits();
    if (!isAtWork && !isMore)
        return Finish();
    m_timer.setInterval(isMore ? kSoon : kLookEvery);
    ShowProgress();
}

void OpenSearch::ShowProgress() {
    SearchPhase phase = m_run == nullptr || m_run->IsStopped() ? SearchPhase::Stopped : SearchPhase::Done;
    if (phase == SearchPhase::Done && (m_timer.isActive() || m_run->IsAtWork()))
        phase = SearchPhase::Searching;
    SearchProgress const progress = m_run == nullptr ? SearchProgress() : m_run->Progress();
    m_form->ShowLine(SearchInWords(phase, progress, m_items.GetNumRow()));
}

void OpenSearch::Finish() {
    m_timer.stop();
    m_form->ShowSearching(false);
    ShowProgress();
    // Said once, at the end: a line that counts is of no use to anybody who listens.
    m_form->Line()->setAccessibleName(m_form->Line()->Text());
    QAccessibleEvent alert(m_form->Line(), QAccessible::Alert);
    platform::Announce(alert);
}

// --------------------------------------------------------------------------------------------------------- results

bool OpenSearch::Enter(ItemList &picked) const {
    RefItemPtr<DataSourceItem> const only = picked.size() == 1 ? picked.front() : nullptr;
    picked.remove_if([this](RefItemPtr<DataSourceItem> const &item) { return !item->IsFile(m_nodeMask); });
    if (only == nullptr || !picked.empty() || !only->IsFolder())
        return false;
    m_actions.show(only);
    return true;
}

void OpenSearch::ShowFolderOf(RefItemPtr<DataSourceItem> const &item) const {
    RefItemPtr<DataSourceItem> const folder = item->GetParent();
    if (folder == nullptr)
        return;
    DString const path = item->GetPath();
    m_actions.show(folder);
    m_items.SelectPaths({path});
    m_items.setFocus();
}

int OpenSearch::HeightFor(int width, int most) const { return IsShown() ? m_form->HeightFor(width, most) : 0; }

} // namespace zelvar
