#include "zelvar/opends/DlgOpenDS.h"

#include "zelvar/base/DFile.h"
#include "zelvar/base/Translation.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/model/ListingsShared.h"
#include "zelvar/model/SeriesItem.h"
#include "zelvar/opends/BasketStrip.h"
#include "zelvar/opends/DSDataSourceWnd.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DSMessages.h"
#include "zelvar/opends/DSPropertyWnd.h"
#include "zelvar/opends/DataSetRows.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/DriverOptionChoice.h"
#include "zelvar/opends/ExtrasFinder.h"
#include "zelvar/opends/FavoriteRows.h"
#include "zelvar/opends/HierarchyList.h"
#include "zelvar/opends/NamedData.h"
#include "zelvar/opends/OpenDialogTemplate.h"
#include "zelvar/opends/OpenForecast.h"
#include "zelvar/opends/OpenLine.h"
#include "zelvar/opends/OpenSearch.h"
#include "zelvar/opends/PlaceTravel.h"
#include "zelvar/opends/ServerWaits.h"
#include "zelvar/opends/ThumbnailLook.h"
#include "zelvar/opends/core/DialogState.h"
#include "zelvar/opends/search/SearchForm.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/EllipsisLabel.h"
#include "zelvar/platform/ui/EscapeWatch.h"
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/settings/DfltFldrs.h"
#include "zelvar/store/DCnfg.h"

#include <QtGui/QScreen>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QApplication>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QCompleter>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>

#include <algorithm>
#include <utility>

