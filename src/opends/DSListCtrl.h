#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/lists/CZelListCtrlVirtual.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/model/datasets/DataSetFolding.h"
#include "zelvar/platform/ui/WindowMessage.h"
#include "zelvar/platform/ui/WindowTimers.h"

#include <QtCore/QPointer>

#include <functional>
#include <list>
#include <memory>
#include <vector>

namespace zelvar {

struct ListResults;
struct PaneState;
template <class Handle>
struct PendingRow;

/// Data source list control: shows the children of one or more items, painted from the items themselves.
///
/// A request that changes nothing of what the last listing was made from costs nothing. A listing runs to its end
/// inside the call that asks for it; its rows appear at the next tick of a timer, the selection kept by path. One of
/// what is open on a server runs behind the window instead, and its rows appear as they come. User-interface thread.
class ZELVAR_API DSListCtrl : public CZelListCtrlVirtual {
    Q_OBJECT

public:
    /// What a listing holds.
    enum Mode {
        ModeFolders = 0,   ///< one column: folders
        ModeRecursive = 1, ///< what can be picked, subfolders included; name, size and date
        ModeFiles = 2,     ///< what can be picked; the columns are those of the mode at creation
    };
    using ItemList = std::list<RefItemPtr<DataSourceItem>>;

    explicit DSListCtrl(QWidget *parent = nullptr);
    ~DSListCtrl() override;

    /// Makes the window of a list created without a parent; the mode decides the columns. 0 on failure.
    int Create(unsigned style, Rect const &rect, DLGTemplate dlgTemplate, QWidget *parent, unsigned id);

    void SetMode(Mode mode);
    [[nodiscard]] Mode GetMode() const { return m_mode; }
    /// Not owned; without one nothing is told.
    void SetCoordinator(QObject *coordinator) { m_coordinator = coordinator; }
    void SetSelChangeMessage(platform::MessageId message) { m_selChangeMessage = message; }
    void SetDblClckMessage(platform::MessageId message) { m_dblClckMessage = message; }
    void SetBDIFilter(int mask) { m_bdiFilter = mask; }
    [[nodiscard]] int GetBDIFilter() const { return m_bdiFilter; }
    /// Asked about the roots of each listing; nothing is folded without one.
    using FoldingRule = std::function<DataSetFolding(ItemList const &roots)>;
    void SetFoldingRule(FoldingRule rule) { m_foldingRule = std::move(rule); }
    /// What is on a server and has no picture of its own is shown with that of its kind.
    void ShowKinds() { m_showsKinds = true; }
    void SetShowParentFolderItem(bool show) { m_showParentFolderItem = show; }
    [[nodiscard]] bool ShowParentFolderItem() const { return m_showParentFolderItem; }

    /// Lists the children of `dir` and selects `selected`, which may be null, once it turns up.
    void ShowDir(RefItemPtr<DataSourceItem> dir, RefItemPtr<DataSourceItem> const &selected);
    /// Lists the children of the items, unless that is what is shown; the selection is kept by path.
    void ResetItems(ItemList const &items);
    /// Lists the same roots again, whether or not anything has changed.
    void Refresh();
    /// Stops a listing and empties the list.
    void Reset() override;
    /// Takes the filter; lists again if that changes the content. `formatId` may be null for the present one.
    void ApplyFileFilter(char const *mask, char const *formatId);
    [[nodiscard]] DString const &GetFileFilter() const { return m_fileFilter; }
    /// Lists again in that order: by name, size or date for the columns 0, 1 and 2.
    void Sort(int col, bool ascending) override;
    using CZelListCtrlVirtual::Sort;
    /// The last sort of a listing, also while results are shown.
    [[nodiscard]] LastSort GetListingSort() const;
    /// Lists what the other list lists.
    void CopyData(DSListCtrl *other);

    /// Whether there are rows that somebody can pick from; the way up is none.
    [[nodiscard]] bool HasItemRows() const { return GetNumRow() > (m_showParentFolderItem ? 1 : 0); }
    /// Whether a server is listed behind the window.
    [[nodiscard]] bool IsListing() const;
    /// Ends that; what has come stays. Does not wait.
    void StopListing();

    // What a search has found, in place of the rows of a listing, with a column that says in which folder below the
    // roots it lies. A request for a listing ends that, see `ResultsLeft`.
    /// Empties the list for results, or for other ones.
    void ShowResults();
    /// They come behind those that are there, or where a sort by a column puts them. What is selected stays.
    void AppendResults(std::vector<RefItemPtr<DataSourceItem>> items);
    [[nodiscard]] bool IsShowingResults() const { return m_results != nullptr; }
    /// Shows the listing as it was left: its rows, what is selected, how far it is scrolled. Nothing without results.
    void LeaveResults();

