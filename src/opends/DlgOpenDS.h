#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/base/DFileFrmt.h"
#include "zelvar/base/Export.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/layout/DSplitterWnd.h"
#include "zelvar/layout/cdxCDynamicDialog.h"
#include "zelvar/model/DataSourceExtras.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/model/SeriesMode.h"
#include "zelvar/opends/OpenFeatures.h"
#include "zelvar/opends/PathButtonRow.h"
#include "zelvar/platform/ui/DialogTemplate.h"
#include "zelvar/platform/ui/MessageTarget.h"
#include "zelvar/platform/ui/WindowMessage.h"

#include <chrono>
#include <list>
#include <memory>
#include <optional>

class QCheckBox;
class QKeyEvent;
class QLineEdit;
class QPushButton;

namespace zelvar {

class CZelComboBox;
class BasketStrip;
struct Favorite;
class DSDataSourceWnd;
class DSListCtrl;
class DSPropertyWnd;
class DataSetRows;
class DataSourceList;
class DriverOptionChoice;
class ExtrasFinder;
class HierarchyList;
class NamedData;
class OpenForecast;
class PlaceTravel;
class OpenSearch;
class ServerWaits;
class ThumbnailLook;

/// Open data source dialog: the modal dialog in which the user picks data items and gets monikers back.
///
/// It owns its panes and coordinates them: they post or send it messages, and it tells the others what to show. Made by
/// `CreateDialogObject`, shown by `DoModal`, given back by `DeleteDialogObject`; the results stay valid until then.
/// User-interface thread.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): the base has a virtual one
class ZELVAR_API DlgOpenDS : public cdxCDynamicDialog, public DSplitterWnd::PaneOwner {
    Q_OBJECT

public:
    /// `formats` are offered in the file type box, `format` is the present one; they must outlive the dialog.
    /// `historyKey` names the folder history, and may be null.
    [[nodiscard]] static DlgOpenDS *CreateDialogObject(DVector<DFileFrmt *> const &formats, DFileFrmt *format,
                                                       DLGTemplate dlgTemplate, char const *historyKey,
                                                       QWidget *parent);
    /// Null is ignored.
    static void DeleteDialogObject(DlgOpenDS *dialog);

    /// What dialogs that are made from now on offer beyond their panes: bits of `OpenFeatures`, all of them unless
    /// somebody says otherwise. `kOpenPlain` switches everything off.
    static void SetFeatures(unsigned features);
    [[nodiscard]] static unsigned GetFeatures();

    // Before showing.
    void SetTitle(char const *title);
    void SetInitDir(char const *path); ///< where to start
    void
    SetInitItem(RefItemPtr<DataSourceItem> item); ///< where to start when it is no plain folder; wins over the path
    void SetRootItem(RefItemPtr<DataSourceItem> item); ///< the data source list shows this item alone
    /// Types of driver nodes that can be picked, bits of `BDINodeType`. Without one, containers show the folders in
    /// them alone.
    void SetBDIFilter(int mask);
    void OfferBasket(bool offers);   ///< what is gathered in a basket can be the result; not without `kOpenBasket`
    void SetMultiSelect(bool multi); ///< several rows of the main list can be picked; documents never
    /// What opens data behind "?" of their monikers; not without `kOpenOptions`.
    void SetOptions(DString const &options);
    void SetSeriesMode(SeriesMode mode); ///< one moniker a member without it

    // Results.
    [[nodiscard]] DVectorSafe<BDIMoniker> const &GetSelectedNodePaths() const { return m_monikers; }
    /// Whether the user has ordered them: they are a basket.
    [[nodiscard]] bool IsOrdered() const { return m_isOrdered; }
    [[nodiscard]] DFileFrmt *GetFormat() const { return m_format; }
    [[nodiscard]] bool GetReadOnly() const { return m_readOnly; }
    [[nodiscard]] bool GetEditOnly() const { return m_editOnly; }
    [[nodiscard]] DataSourceItem::DataSourceType GetDataSourceType() const { return m_dataSourceType; }

    /// A typed path made ready for the system.
    [[nodiscard]] static DString FixPath(char const *path);

    /// Lists the folder at `path` in all panes. With `report` a path that is not there is told to the user. An address
    /// is looked for behind the window.
    void GoToDir(DString const &path, bool report);
    /// Lists the item's children in all panes.
    void ShowItem(RefItemPtr<DataSourceItem> item);
    /// Applies the mask to all lists and lists them again; `formatId` may be null for the present one.
    void ApplyFileFilter(char const *mask, char const *formatId);
    /// Lists subfolders too, as the button does.
    void SetRecursive(bool recursive);

