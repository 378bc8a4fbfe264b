#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/model/DataSourceCollector.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/platform/ui/MessageTarget.h"
#include "zelvar/platform/ui/WindowMessage.h"
#include "zelvar/platform/ui/WindowTimers.h"
#include "zelvar/views/ReportView.h"

#include <QtCore/QPointer>

#include <list>
#include <memory>
#include <set>

namespace zelvar {

class ConnectionRows;
class FavoriteFinder;
class FavoriteRows;
struct FavoriteActions;
class NetworkScanner;
class PlaceOpener;

/// Data source list: drives, network drives, configured data sources, favourites and network places in groups. It owns
/// its rows.
///
/// A selection is posted to the coordinator. A connection to a server opens behind the window, and its selection is
/// posted again when it is open or has failed. Network places are looked for on a thread of its own and arrive by a
/// timer. User-interface thread.
class ZELVAR_API DataSourceList : public ReportView {
    Q_OBJECT

public:
    using Worker = NetworkScanner;
    using ItemList = std::list<RefItemPtr<DataSourceItem>>;

    explicit DataSourceList(QWidget *parent = nullptr);
    /// Waits at most five seconds for the thread; one that outlasts them is left to end by itself.
    ~DataSourceList() override;

    /// Not owned; without one nothing is told.
    void SetCoordinator(QObject *coordinator) { m_coordinator = coordinator; }

    /// The user can make connections and change them: the last row of their group makes one, and they have a menu. To
    /// be called before `Fill`.
    void OfferConnections();
    [[nodiscard]] ConnectionRows *Connections() const { return m_connections.get(); } ///< null without that
    /// Reads the connections anew. The items of those whose names are not in `changed` stay, and what is open in them;
    /// `select` names one to be selected, or else the row that was stays so.
    void ListConnectionsAgain(std::set<DString> const &changed, DString const &select);
    /// Whether the connection of that name has been opened.
    [[nodiscard]] bool IsConnectionOpen(DString const &name) const;
    /// Favourites may be anything, have names, groups and an order, and touch no place before they are chosen. To be
    /// called before `Fill`.
    void OfferFavorites(FavoriteActions actions);
    [[nodiscard]] FavoriteRows *OfferedFavorites() const { return m_favorites.get(); } ///< null without that
    /// Reads them anew; the row that is selected stays so.
    void ListFavoritesAgain();
    /// What Return does: true if the selected row does something.
    bool ActivateRow();

    /// Fills the groups for the purpose of the dialog and starts looking for network places. Always true.
    bool Fill(DLGTemplate dlgTemplate);
    /// Fixes the list to one root, which gets no row on the screen. Always true.
    bool Fill(RefItemPtr<DataSourceItem> root);
    /// Shows the rows of another list, which then share the items.
    void CopyData(DataSourceList *other);
    /// Adds the item unless its path is a favourite already; one without a path is not remembered. Always true.
    bool AddFavorite(RefItemPtr<DataSourceItem> item);
    /// Appends the selected rows from top to bottom.
    void GetSelectedItems(ItemList &items) const;
    /// The connection that is being opened; null for none.
    [[nodiscard]] RefItemPtr<DataSourceItem> Opening() const;
    /// Ends that. Does not wait.
    void StopOpening();
    /// Posts `WM_DS_DATA_SOURCE_SELECTED`, so that the coordinator reads the selection again.
    void ResetSelectedItems();

    /// The item of row `row`; the position in this list is the row, whatever group shows it.
    [[nodiscard]] RefItemPtr<DataSourceItem> ItemAt(int row) const;
    [[nodiscard]] QString ShownText(int row, int col) const override;

protected:
    bool CreateFSDataSources(std::set<platform::ShellKind> const &kinds);
    void CreateFavorites();
    void CreateDataSourcesFromTemplates();
    /// Makes list rows for the items that have none yet, in that group or in each one's own.
    void UpdateListRows(int group);
    void UpdateListRows();
    [[nodiscard]] static bool IsFavorite(RefItemPtr<DataSourceItem> const &item);
    static void AddFavoriteDir(DString const &path);
    static void RemoveFavoriteDir(DString const &path);
    void PrepareSelectedItems();

    void DrawItem(DrawItemStruct const &request) override;
    bool OnItemChanged(int row, unsigned oldState, unsigned newState) override;
    bool OnRangeChanged(int first, int last, unsigned oldState, unsigned newState) override;
    bool OnClick(ReportHit hit, Point point) override;
    bool OnDblClick(ReportHit hit, Point point) override;
    bool OnContextMenu(QPoint screenPoint) override;
    [[nodiscard]] int LabelLeft(int row, int col) const override;
    void OnDeleteFavorite();
    bool event(QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void OnCreateList();
    static const platform::MessageId kOpenedMessage;
    void OnOpened();
    bool OfferRetry(QPoint screenPoint);
    void OnSelected(unsigned newState);
    void AppendListRow(std::size_t index);
    void ShowGroups(std::vector<DString> const &ofFavorites);
    [[nodiscard]] static bool IsDead(DataSourceItem const &item);
    [[nodiscard]] static DString TextOf(DataSourceItem const &item);
    void StartWorker();
    void AddFound(ItemList const &items, int group);
    [[nodiscard]] std::vector<int> SelectedRows() const;
    [[nodiscard]] std::vector<int> SelectedFavorites() const;
    void Tell(platform::MessageId message);

    DataSourceRows m_rows; ///< position i is list row i, always
    QPointer<QObject> m_coordinator;
    std::shared_ptr<Worker> m_worker;                 ///< null until first needed
    std::shared_ptr<FavoriteFinder> m_favoriteFinder; ///< null if no favourite takes its time
    platform::MessageMap m_messages;
    platform::MessageTarget m_target;
    std::shared_ptr<PlaceOpener> m_opener;
    RefItemPtr<DataSourceItem> m_opening; ///< one of the rows; null for none
    platform::WindowTimers m_timers;
    std::unique_ptr<ConnectionRows> m_connections; ///< null unless they are offered
    std::unique_ptr<FavoriteRows> m_favorites;     ///< the same
    bool m_keepsSelection = false;                 ///< rows are made anew: what is selected stays, and nobody is told
};

} // namespace zelvar
