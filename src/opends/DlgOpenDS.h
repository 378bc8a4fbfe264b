#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/base/DFileFrmt.h"
#include "zelvar/base/Export.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/layout/DSplitterWnd.h"
#include "zelvar/layout/cdxCDynamicDialog.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/model/SeriesMode.h"
#include "zelvar/opends/OpenFeatures.h"
#include "zelvar/opends/PathButtonRow.h"
#include "zelvar/platform/ui/DialogTemplate.h"
#include "zelvar/platform/ui/WindowMessage.h"

#include <chrono>
#include <list>
#include <memory>
#include <optional>

class QCheckBox;
class QPushButton;

namespace zelvar {

class BasketStrip;
class DSDataSourceWnd;
class DSListCtrl;
class DSPropertyWnd;
class DataSourceList;
class HierarchyList;
class OpenFields;
class OpenForecast;
class OpenKeys;
class OpenPanes;
class OpenParts;
class OpenSearch;
class PlaceFinder;
class PlaceTravel;
class SelectionOptions;
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

    // The panes; null while there is no window.
    [[nodiscard]] DSListCtrl *MainList() const;
    [[nodiscard]] DSListCtrl *FolderList() const;
    [[nodiscard]] DataSourceList *SourceList() const;
    [[nodiscard]] DSDataSourceWnd *DataSourceWnd() const;
    [[nodiscard]] HierarchyList *Hierarchy() const;
    [[nodiscard]] DSPropertyWnd *PropertyWnd() const;
    /// What is waited for from servers; null while there is no window.
    [[nodiscard]] ServerWaits *Waits() const { return m_waits.get(); }
    // What there is beyond the panes; null where it is not offered.
    [[nodiscard]] OpenForecast *Forecast() const;     ///< what is known of the line below the panes
    [[nodiscard]] PlaceTravel *Travel() const;        ///< back and forward
    [[nodiscard]] BasketStrip *GatheredItems() const; ///< what was gathered
    /// Gathers what a file of monikers names, once the window is there; false without a basket, or if it is none.
    bool LoadBasket(DString const &file);
    [[nodiscard]] OpenSearch *Search() const;        ///< below the place that is shown
    [[nodiscard]] ThumbnailLook *Thumbnails() const; ///< how the items are shown
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
    void FitIntoScreen();
    void CreateChildren();
    void CreateParts();
    void SetUpToolButtons();
    void InitializeLayout();
    void RestoreRecursion();
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
    void OnFirstPaint();

    // What the user does.
    void OnButtonClck(int id);
    void OnAddToFavorites();
    void OnHome();
    void OnListRecursively();
    void OnUpdateState();

    /// Lists the place that the dialog begins at, for so long at most; nothing for as long as it takes. False if not
    /// all of it came in time.
    bool ShowInitialPlace(std::optional<std::chrono::milliseconds> time);
    void ResetPathButtons();
    void UpdateFormat(DFileFrmt *format);
    void ShowSelected(ItemList const &items);
    // Make what is selected, or gathered, the result; false if the dialog is not to end.
    [[nodiscard]] bool TakeSelected();
    [[nodiscard]] bool TakeGathered();
    void WriteSettings();
    [[nodiscard]] ItemList SelectedImages() const;
    [[nodiscard]] DString TemplateKey() const;

    platform::MessageMap m_messages;
    QPushButton *m_okButton = nullptr; ///< children, all owned by the window tree
    QPushButton *m_cancelButton = nullptr;
    CZelButton *m_recursiveButton = nullptr;
    CZelButton *m_measureButton = nullptr;
    QCheckBox *m_readOnlyCheck = nullptr;
    QCheckBox *m_editOnlyCheck = nullptr;
    // In the order in which they are made: each refers to those before it. Null while there is no window.
    std::unique_ptr<OpenFields> m_fields;
    std::unique_ptr<OpenPanes> m_panes;
    std::unique_ptr<PlaceFinder> m_places;
    std::unique_ptr<ServerWaits> m_waits;
    std::unique_ptr<OpenParts> m_parts;
    std::unique_ptr<OpenKeys> m_keys;
    std::unique_ptr<PathButtonRow> m_pathButtons;
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
    int m_stateTimer = 0;
    std::unique_ptr<SelectionOptions> m_options;
    DataSourceItem::DataSourceType m_dataSourceType = DataSourceItem::DST_UNKNOWN;
    DString m_historyKey;
};

} // namespace zelvar