    [[nodiscard]] DSListCtrl *MainList() const { return m_mainList; }
    [[nodiscard]] DSListCtrl *FolderList() const { return m_folderList; }
    [[nodiscard]] DataSourceList *SourceList() const { return m_dataSourceList; }
    [[nodiscard]] DSDataSourceWnd *DataSourceWnd() const { return m_dataSourceWnd; }
    [[nodiscard]] HierarchyList *Hierarchy() const { return m_hierarchyList; }
    [[nodiscard]] DSPropertyWnd *PropertyWnd() const { return m_propertyWnd; }
    /// What is known of the line below the panes; null without it.
    [[nodiscard]] OpenForecast *Forecast() const { return m_forecast.get(); }
    /// Back and forward; null without it.
    [[nodiscard]] PlaceTravel *Travel() const { return m_travel.get(); }
    /// What was gathered; null without it.
    [[nodiscard]] BasketStrip *GatheredItems() const { return m_basket.get(); }
    /// What is waited for from servers; null while the panes do not exist.
    [[nodiscard]] ServerWaits *Waits() const { return m_waits.get(); }
    /// The search below the place that is shown; null without it.
    [[nodiscard]] OpenSearch *Search() const { return m_search.get(); }
    /// How the items are shown; null in a dialog without thumbnails.
    [[nodiscard]] ThumbnailLook *Thumbnails() const { return m_thumbnails.get(); }
    [[nodiscard]] PathButtonRow const &PathRow() const { return *m_pathButtons; }

    QWidget *CreateViewObj(DSplitterWnd *splitter, int row, int col, PaneClass const *paneClass, Size size) override;
    int CreateViewWnd(DSplitterWnd *splitter, QWidget *pane, int row, int col, Rect const &rect, QWidget *parent,
                      unsigned id) override;
    void DeleteView(DSplitterWnd *splitter, int row, int col) override;
    bool RecalcLayout(DSplitterWnd *splitter) override;

protected:
    DlgOpenDS(DVector<DFileFrmt *> const &formats, DFileFrmt *format, DLGTemplate dlgTemplate, char const *historyKey,
              QWidget *parent);
    ~DlgOpenDS() override;

    bool OnInitDialog() override;
    bool DestroyWindow() override;
    QWidget *MakeControl(platform::DialogItem const &item) override;
    void OnOK() override;
    bool DoMoveCtrl(QWidget *child, int id, Rect &rect, cdxCDynamicLayoutInfo const &info) override;
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    using ItemList = std::list<RefItemPtr<DataSourceItem>>;

    // Set-up, in the order of OnInitDialog.
    void WireMessages();
    void AssignControls();
    void CreateChildren();
    void AssignWndVars();
    void InitializeLayout();
    void FillHistory();
    void FillFileTypes();
    [[nodiscard]] CZelButton *SetUpToolButton(int id, char const *picture, char const *tip);
    void RestoreRecursion();
    void RestoreSorting();
    void RestoreFilter();

    // What the panes tell.
    void OnDataSourceSelected();
    void OnDataItemSelected(platform::MessageParam pane);
    void OnFirstPaneDataItemSelected();
    void OnImageSelected();
    void OnImageDblClick();
    void OnDSOptionsChanged();
    void OnRootChanged();
    void OnFirstPaneRootChanged();
    void OnResetPathButtons();
    // Messages of the dialog to itself that no pane knows.
    static const platform::MessageId kFirstPaintMessage;
    static const platform::MessageId kAcceptMessage;
    static const platform::MessageId kExtrasFoundMessage;
    void OnFirstPaint();
    void OnAccept();
    void OnExtrasFound();

    // What the user does.
    void OnButtonClck(int id);
    void OnAddToFavorites();
    void OnHome();
    void OnListRecursively();
    void OnSelendokHist();
    void OnSelendokFileType();
    void OnUpdateState();
    bool ProcessShortcut(QKeyEvent const &key);
    bool ProcessKey(int key, QWidget *focus);
    bool ProcessReturnKey(QWidget *focus);
    bool ProcessInsertKey(QWidget *focus);
    bool ProcessTabKey(QWidget *focus);
    void ProcessRefreshKey(QWidget *focus);

