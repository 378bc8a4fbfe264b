#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/search/SearchQuery.h"

#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <vector>

class QWidget;

namespace zelvar {

class DSListCtrl;
class SearchForm;
struct SearchDraft;
struct StoredSearch;
class SearchRun;

/// The search of the open dialog: its bar, what is searched behind the window, and the results in the list of items,
/// which come as they are found. Files that the list's filter leaves out of a listing are not found either.
/// User-interface thread.
class ZELVAR_API OpenSearch : public QObject {
    Q_OBJECT

public:
    using ItemList = std::list<RefItemPtr<DataSourceItem>>;
    struct Actions {
        std::function<void(RefItemPtr<DataSourceItem>)> show; ///< its children in all panes
        std::function<void(SearchForm &)> take;               ///< the bar was made, hidden yet
        std::function<void()> layOut;                         ///< it has come, gone, or wants another height
        std::function<void()> forget;                         ///< nothing is selected any more, and nobody says so
    };
    /// `items` is where results are shown, and must outlive it; its roots are what is searched below. The bar is a
    /// child of `dialog`. `nodeMask`: of what can be picked, see `DataSourceItem::IsFile`.
    OpenSearch(QWidget &dialog, DSListCtrl &items, int nodeMask, Actions actions);
    ~OpenSearch() override;

    /// Shows the bar, with the keyboard in the name.
    void Open();
    /// Ends the search, shows the folder as it was, and takes the bar away.
    void Close();
    /// Searches for what stands in the bar, in place of what is searched for now.
    void Begin();
    /// The same for that part of a name or mask.
    void Begin(DString const &name);
    /// The same for all that is filled in.
    void Begin(SearchDraft const &draft);
    /// What was searched for last, to be kept; nothing while no results are shown, and
    /// below what has no path.
    [[nodiscard]] std::optional<StoredSearch> Searched() const;
    /// What Escape does: ends what is under way and keeps what was found, or else the results, or else the bar that has
    /// the keyboard. False if there is nothing of it.
    bool Stop();
    /// Searches for the same once more; false without results.
    bool Again();
    /// From the name of what is searched for to the results; false, and nothing done, from anywhere else.
    bool GoToResults(QWidget const &focus);
    /// Until all that was found is in the list.
    [[nodiscard]] bool IsSearching() const { return m_run != nullptr && m_timer.isActive(); }
    /// Names the place that would be searched. To be called when it may have changed, a few times a second.
    void Update();

    /// Takes what can only be entered out of what was picked. True if that was all there was: it is shown then.
    [[nodiscard]] bool Enter(ItemList &picked) const;
    /// Shows the folder of the item, with the item selected.
    void ShowFolderOf(RefItemPtr<DataSourceItem> const &item) const;

    /// Pixels of the bar at that width, at most `most`; 0 while it is away.
    [[nodiscard]] int HeightFor(int width, int most) const;
    /// Null until it was opened for the first time.
    [[nodiscard]] SearchForm *Form() const { return m_form; }

private:
    using Items = std::vector<RefItemPtr<DataSourceItem>>;
    [[nodiscard]] bool IsShown() const;
    [[nodiscard]] bool HasFocus() const;
    void MakeForm();
    void Run();
    void TakeHits();
    void ShowProgress();
    void Finish();
    void OnResultsLeft();
    void Release();
    void Hide();

    QWidget &m_dialog;
    DSListCtrl &m_items;
    int m_nodeMask;
    Actions m_actions;
    SearchForm *m_form = nullptr; ///< a child of the dialog
    std::shared_ptr<SearchRun> m_run;
    SearchQuery m_query;                  ///< that was searched for last
    std::unique_ptr<SearchDraft> m_draft; ///< the same as it was filled in
    Items m_places;                       ///< below these
    DString m_placeName;                  ///< as the bar says
    QTimer m_timer;                       ///< while hits are waited for
};

} // namespace zelvar