    /// Replaces the argument by the items whose children are listed.
    void GetRootItems(ItemList &items) const { items = m_rootItems; }
    /// Appends the items of the selected rows, from top to bottom.
    void GetSelectedItems(ItemList &items) const;
    void ClearSelection();
    /// Selects the rows of these paths and no other ones, once those that a listing has found are here; of each path
    /// whether it is a row. Told as a selection of the user's.
    std::vector<bool> SelectPaths(std::vector<DString> const &paths);
    [[nodiscard]] RefItemPtr<DataSourceItem> ItemAt(int row) const; ///< null outside the rows
    /// Whether the last double click, which is told whatever lies below it, hit no row.
    [[nodiscard]] bool WasDblClckBesideRows() const { return m_dblClckBesideRows; }

    /// Draws the tiles of the list, see `ShowTiles`.
    class TilePainter {
    public:
        TilePainter(TilePainter const &) = delete;
        TilePainter &operator=(TilePainter const &) = delete;
        virtual void DrawTile(DrawItemStruct const &request, DataSourceItem const &item) = 0;
        virtual void TilesPainted() = 0; ///< behind each paint of tiles
        virtual void RootsChanged() = 0; ///< other items are about to be listed

    protected:
        TilePainter() = default;
        ~TilePainter() = default;
    };
    /// Not owned; null for none. Without one there are no tiles.
    void SetTilePainter(TilePainter *painter) { m_tilePainter = painter; }
    /// Pixels at the end of the headings that the columns leave to somebody else.
    void ReserveHeading(int width);

    DString OnGetItemText(int row, int col) override;
    int OnGetItemImg(int row, int col) override;
    [[nodiscard]] QString ShownText(int row, int col) const override;

Q_SIGNALS:
    void PlaceLeft();  ///< other items will be listed; the rows and the roots are still there
    void PlaceShown(); ///< other items are listed; their rows are yet to come
    /// The list shows results no more.
    void ResultsLeft();

protected:
    void PreCreateWindow(unsigned &style, Rect &place) override;
    int OnCreate() override;
    void DrawItem(DrawItemStruct const &request) override;
    void paintEvent(QPaintEvent *event) override;
    bool OnItemChanged(int row, unsigned oldState, unsigned newState) override;
    bool OnRangeChanged(int first, int last, unsigned oldState, unsigned newState) override;
    bool OnDblClick(ReportHit hit, Point point) override;
    bool OnColumnClick(int col) override;
    void OnChar(QChar character) override;
    void timerEvent(QTimerEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    [[nodiscard]] int MeasureCell(int row, int col) const override;
    [[nodiscard]] int LabelLeft(int row, int col) const override;

private:
    using Rows = std::vector<RefItemPtr<DataSourceItem>>;
    struct Listing;

    void ResetItemsIntrnl(ItemList items);
    void ShowRootName();
    void StartWindowFilling();
    [[nodiscard]] bool IsForThread() const;
    void AddParentRow();
    void SaveSelection();
    void SaveFocus();
    void SavePaneState();
    [[nodiscard]] PaneState PresentState() const;
    [[nodiscard]] bool HasStateChanged() const;
    void MergePending();
    void Merge(std::vector<PendingRow<RefItemPtr<DataSourceItem>>> batch);
    void KeepListing();
    void SortResults(int col, bool ascending);
    [[nodiscard]] std::unique_ptr<ListResults> EndResults();
    [[nodiscard]] DString FolderText(DataSourceItem &item) const;
    [[nodiscard]] int LeastNameWidth() const;
    [[nodiscard]] std::vector<std::uint32_t> SelectedRows() const;
    [[nodiscard]] DString CellText(DataSourceItem &item, int col) const;
    void Tell(platform::MessageId message, platform::MessageParam second);

    ItemList m_rootItems;
    Rows m_rows; ///< one entry a row
    /// Names take what the other columns leave, until somebody gives them another width.
    void FitNames();

    Mode m_mode = ModeFolders;
    int m_reservedHeading = 0;          ///< pixels
    int m_fittedNames = 0;              ///< width that the names were given last, pixels
    std::unique_ptr<Listing> m_listing; ///< the one under way, and what was listed and selected before
    QPointer<QObject> m_coordinator;
    platform::MessageId m_selChangeMessage;
    platform::MessageId m_dblClckMessage;
    DString m_fileFilter;
    DString m_formatId;                        ///< of the selected format; the driver that iterators are limited to
    RefItemPtr<DataSourceItem> m_itemToSelect; ///< kept track of across a refill
    DLGTemplate m_dlgTemplate = DT_DATA;
    int m_bdiFilter = 0;
    FoldingRule m_foldingRule;
    bool m_showParentFolderItem = false;
    bool m_showsKinds = false;
    std::unique_ptr<ImageList> m_parentFolderImages; ///< the picture of ".."
    bool m_dblClckBesideRows = false;
    std::unique_ptr<ListResults> m_results; ///< null for a listing
    bool m_isQuiet = false;                 ///< nobody is told what is selected
    TilePainter *m_tilePainter = nullptr;   ///< not owned
    platform::WindowTimers m_timers;
};

} // namespace zelvar