    /// Lists the place that the dialog begins at, for so long at most; nothing for as long as it takes. False if not
    /// all of it came in time.
    bool ShowInitialPlace(std::optional<std::chrono::milliseconds> time);
    void ResetPathButtons();
    void UpdateFormat(DFileFrmt *format);
    void UpdateExtras(ItemList const &items);
    void ShowSelected(ItemList const &items);
    /// Waits for the options of what is selected; false if the user does not want to.
    [[nodiscard]] bool AreExtrasFound();
    /// Finds out whether a file is a container after all; true if it is and is shown, nothing if the user ended it.
    [[nodiscard]] std::optional<bool> EnterLateContainer(RefItemPtr<DataSourceItem> const &item);
    void WriteSettings();
    void CreateDataSetRows();
    void ListDataSetsAgain();
    void CreateForecast();
    void CreateWaits();
    void CreateSearch();
    void CreateSearchButton();
    void LayOutAroundSearch();
    void ShowPlace(RefItemPtr<DataSourceItem> item);
    /// Null for none, which is told with `report`, and if the user ends the wait.
    [[nodiscard]] RefItemPtr<DataSourceItem> FindPlace(DString const &path, bool report) const;
    void RefusePlace(DString const &path, DError const &error) const;
    void ShowDriverOptions(ItemList const &items);
    /// What stands on the page of a driver's options, for all that is selected.
    void TakeDriverOptions();
    /// What is chosen for the item beside its path, but not how a series is given.
    [[nodiscard]] DString OptionsOf(DataSourceItem const &item) const;
    [[nodiscard]] DString NamedOptionsOf(DString const &path) const;
    /// What names the item, with the options that are set; a series as one.
    [[nodiscard]] DString MonikerOf(DataSourceItem const &item) const;
    [[nodiscard]] std::vector<BDIMoniker> MonikersOf(DataSourceItem const &item);
    void CreateBasket();
    void CreateTravel();
    void AddToBasket(ItemList const &items);
    void OfferFavorites();
    void AddToFavorites(ItemList const &items);
    void AddSearchToFavorites();
    void OpenFavorite(Favorite const &favorite);
    void LoadIntoBasket(DString const &file);
    /// Takes the basket's items for the result.
    void TakeBasket();
    [[nodiscard]] ItemList SelectedImages() const;
    [[nodiscard]] DString TemplateKey() const;

    platform::MessageMap m_messages;
    CZelComboBox *m_histCombo = nullptr; ///< children, all owned by the window tree
    CZelComboBox *m_fileTypeCombo = nullptr;
    QLineEdit *m_fileFilterEdit = nullptr;
    QPushButton *m_okButton = nullptr;
    QPushButton *m_cancelButton = nullptr;
    DSplitterWnd *m_splitter = nullptr; ///< null while the panes do not exist
    DSplitterWnd *m_leftSplitter = nullptr;
    DataSourceList *m_dataSourceList = nullptr;
    DSDataSourceWnd *m_dataSourceWnd = nullptr;
    DSListCtrl *m_folderList = nullptr;
    DSListCtrl *m_mainList = nullptr;
    HierarchyList *m_hierarchyList = nullptr;
    DSPropertyWnd *m_propertyWnd = nullptr;
    CZelButton *m_favoritesButton = nullptr;
    CZelButton *m_layoutButton = nullptr;
    CZelButton *m_recursiveButton = nullptr;
    CZelButton *m_measureButton = nullptr;
    CZelButton *m_homeButton = nullptr;
    QCheckBox *m_readOnlyCheck = nullptr;
    QCheckBox *m_editOnlyCheck = nullptr;
    std::unique_ptr<PathButtonRow> m_pathButtons;
    std::unique_ptr<ServerWaits> m_waits;
    std::unique_ptr<PlaceTravel> m_travel; ///< null without that feature, as the next
    std::unique_ptr<BasketStrip> m_basket;
    std::unique_ptr<DataSetRows> m_dataSetRows; ///< null without that feature, as the next
    std::unique_ptr<NamedData> m_namedData;
    std::unique_ptr<OpenSearch> m_search;     ///< null without that feature
    std::unique_ptr<OpenForecast> m_forecast; ///< null without that feature, as the next
    std::unique_ptr<DriverOptionChoice> m_driverOptions;
    std::unique_ptr<ThumbnailLook> m_thumbnails; ///< null without that feature
    ItemList m_pageItems;                        ///< whose options stand on the page of their driver; empty without one
    unsigned const m_features = GetFeatures();

    bool m_layoutDone = false;
    bool m_isPlaceShown = false; ///< the one that the dialog begins at, with all that is in it
    DVectorSafe<BDIMoniker> m_monikers;
    bool m_isOrdered = false;
    RefItemPtr<DataSourceItem> m_rootItem;
    RefItemPtr<DataSourceItem> m_initItem;
    DString m_title;
    DString m_initDir;
    DVector<DFileFrmt *> m_formats; ///< not owned
    DFileFrmt *m_format = nullptr;  ///< not owned
    DLGTemplate m_dlgTemplate;
    bool m_readOnly = false;
    bool m_editOnly = false;
    bool m_multiSelect = true;
    bool m_offersBasket = false;
    int m_bdiFilter = 0;
    SeriesMode m_seriesMode = SeriesMode::Members;
    int m_stateTimer = 0;
    DataSourceExtras m_extras;
    platform::MessageTarget m_target;
    std::shared_ptr<ExtrasFinder> m_extrasFinder;
    DataSourceItem::DataSourceType m_dataSourceType = DataSourceItem::DST_UNKNOWN;
    DString m_historyKey;
};

} // namespace zelvar