namespace zelvar {

using platform::GetDlgItem;
using platform::ToDString;
using platform::ToQString;

namespace {

constexpr int kStateInterval = 200;            // ms
constexpr std::chrono::milliseconds kSoon{60}; // before the first paint
constexpr int kInch = 96;                      // pixels before scaling
constexpr int kMinTrack = 10;                  // pixels of a row or column
constexpr Size kMeasureButton{10, 10};

constexpr char kSection[] = "DlgOpenDS";
constexpr char kSortingSection[] = "DlgOpenDSSorting";
constexpr char kFilterSection[] = "FileFilter";
constexpr char kRecursiveKey[] = "recursive";

template <class Pane>
QWidget *NewPane() {
    return new Pane;
}
constexpr PaneClass kSplitterClass{"DSplitterWnd", &NewPane<DSplitterWnd>};
constexpr PaneClass kHierarchyClass{"HierarchyList", &NewPane<HierarchyList>};
constexpr PaneClass kListClass{"DSListCtrl", &NewPane<DSListCtrl>};
constexpr PaneClass kDataSourceClass{"DSDataSourceWnd", &NewPane<DSDataSourceWnd>};
constexpr PaneClass kPropertyClass{"DSPropertyWnd", &NewPane<DSPropertyWnd>};

DString WithOptions(DString const &path, DString const &options) {
    return options.empty() ? path : path + "?" + options;
}

} // namespace

DlgOpenDS *DlgOpenDS::CreateDialogObject(DVector<DFileFrmt *> const &formats, DFileFrmt *format,
                                         DLGTemplate dlgTemplate, char const *historyKey, QWidget *parent) {
    return new DlgOpenDS(formats, format, dlgTemplate, historyKey, parent);
}

void DlgOpenDS::DeleteDialogObject(DlgOpenDS *dialog) { delete dialog; }

DlgOpenDS::DlgOpenDS(DVector<DFileFrmt *> const &formats, DFileFrmt *format, DLGTemplate dlgTemplate,
                     char const *historyKey, QWidget *parent)
    : cdxCDynamicDialog((GetFeatures() & (kOpenLine | kOpenBasket)) != 0 ? kOpenDialogWithLine : kOpenDialogTemplate,
                        parent, FreedomAll, FlagSizeIcon | FlagAntiFlicker),
      m_formats(formats), m_format(format), m_dlgTemplate(dlgTemplate), m_target(this),
      m_extrasFinder(ExtrasFinder::Create()), m_historyKey(historyKey == nullptr ? "" : historyKey) {
    WarmReaders();
    WireMessages();
    m_extrasFinder->SetOwner(m_target, kExtrasFoundMessage);
    if ((m_features & kOpenOptions) != 0 && !PicksDocument(m_dlgTemplate))
        m_driverOptions = std::make_unique<DriverOptionChoice>(DriverOptionChoice::Use::Reading);
}

DlgOpenDS::~DlgOpenDS() {
    m_target.Detach();
    m_extrasFinder->Release();
    qApp->removeEventFilter(this);
}

namespace {
unsigned g_features = kOpenAll;
} // namespace

void DlgOpenDS::SetFeatures(unsigned features) { g_features = features; }
unsigned DlgOpenDS::GetFeatures() { return g_features; }

void DlgOpenDS::SetTitle(char const *title) { m_title = title == nullptr ? "" : title; }
void DlgOpenDS::SetInitDir(char const *path) { m_initDir = path == nullptr ? "" : path; }
void DlgOpenDS::SetInitItem(RefItemPtr<DataSourceItem> item) { m_initItem = std::move(item); }
void DlgOpenDS::SetRootItem(RefItemPtr<DataSourceItem> item) { m_rootItem = std::move(item); }
void DlgOpenDS::SetBDIFilter(int mask) { m_bdiFilter = mask; }
void DlgOpenDS::SetOptions(DString const &options) {
    if (m_driverOptions != nullptr)
        m_driverOptions->SetGiven(options);
}
void DlgOpenDS::SetSeriesMode(SeriesMode mode) { m_seriesMode = mode; }
void DlgOpenDS::OfferBasket(bool offers) { m_offersBasket = offers; }
void DlgOpenDS::SetMultiSelect(bool multi) { m_multiSelect = multi; }

DString DlgOpenDS::FixPath(char const *path) { return path == nullptr ? DString() : FixTypedPath(path); }

DString DlgOpenDS::TemplateKey() const { return Format("%d", static_cast<int>(m_dlgTemplate)); }

// ---------------------------------------------------------------------------------------------------- the panes

QWidget *DlgOpenDS::CreateViewObj(DSplitterWnd *, int, int, PaneClass const *, Size) { return nullptr; }

// Which pane talks to whom by which number is decided here and nowhere else.
int DlgOpenDS::CreateViewWnd(DSplitterWnd *, QWidget *pane, int, int, Rect const &rect, QWidget *parent, unsigned id) {
    QRect const place(rect.left, rect.top, rect.Width(), rect.Height());
    if (auto *hierarchy = qobject_cast<HierarchyList *>(pane)) {
        hierarchy->setParent(parent);
        hierarchy->setGeometry(place);
        hierarchy->SetCoordinator(this);
        hierarchy->SetRootChangeMessage(WM_DS_ROOT_ITEM_CHANGED);
        hierarchy->show();
        return 1;
    }
    if (auto *nested = qobject_cast<DSplitterWnd *>(pane)) {
        nested->SetPaneOwner(this);
        nested->CreateStaticEx(parent, 2, 1, 2, 1, nullptr, id);
        nested->setGeometry(place);
        Size const half{rect.Width(), rect.Height() / 2};
        nested->CreateView(0, 0, &kDataSourceClass, half);
        nested->CreateView(1, 0, &kPropertyClass, half);
        nested->show();
        return 1;
    }
    if (auto *properties = qobject_cast<DSPropertyWnd *>(pane)) {
        properties->Create(rect, m_dlgTemplate, parent, id);
        properties->SetOptChangedMsg(WM_DS_OPTIONS_CHANGED);
        properties->SetFltrChangedMsg(WM_DS_FILTER_CHANGED);
        properties->SetCoordinator(this);
        properties->show();
        return 1;
    }
    if (auto *sources = qobject_cast<DSDataSourceWnd *>(pane)) {
        sources->setParent(parent);
        sources->setGeometry(place);
        sources->SetCoordinator(this);
        sources->SetRootChangeMessage(WM_DS_FIRST_PANE_ROOT_ITEM_CHANGED);
        sources->show();
        return 1;
    }
    if (auto *list = qobject_cast<DSListCtrl *>(pane)) {
        list->SetMode(DSListCtrl::ModeRecursive);
        list->SetSelChangeMessage(WM_DS_IMAGE_SELECTED);
        list->SetDblClckMessage(WM_DS_IMAGE_DBLCLICK);
        list->Create(0, rect, m_dlgTemplate, parent, id);
        list->SetCoordinator(this);
        if (PicksDocument(m_dlgTemplate) || !m_multiSelect)
            list->SetMultiSlct(false);
        return 1;
    }
    return 0;
}

void DlgOpenDS::DeleteView(DSplitterWnd *splitter, int row, int col) { delete splitter->GetPane(row, col); }

bool DlgOpenDS::RecalcLayout(DSplitterWnd *) { return false; }

void DlgOpenDS::CreateChildren() {
    QRect const place = GetDlgItem(*this, kSplitterPlaceId)->geometry();
    m_splitter = new DSplitterWnd(this);
    m_splitter->SetPaneOwner(this);
    m_splitter->CreateStaticEx(this, 1, 3, 1, 3, nullptr, kSplitterId);
    m_splitter->setGeometry(place);
    PaneClass const *const classes[] = {&kSplitterClass, &kHierarchyClass, &kListClass};
    for (int column = 0; column < 3; ++column)
        m_splitter->CreateView(0, column, classes[column], {kInch, place.height()});
    AssignWndVars();
    m_splitter->show();
}

void DlgOpenDS::AssignWndVars() {
    m_leftSplitter = qobject_cast<DSplitterWnd *>(m_splitter->GetPane(0, 0));
    m_hierarchyList = qobject_cast<HierarchyList *>(m_splitter->GetPane(0, 1));
    m_mainList = qobject_cast<DSListCtrl *>(m_splitter->GetPane(0, 2));
    m_dataSourceWnd = qobject_cast<DSDataSourceWnd *>(m_leftSplitter->GetPane(0, 0));
    m_propertyWnd = qobject_cast<DSPropertyWnd *>(m_leftSplitter->GetPane(1, 0));
    m_propertyWnd->SetClassifiedHandler([this] { m_mainList->viewport()->update(); });
    m_dataSourceList = m_dataSourceWnd->GetDataSourceList();
    m_folderList = m_dataSourceWnd->GetFolderList();
    m_mainList->setObjectName("mainList");
    m_folderList->setObjectName("folderList");
    m_dataSourceList->setObjectName("dataSourceList");
    m_mainList->setAccessibleName(platform::Shown("Items"));
    GetDlgItem(*this, kStatusId)->setAccessibleName(platform::Shown("Selected"));
    m_folderList->setAccessibleName(platform::Shown("Folders"));
    m_hierarchyList->GetPane(0)->setAccessibleName(platform::Shown("Hierarchy"));
}

void DlgOpenDS::ListDataSetsAgain() {
    platform::EscapeWatch const watch; // one Escape for all lists
    ListingsShared const shared;
    for (DSListCtrl *const list : {m_folderList, m_mainList}) {
        ItemList roots;
        list->GetRootItems(roots);
        list->ResetItems(roots);
    }
}

void DlgOpenDS::CreateDataSetRows() {
    auto const show = [this](RefItemPtr<DataSourceItem> item) { ShowItem(std::move(item)); };
    m_dataSetRows = std::make_unique<DataSetRows>(DataSetRows::Actions{.listAgain = [this] { ListDataSetsAgain(); },
                                                                       .show = show,
                                                                       .moniker =
                                                                           [this](DataSourceItem const &item) {
                                                                               TakeDriverOptions();
                                                                               return MonikerOf(item);
                                                                           }},
                                                  (m_features & kOpenSeries) != 0);
    auto const rule = [this](ItemList const &roots) { return m_dataSetRows->FoldingOf(roots); };
    m_mainList->SetFoldingRule(rule);
    m_folderList->SetFoldingRule(rule);
    m_hierarchyList->SetFoldingRule(rule);
    auto const commandsFor = [this](ItemList const &picked) {
        std::vector<DataSetRows::Command> commands;
        if (m_mainList->IsShowingResults() && picked.size() == 1)
            commands.push_back({Translated("Open Containing Folder"),
                                [this, item = picked.front()] { m_search->ShowFolderOf(item); }});
        if (m_basket != nullptr && !picked.empty())
            commands.push_back({Translated("Add to Basket\tIns"), [this, picked] { AddToBasket(picked); }});
        if (m_dataSourceList->OfferedFavorites() != nullptr && !picked.empty())
            commands.push_back({Translated("Add to Favorites"), [this, picked] { AddToFavorites(picked); }});
        return commands;
    };
    connect(m_mainList, &ReportView::ContextMenu, this, [this, commandsFor](QPoint screenPoint) {
        ItemList roots;
        m_mainList->GetRootItems(roots);
        ItemList const picked = SelectedImages();
        m_dataSetRows->RunMenu(*m_mainList, screenPoint, m_mainList->IsShowingResults() ? ItemList() : roots, picked,
                               commandsFor(picked));
    });
    m_namedData = std::make_unique<NamedData>(
        *this, *m_histCombo->lineEdit(), *m_mainList,
        NamedData::Actions{.show = show,
                           .unfold =
                               [this](DString const &folder) {
                                   m_dataSetRows->ShowSingly(folder);
                                   ListDataSetsAgain();
                               },
                           .widen =
                               [this] {
                                   m_fileFilterEdit->setText("*.*");
                                   ApplyFileFilter("*.*", nullptr);
                               },
                           .goTo = [this](DString const &address) { GoToDir(address, true); }});
}

void DlgOpenDS::CreateForecast() {
    auto const mask = static_cast<unsigned>(m_bdiFilter);
    OpenWish const wish{.image = (mask & (BDINode_Raster | BDINode_Thematic)) != 0,
                        .table = (mask & (BDINode_Thematic | BDINode_Table)) != 0};
    m_forecast = std::make_unique<OpenForecast>(
        *GetDlgItem<OpenLine>(*this, kLineId), *m_propertyWnd,
        OpenForecast::Setup{.wish = PicksDocument(m_dlgTemplate) ? OpenWish() : wish,
                            .isSeriesOneImage = m_seriesMode != SeriesMode::Members,
                            .optionsOf = [this](DataSourceItem const &item) { return OptionsOf(item); },
                            .onDriverChanged = [this] { OnImageSelected(); }});
}

void DlgOpenDS::OfferFavorites() {
    m_dataSourceList->OfferFavorites({.open = [this](Favorite const &favorite) { OpenFavorite(favorite); },
                                      .openFolder =
                                          [this](Favorite const &favorite) {
                                              RefItemPtr<DataSourceItem> const item = FindPlace(favorite.target, true);
                                              if (item == nullptr)
                                                  return;
                                              item->BuildParents();
                                              RefItemPtr<DataSourceItem> const parent = item->GetParent();
                                              ShowItem(parent == nullptr ? item : parent);
                                          }});
}

void DlgOpenDS::CreateTravel() {
    m_travel = std::make_unique<PlaceTravel>(
        *this, *m_mainList, TemplateKey(),
        PlaceTravel::Actions{.show = [this](RefItemPtr<DataSourceItem> item) { ShowItem(std::move(item)); },
                             .goTo = [this](DString const &path) { GoToDir(path, true); }});
}

void DlgOpenDS::CreateBasket() {
    m_basket = std::make_unique<BasketStrip>(*this, *GetDlgItem<OpenLine>(*this, kLineId),
                                             [this](DataSourceItem const &item) { return MonikersOf(item); });
    if (FavoriteRows *const favorites = m_dataSourceList->OfferedFavorites(); favorites != nullptr)
        m_basket->SetFavoriteMaker([favorites](DString const &file, DString const &name) {
            favorites->Add({.kind = Favorite::Kind::Basket, .target = file, .name = name});
        });
    m_basket->Content().SetChangeHandler([this, show = m_basket.get()] {
        show->Show();
        if (m_forecast != nullptr)
            m_forecast->SayInstead(m_basket->Content().IsEmpty() ? "" : Translated("OK opens what is in the basket"));
        OnUpdateState();
    });
}

void DlgOpenDS::CreateWaits() {
    m_waits = std::make_unique<ServerWaits>(
        ServerWaits::Panes{*m_dataSourceList, *m_hierarchyList, *m_folderList, *m_mainList},
        ServerWaits::Actions{
            .show = [this](RefItemPtr<DataSourceItem> item) { ShowPlace(std::move(item)); },
            .refuse = [this](DString const &place, DError const &error) { RefusePlace(place, error); }},
        m_features != kOpenPlain);
}

void DlgOpenDS::CreateSearch() {
    m_search = std::make_unique<OpenSearch>(
        *this, *m_mainList, m_bdiFilter,
        OpenSearch::Actions{.show = [this](RefItemPtr<DataSourceItem> item) { ShowPlace(std::move(item)); },
                            .take =
                                [this](SearchForm &form) {
                                    AddSzControl(&form, GetDlgItem(*this, kSplitterPlaceId), true);
                                    QWidget *before = m_recursiveButton;
                                    for (QWidget *const control : form.FocusOrder()) {
                                        setTabOrder(before, control);
                                        before = control;
                                    }
                                },
                            .layOut = [this] { LayOutAroundSearch(); },
                            .forget =
                                [this] {
                                    m_propertyWnd->Clear();
                                    platform::GetDlgItem<platform::EllipsisLabel>(*this, kStatusId)->SetText({});
                                    if (m_forecast != nullptr)
                                        m_forecast->Select({});
                                }});
    CreateSearchButton();
}

void DlgOpenDS::CreateSearchButton() {
    // It takes its room from the path.
    QWidget *const path = GetDlgItem(*this, kPathPlaceId);
    QWidget *const favorites = GetDlgItem(*this, kFavoritesId);
    Position place;
    Position pathPlace;
    if (!GetControlPosition(favorites, place) || !GetControlPosition(path, pathPlace))
        return;
    auto *const button = new CZelButton(this);
    platform::SetDlgCtrlID(*button, kSearchId);
    std::ignore = SetUpToolButton(kSearchId, "search", Translated("Search below this place (Ctrl+F)"));
    int const step = place.right - place.left;
    pathPlace.right -= step;
    place.left -= step;
    place.right -= step;
    AddSzControl(path, pathPlace, true);
    AddSzControl(button, place, true);
    button->show();
    connect(button, &QAbstractButton::clicked, this, [this] { m_search->Open(); });
    setTabOrder(GetDlgItem(*this, kHomeId), button);
}

// Its bar takes from the preview what it takes from the pane above that, and gives it back.
void DlgOpenDS::LayOutAroundSearch() {
    int const before = m_leftSplitter->height();
    int shown = 0;
    int ideal = 0;
    int least = 0;
    m_leftSplitter->GetRowInfo(0, shown, ideal, least);
    Layout();
    int const after = m_leftSplitter->height();
    if (before <= 0 || after == before)
        return;
    m_leftSplitter->SetRowInfo(0, (shown * after + before / 2) / before, least);
    m_leftSplitter->RecalcLayout();
}

// The bar of a search lies over the panes, which are lower by as much.
bool DlgOpenDS::DoMoveCtrl(QWidget *child, int id, Rect &rect, cdxCDynamicLayoutInfo const &info) {
    if (!cdxCDynamicDialog::DoMoveCtrl(child, id, rect, info))
        return false;
    bool const isForm = m_search != nullptr && child != nullptr && child == m_search->Form();
    if (m_search == nullptr || (child != m_splitter && !isForm))
        return true;
    int const height = m_search->HeightFor(rect.Width(), rect.Height() * 2 / 3);
    if (isForm)
        rect.bottom = rect.top + height;
    else
        rect.top += height;
    return true;
}

void DlgOpenDS::InitializeLayout() {
    int const fifth = std::max(m_splitter->width() / 5, kMinTrack);
    // Nearly every file brings options of its driver along: their tab shall not cut the names of the others.
    int const tabs = m_driverOptions == nullptr ? 0 : std::min(m_propertyWnd->WidthOfTabs(), m_splitter->width() / 3);
    m_splitter->SetColumnInfo(0, std::max(fifth, tabs), kMinTrack);
    m_splitter->SetColumnInfo(1, fifth, kMinTrack);
    m_splitter->RecalcLayout();
    m_leftSplitter->SetRowInfo(0, std::max(m_leftSplitter->height() / 2, kMinTrack), kMinTrack);
    m_leftSplitter->RecalcLayout();
    m_hierarchyList->InitializeLayout();
}

// ------------------------------------------------------------------------------------------------ the first time

bool DlgOpenDS::OnInitDialog() {
    cdxCDynamicDialog::OnInitDialog();
    AssignControls();
    if (QRect const available = screen()->availableGeometry();
        width() >= available.width() || height() >= available.height())
        setGeometry(geometry().intersected(available));
    setWindowTitle(ToQString(m_title));
    CreateChildren();
    // In the place of the control that marks it, wherever a stored size has put that by now.
    AddSzControl(m_splitter, GetDlgItem(*this, kSplitterPlaceId), true);
    InitializeLayout();

    CreateWaits();
    if ((m_features & kOpenFavorites) != 0 && m_rootItem == nullptr)
        OfferFavorites();
    if ((m_features & kOpenHistory) != 0)
        CreateTravel();
    if ((m_features & kOpenBasket) != 0 && m_offersBasket && m_multiSelect && !PicksDocument(m_dlgTemplate))
        CreateBasket();
    if ((m_features & kOpenDataSets) != 0)
        CreateDataSetRows();
    if ((m_features & kOpenLine) != 0)
        CreateForecast();
    if (m_features != kOpenPlain)
        m_propertyWnd->SetOptionsRule([this](DataSourceItem const &item) { return OptionsOf(item); });
    if ((m_features & kOpenPreviewBar) != 0)
        m_propertyWnd->AddPreviewBar();
    if ((m_features & kOpenConnections) != 0)
        m_mainList->ShowKinds(), m_folderList->ShowKinds(), m_hierarchyList->ShowKinds();
    if ((m_features & kOpenConnections) != 0 && m_rootItem == nullptr && PicksImageData(m_dlgTemplate))
        m_dataSourceList->OfferConnections();
    if ((m_features & kOpenThumbnails) != 0 && !PicksDocument(m_dlgTemplate))
        m_thumbnails = std::make_unique<ThumbnailLook>(*m_mainList, *this, TemplateKey());
    m_extras.Load();
    m_mainList->SetBDIFilter(m_bdiFilter);
    if (m_rootItem != nullptr)
        m_dataSourceList->Fill(m_rootItem);
    else
        m_dataSourceList->Fill(m_dlgTemplate);
    m_dataSourceWnd->SetSelChangeMessage(WM_DS_FIRST_PANE_DATA_ITEM_SELECTED);

    FillHistory();
    FillFileTypes();
    m_homeButton = SetUpToolButton(kHomeId, "panel", Translated("Show Data Source panel"));
    m_favoritesButton = SetUpToolButton(kFavoritesId, "star", Translated("Add to favorites"));
    m_layoutButton = SetUpToolButton(kRestoreLayoutId, "restore-layout", Translated("Restore layouts"));
    m_recursiveButton = SetUpToolButton(kRecursiveId, "recursive", Translated("Search subfolders"));
    connect(m_homeButton, &QAbstractButton::clicked, this, &DlgOpenDS::OnHome);
    connect(m_favoritesButton, &QAbstractButton::clicked, this, &DlgOpenDS::OnAddToFavorites);
    connect(m_layoutButton, &QAbstractButton::clicked, this, &DlgOpenDS::InitializeLayout);
    connect(m_recursiveButton, &QAbstractButton::clicked, this, &DlgOpenDS::OnListRecursively);
    if (m_dlgTemplate == DT_WORKSPACE) {
        m_readOnlyCheck->show();
        m_editOnlyCheck->show();
    }
    if ((m_features & kOpenSearch) != 0)
        CreateSearch();
    RestoreRecursion();
    RestoreSorting();
    RestoreFilter();

    m_measureButton = new CZelButton(this);
    m_measureButton->setFlat(true);
    m_measureButton->hide();
    m_measureButton->resize(kMeasureButton.cx, kMeasureButton.cy);
    platform::SetDlgCtrlID(*m_measureButton, kMeasureButtonId);
    m_pathButtons = std::make_unique<PathButtonRow>(this, m_measureButton, kFirstPathButtonId);

    m_stateTimer = startTimer(kStateInterval);
    qApp->installEventFilter(this);
    // The window does not wait for its place: one that is not there soon is listed when the window can be seen.
    if (!AreDriversPending())
        m_isPlaceShown = ShowInitialPlace(kSoon);
    m_layoutDone = true;
    m_cancelButton->setFocus();
    return false; // the focus is set
}

bool DlgOpenDS::DestroyWindow() {
    killTimer(std::exchange(m_stateTimer, 0));
    qApp->removeEventFilter(this);
    m_layoutDone = m_isPlaceShown = false;
    m_waits.reset();
    m_thumbnails.reset();
    m_splitter = nullptr;
    m_travel.reset();
    m_basket.reset();
    m_pathButtons.reset();
    m_namedData.reset();
    m_forecast.reset();
    m_search.reset();
    return cdxCDynamicDialog::DestroyWindow();
}

bool DlgOpenDS::ShowInitialPlace(std::optional<std::chrono::milliseconds> time) {
    platform::EscapeWatch watch; // also for what it takes to find the place
    RequestScope const scope(
        RequestKind::List, [&watch] { return watch.IsPressed(); }, time);
    if (m_initItem != nullptr)
        ShowItem(m_initItem);
    else
        GoToDir(m_initDir, false);
    return !scope.IsUnanswered();
}

void DlgOpenDS::paintEvent(QPaintEvent *event) {
    cdxCDynamicDialog::paintEvent(event);
    // Behind the paint, not inside it.
    if (!std::exchange(m_isPlaceShown, true))
        platform::PostMessage(this, kFirstPaintMessage);
}

// What came in time is listed anew only where something was missing.
void DlgOpenDS::OnFirstPaint() {
    std::ignore = ShowInitialPlace(std::nullopt); // it ends when the user says so
}

QWidget *DlgOpenDS::MakeControl(platform::DialogItem const &item) {
    if (item.id == kLineId)
        return new OpenLine(this);
    switch (item.kind) {
    case platform::ControlKind::Combo:
    case platform::ControlKind::DropDownList: {
        auto *combo = new CZelComboBox(this);
        combo->SetEditable(item.kind == platform::ControlKind::Combo);
        return combo;
    }
    case platform::ControlKind::Button:
    case platform::ControlKind::CheckButton: {
        if (item.id == kCancelId)
            return nullptr;
        auto *button = new CZelButton(this);
        button->setCheckable(item.kind == platform::ControlKind::CheckButton);
        return button;
    }
    default:
        return nullptr;
    }
}

void DlgOpenDS::AssignControls() {
    m_histCombo = GetDlgItem<CZelComboBox>(*this, kHistoryId);
    m_fileTypeCombo = GetDlgItem<CZelComboBox>(*this, kFileTypeId);
    m_fileFilterEdit = GetDlgItem<QLineEdit>(*this, kFileFilterId);
    m_okButton = GetDlgItem<QPushButton>(*this, kOkId);
    m_cancelButton = GetDlgItem<QPushButton>(*this, kCancelId);
    m_readOnlyCheck = GetDlgItem<QCheckBox>(*this, kReadOnlyId);
    m_editOnlyCheck = GetDlgItem<QCheckBox>(*this, kEditOnlyId);
    m_histCombo->setLayoutDirection(Qt::LeftToRight); // as its paths are read
    m_histCombo->setInsertPolicy(QComboBox::NoInsert);
    m_histCombo->setAccessibleName(platform::Shown("Go to folder"));
    m_fileTypeCombo->setAccessibleName(platform::Shown("File Type"));
    m_fileFilterEdit->setAccessibleName(platform::Shown("File Name Filter"));

    connect(m_histCombo, &QComboBox::activated, this, &DlgOpenDS::OnSelendokHist);
    // While entries are offered, their list takes the keys.
    connect(m_histCombo->lineEdit(), &QLineEdit::returnPressed, this, [this] {
        QAbstractItemView const &offered = *m_histCombo->completer()->popup();
        if (offered.isVisible() && !offered.currentIndex().isValid())
            ProcessReturnKey(m_histCombo);
    });
    connect(m_fileTypeCombo, &QComboBox::activated, this, &DlgOpenDS::OnSelendokFileType);
    // Checking one unchecks the other; both may be off.
    connect(m_readOnlyCheck, &QCheckBox::clicked, this, [this] { m_editOnlyCheck->setChecked(false); });
    connect(m_editOnlyCheck, &QCheckBox::clicked, this, [this] { m_readOnlyCheck->setChecked(false); });
}

CZelButton *DlgOpenDS::SetUpToolButton(int id, char const *picture, char const *tip) {
    auto *button = GetDlgItem<CZelButton>(*this, id);
    button->setFlat(true);
    button->SetImage(picture);
    button->SetTooltip(tip);
    return button;
}

void DlgOpenDS::FillHistory() {
    DVectorSafe<DString> folders;
    DfltFldrs::Instance()->GetDirHist(m_historyKey.c_str(), folders, true, true);
    m_histCombo->ResetContent();
    for (DString const &folder : folders)
        m_histCombo->AddString(folder);
    m_histCombo->SetCurSel(-1);
}

void DlgOpenDS::FillFileTypes() {
    for (std::size_t i = 0; i < m_formats.size(); ++i) {
        if (m_formats[i] == nullptr || !m_formats[i]->IsSingleFileConnector())
            continue;
        m_fileTypeCombo->SetItemData(m_fileTypeCombo->AddString(Translated(m_formats[i]->GetName().c_str())), i);
    }
    // Without a matching format the box stays without a selection.
    m_fileTypeCombo->SetCurSel(-1);
    for (int entry = 0; entry < m_fileTypeCombo->GetCount(); ++entry)
        if (m_formats[m_fileTypeCombo->GetItemData(entry)] == m_format)
            m_fileTypeCombo->SetCurSel(entry);
}

void DlgOpenDS::RestoreRecursion() {
    bool const recursive = DUserCnfg(kSection).ReadString(kRecursiveKey, "false") != "false";
    m_recursiveButton->setChecked(recursive);
    if (!recursive)
        m_mainList->SetMode(DSListCtrl::ModeFiles);
}

void DlgOpenDS::RestoreSorting() {
    // What OnOK writes to the section of sortings is not what is read here: the order starts afresh every time. Users
    // know it so.
    DialogSorting const sorting =
        SortingFromText(DUserCnfg(kSection).ReadString(kRecursiveKey, "")).value_or(DialogSorting{});
    m_hierarchyList->SortPane(0, 0, sorting.hierarchyAscending);
    m_mainList->Sort(sorting.column, sorting.mainAscending);
    m_folderList->Sort(0, sorting.foldersAscending);
}

void DlgOpenDS::RestoreFilter() {
    if (m_format == nullptr)
        return;
    DString mask = DUserCnfg(kFilterSection).ReadString(TemplateKey(), "");
    if (mask.empty())
        mask = m_format->GetExtn();
    ApplyFileFilter(mask.c_str(), m_format->GetID().c_str());
    m_fileFilterEdit->setText(ToQString(mask));
}

// ------------------------------------------------------------------------------------------------------ the end

void DlgOpenDS::OnOK() {
    if (m_basket != nullptr && !m_basket->Content().IsEmpty())
        return TakeBasket();
    if (!AreExtrasFound())
        return;
    TakeDriverOptions();
    ItemList picked = SelectedImages();
    if (m_search != nullptr && m_search->Enter(picked))
        return;
    if (m_forecast != nullptr) {
        ShowSelected(SelectedImages()); // its message may wait behind this
        if (!m_forecast->MayAccept(*this))
            return;
    }
    m_monikers.clear();
    for (RefItemPtr<DataSourceItem> const &item : picked) {
        DfltFldrs::Instance()->SaveDirHist(m_historyKey.c_str(), item->GetPath());
        for (BDIMoniker &moniker : MonikersOf(*item))
            m_monikers.push_back(std::move(moniker));
    }
    WriteSettings();
    if (m_monikers.empty())
        return;
    if (m_dlgTemplate == DT_WORKSPACE) {
        m_readOnly = m_readOnlyCheck->isChecked();
        m_editOnly = m_editOnlyCheck->isChecked();
    }
    cdxCDynamicDialog::OnOK();
}

void DlgOpenDS::AddToBasket(ItemList const &items) {
    if (!AreExtrasFound())
        return;
    TakeDriverOptions();
    m_basket->Add(items);
}

void DlgOpenDS::TakeBasket() {
    m_monikers.clear();
    m_isOrdered = true;
    DString folder; // is the same for most
    for (BasketEntry const &entry : m_basket->Content().All()) {
        if (entry.place != folder)
            DfltFldrs::Instance()->SaveDirHist(m_historyKey.c_str(), entry.monikers.front().GetText());
        folder = entry.place;
        for (BDIMoniker const &moniker : entry.monikers)
            m_monikers.push_back(moniker);
    }
    WriteSettings();
    cdxCDynamicDialog::OnOK();
}

DString DlgOpenDS::NamedOptionsOf(DString const &path) const {
    return m_namedData == nullptr ? DString() : m_namedData->OptionsOf(path);
}

DString DlgOpenDS::OptionsOf(DataSourceItem const &item) const {
    DString const path = item.GetPath();
    DString options = m_pageItems.empty() ? m_propertyWnd->GetOptionString() : DString();
    if (options.empty())
        options =
            m_driverOptions == nullptr ? NamedOptionsOf(path) : m_driverOptions->TextFor(path, NamedOptionsOf(path));
    return m_forecast == nullptr ? options : m_forecast->Drivers().AddedTo(std::move(options), path);
}

DString DlgOpenDS::MonikerOf(DataSourceItem const &item) const {
    if (m_pageItems.empty())
        m_propertyWnd->ApplyOptions();
    DString options = OptionsOf(item);
    if (dynamic_cast<SeriesItem const *>(&item) != nullptr && m_seriesMode != SeriesMode::Members)
        options += DString(options.empty() ? "" : "&") +
                   (m_seriesMode == SeriesMode::Frames ? "SERIES=frames" : "SERIES=slices");
    return WithOptions(item.GetPath(), options);
}

std::vector<BDIMoniker> DlgOpenDS::MonikersOf(DataSourceItem const &item) {
    auto const *const series = dynamic_cast<SeriesItem const *>(&item);
    if (series == nullptr || m_seriesMode != SeriesMode::Members) {
        DString driverId = item.GetBDIDriverId();
        if (driverId.empty() && m_forecast != nullptr)
            driverId = m_forecast->Drivers().Of(item.GetPath());
        BDIDrvr *const driver = driverId.empty() ? nullptr : BDIDrvrMngr::Instance()->GetDrvr(driverId.c_str());
        return {BDIMoniker(MonikerOf(item), driver)};
    }
    if (m_pageItems.empty())
        m_propertyWnd->ApplyOptions();
    DString const options = OptionsOf(item);
    std::vector<BDIMoniker> members;
    for (std::size_t member = 0; member < series->MemberCount(); ++member)
        members.emplace_back(WithOptions(series->MemberPath(member), options), nullptr);
    return members;
}

void DlgOpenDS::WriteSettings() {
    DUserCnfg(kSection).WriteString(kRecursiveKey, m_recursiveButton->isChecked() ? "true" : "false");

    DialogSorting sorting;
    int column = 0;
    m_hierarchyList->GetPaneSorting(0, column, sorting.hierarchyAscending);
    sorting.foldersAscending = m_folderList->GetLastSort().IsSortedAscnd();
    sorting.column = std::clamp(m_mainList->GetListingSort().GetCol(), 0, 2);
    sorting.mainAscending = m_mainList->GetListingSort().IsSortedAscnd();
    DUserCnfg(kSortingSection).WriteString(TemplateKey(), SortingToText(sorting));

    DUserCnfg(kFilterSection).WriteString(TemplateKey(), ToDString(m_fileFilterEdit->text()));
    if (m_driverOptions != nullptr)
        m_driverOptions->Save();
    if (m_travel != nullptr)
        m_travel->Save();
}

} // namespace zelvar
