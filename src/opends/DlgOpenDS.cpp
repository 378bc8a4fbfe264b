#include "zelvar/opends/DlgOpenDS.h"

#include "zelvar/base/Translation.h"
#include "zelvar/controls/CZelButton.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/opends/BasketStrip.h"
#include "zelvar/opends/DSDataSourceWnd.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DSMessages.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/HierarchyList.h"
#include "zelvar/opends/OpenControls.h"
#include "zelvar/opends/OpenDialogTemplate.h"
#include "zelvar/opends/OpenFields.h"
#include "zelvar/opends/OpenForecast.h"
#include "zelvar/opends/OpenKeys.h"
#include "zelvar/opends/OpenPanes.h"
#include "zelvar/opends/OpenParts.h"
#include "zelvar/opends/OpenSearch.h"
#include "zelvar/opends/PlaceFinder.h"
#include "zelvar/opends/PlaceTravel.h"
#include "zelvar/opends/SearchPlace.h"
#include "zelvar/opends/SelectionOptions.h"
#include "zelvar/opends/ServerWaits.h"
#include "zelvar/opends/core/DialogState.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/settings/DfltFldrs.h"
#include "zelvar/store/DCnfg.h"

#include <QtGui/QScreen>
#include <QtWidgets/QApplication>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QStyle>

#include <utility>

namespace zelvar {

using platform::GetDlgItem;

namespace {

constexpr int kStateInterval = 200;            // ms
constexpr std::chrono::milliseconds kSoon{60}; // before the first paint
constexpr Size kMeasureButton{10, 10};

constexpr char kSection[] = "DlgOpenDS";
constexpr char kRecursiveKey[] = "recursive";

unsigned g_features = kOpenAll;

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
      m_formats(formats), m_format(format), m_dlgTemplate(dlgTemplate),
      m_options(std::make_unique<SelectionOptions>((m_features & kOpenOptions) != 0 && !PicksDocument(dlgTemplate))),
      m_historyKey(historyKey == nullptr ? "" : historyKey) {
    WarmReaders();
    WireMessages();
}

DlgOpenDS::~DlgOpenDS() { qApp->removeEventFilter(this); }

void DlgOpenDS::SetFeatures(unsigned features) { g_features = features; }
unsigned DlgOpenDS::GetFeatures() { return g_features; }

void DlgOpenDS::SetTitle(char const *title) { m_title = title == nullptr ? "" : title; }
void DlgOpenDS::SetInitDir(char const *path) { m_initDir = path == nullptr ? "" : path; }
void DlgOpenDS::SetInitItem(RefItemPtr<DataSourceItem> item) { m_initItem = std::move(item); }
void DlgOpenDS::SetRootItem(RefItemPtr<DataSourceItem> item) { m_rootItem = std::move(item); }
void DlgOpenDS::SetBDIFilter(int mask) { m_bdiFilter = mask; }
void DlgOpenDS::SetOptions(DString const &options) { m_options->SetGiven(options); }
void DlgOpenDS::SetSeriesMode(SeriesMode mode) { m_options->SetSeriesMode(mode); }
void DlgOpenDS::OfferBasket(bool offers) { m_offersBasket = offers; }
void DlgOpenDS::SetMultiSelect(bool multi) { m_multiSelect = multi; }

DString DlgOpenDS::FixPath(char const *path) { return path == nullptr ? DString() : FixTypedPath(path); }

DString DlgOpenDS::TemplateKey() const { return Format("%d", static_cast<int>(m_dlgTemplate)); }

// ---------------------------------------------------------------------------------------------------- the panes

DSListCtrl *DlgOpenDS::MainList() const { return m_panes == nullptr ? nullptr : m_panes->Items(); }
DSListCtrl *DlgOpenDS::FolderList() const { return m_panes == nullptr ? nullptr : m_panes->Folders(); }
DataSourceList *DlgOpenDS::SourceList() const { return m_panes == nullptr ? nullptr : m_panes->Sources(); }
DSDataSourceWnd *DlgOpenDS::DataSourceWnd() const { return m_panes == nullptr ? nullptr : m_panes->SourceWnd(); }
HierarchyList *DlgOpenDS::Hierarchy() const { return m_panes == nullptr ? nullptr : m_panes->Hierarchy(); }
DSPropertyWnd *DlgOpenDS::PropertyWnd() const { return m_panes == nullptr ? nullptr : m_panes->Properties(); }

OpenForecast *DlgOpenDS::Forecast() const { return m_parts == nullptr ? nullptr : m_parts->Forecast(); }
PlaceTravel *DlgOpenDS::Travel() const { return m_parts == nullptr ? nullptr : m_parts->Travel(); }
BasketStrip *DlgOpenDS::GatheredItems() const { return m_parts == nullptr ? nullptr : m_parts->Basket(); }
bool DlgOpenDS::LoadBasket(DString const &file) { return GatheredItems() != nullptr && GatheredItems()->Load(file); }
OpenSearch *DlgOpenDS::Search() const { return m_parts == nullptr ? nullptr : m_parts->Search(); }
ThumbnailLook *DlgOpenDS::Thumbnails() const { return m_parts == nullptr ? nullptr : m_parts->Thumbnails(); }

QWidget *DlgOpenDS::CreateViewObj(DSplitterWnd *, int, int, PaneClass const *, Size) { return nullptr; }

int DlgOpenDS::CreateViewWnd(DSplitterWnd *, QWidget *pane, int, int, Rect const &rect, QWidget *parent, unsigned id) {
    return m_panes->CreateView(pane, rect, parent, id);
}

void DlgOpenDS::DeleteView(DSplitterWnd *splitter, int row, int col) { delete splitter->GetPane(row, col); }

bool DlgOpenDS::RecalcLayout(DSplitterWnd *) { return false; }

void DlgOpenDS::CreateChildren() {
    m_panes =
        std::make_unique<OpenPanes>(OpenPanes::Setup{.dialog = *this,
                                                     .owner = *this,
                                                     .dlgTemplate = m_dlgTemplate,
                                                     .picksSeveral = m_multiSelect && !PicksDocument(m_dlgTemplate)});
    m_panes->Create(GetDlgItem(*this, kSplitterPlaceId)->geometry());
    // In the place of the control that marks it, wherever a stored size has put that by now.
    AddSzControl(m_panes->Splitter(), GetDlgItem(*this, kSplitterPlaceId), true);
}

// Nearly every file brings options of its driver along: their tab shall not cut the names of the others.
void DlgOpenDS::InitializeLayout() { m_panes->InitializeLayout(m_options->HasDriverPages()); }

bool DlgOpenDS::DoMoveCtrl(QWidget *child, int id, Rect &rect, cdxCDynamicLayoutInfo const &info) {
    if (!cdxCDynamicDialog::DoMoveCtrl(child, id, rect, info))
        return false;
    if (OpenSearch const *const search = Search(); search != nullptr)
        m_parts->PlaceOfSearch()->Fit(child, *search, rect);
    return true;
}

// ------------------------------------------------------------------------------------------------ the first time

void DlgOpenDS::FitIntoScreen() {
    QRect available = screen()->availableGeometry();
    if (m_features != kOpenPlain) {
        // In a large font the design is higher than a small screen: its panes give way, so that OK stays in sight.
        available.setTop(available.top() + style()->pixelMetric(QStyle::PM_TitleBarHeight));
        m_szMin.cy = std::min(m_szMin.cy, available.height());
        ApplyTrackSizes();
    }
    if (width() >= available.width() || height() >= available.height())
        setGeometry(geometry().intersected(available));
}

bool DlgOpenDS::OnInitDialog() {
    cdxCDynamicDialog::OnInitDialog();
    AssignControls();
    FitIntoScreen();
    setWindowTitle(platform::ToQString(m_title));
    CreateChildren();
    InitializeLayout();
    CreateParts();
    m_panes->Items()->SetBDIFilter(m_bdiFilter);
    if (m_rootItem != nullptr)
        m_panes->Sources()->Fill(m_rootItem);
    else
        m_panes->Sources()->Fill(m_dlgTemplate);
    m_panes->SourceWnd()->SetSelChangeMessage(WM_DS_FIRST_PANE_DATA_ITEM_SELECTED);

    m_fields->FillPlaces(m_historyKey);
    m_fields->FillFormats(m_formats, m_format);
    SetUpToolButtons();
    if (m_dlgTemplate == DT_WORKSPACE) {
        m_readOnlyCheck->show();
        m_editOnlyCheck->show();
    }
    m_parts->AddSearch();
    RestoreRecursion();
    m_panes->RestoreSorting();
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
    m_options->Close();
    m_pathButtons.reset();
    m_keys.reset();
    m_parts.reset();
    m_waits.reset();
    m_places.reset();
    m_panes.reset();
    m_fields.reset();
    return cdxCDynamicDialog::DestroyWindow();
}

QWidget *DlgOpenDS::MakeControl(platform::DialogItem const &item) { return MakeOpenControl(*this, item); }

void DlgOpenDS::AssignControls() {
    m_fields = std::make_unique<OpenFields>(
        *this, OpenFields::Actions{.goTo = [this](DString const &place) { GoToDir(place, true); },
                                   .typed = [this] { m_keys->GoToTyped(); },
                                   .chooseFormat = [this](std::size_t index) { UpdateFormat(m_formats[index]); }});
    m_okButton = GetDlgItem<QPushButton>(*this, kOkId);
    m_cancelButton = GetDlgItem<QPushButton>(*this, kCancelId);
    m_readOnlyCheck = GetDlgItem<QCheckBox>(*this, kReadOnlyId);
    m_editOnlyCheck = GetDlgItem<QCheckBox>(*this, kEditOnlyId);
    GetDlgItem(*this, kStatusId)->setAccessibleName(platform::Shown("Selected"));
    // Checking one unchecks the other; both may be off.
    connect(m_readOnlyCheck, &QCheckBox::clicked, this, [this] { m_editOnlyCheck->setChecked(false); });
    connect(m_editOnlyCheck, &QCheckBox::clicked, this, [this] { m_readOnlyCheck->setChecked(false); });
}

void DlgOpenDS::CreateParts() {
    m_places = std::make_unique<PlaceFinder>([this](RefItemPtr<DataSourceItem> item) { ShowItem(std::move(item)); },
                                             (m_features & kOpenLine) != 0);
    m_waits = std::make_unique<ServerWaits>(
        ServerWaits::Panes{*m_panes->Sources(), *m_panes->Hierarchy(), *m_panes->Folders(), *m_panes->Items()},
        ServerWaits::Actions{
            .show = [this](RefItemPtr<DataSourceItem> const &item) { m_places->Show(item); },
            .refuse = [this](DString const &place, DError const &error) { m_places->Refuse(place, error); },
            .forget = [this] { m_parts->ForgetSelection(); }},
        m_features != kOpenPlain);
    m_parts = std::make_unique<OpenParts>(OpenParts::Setup{.dialog = *this,
                                                           .panes = *m_panes,
                                                           .fields = *m_fields,
                                                           .options = *m_options,
                                                           .places = *m_places,
                                                           .features = m_features,
                                                           .dlgTemplate = m_dlgTemplate,
                                                           .key = TemplateKey(),
                                                           .nodeMask = m_bdiFilter,
                                                           .hasSources = m_rootItem == nullptr,
                                                           .takesBasket = m_offersBasket && m_multiSelect,
                                                           .pickedAgain = [this] { OnImageSelected(); },
                                                           .changed = [this] { OnUpdateState(); }});
    m_options->Open(*m_panes->Properties(),
                    {.selected = [this] { return SelectedImages(); },
                     .named = [this](DString const &path) { return m_parts->NamedOptions(path); },
                     .drivers = [this] { return m_parts->Drivers(); },
                     .show = [this](ItemList const &items) { ShowSelected(items); }});
    m_keys = std::make_unique<OpenKeys>(
        *this, *m_panes, *m_fields, *m_parts, *m_options,
        OpenKeys::Actions{.accept = [this] { OnOK(); }, .optionsChanged = [this] { OnDSOptionsChanged(); }});
}

void DlgOpenDS::SetUpToolButtons() {
    auto const add = [this](int id, char const *picture, char const *tip, void (DlgOpenDS::*run)()) {
        CZelButton *const button = SetUpToolButton(*this, id, picture, tip);
        connect(button, &QAbstractButton::clicked, this, run);
        return button;
    };
    add(kHomeId, "panel", Translated("Show Data Source panel"), &DlgOpenDS::OnHome);
    add(kFavoritesId, "star", Translated("Add to favorites"), &DlgOpenDS::OnAddToFavorites);
    add(kRestoreLayoutId, "restore-layout", Translated("Restore layouts"), &DlgOpenDS::InitializeLayout);
    m_recursiveButton = add(kRecursiveId, "recursive", Translated("Search subfolders"), &DlgOpenDS::OnListRecursively);
}

void DlgOpenDS::RestoreRecursion() {
    bool const recursive = DUserCnfg(kSection).ReadString(kRecursiveKey, "false") != "false";
    m_recursiveButton->setChecked(recursive);
    if (!recursive)
        m_panes->Items()->SetMode(DSListCtrl::ModeFiles);
}

void DlgOpenDS::RestoreFilter() {
    if (m_format == nullptr)
        return;
    DString mask = OpenFields::KeptMask(TemplateKey());
    if (mask.empty())
        mask = m_format->GetExtn();
    ApplyFileFilter(mask.c_str(), m_format->GetID().c_str());
    m_fields->SetMask(mask);
}

// ------------------------------------------------------------------------------------------------------ the end

void DlgOpenDS::OnOK() {
    if (m_parts->HasGathered() ? !TakeGathered() : !TakeSelected())
        return;
    if (m_dlgTemplate == DT_WORKSPACE) {
        m_readOnly = m_readOnlyCheck->isChecked();
        m_editOnly = m_editOnlyCheck->isChecked();
    }
    cdxCDynamicDialog::OnOK();
}

bool DlgOpenDS::TakeSelected() {
    if (!m_options->IsUpdated())
        return false;
    m_options->Take();
    ItemList picked = SelectedImages();
    if (Search() != nullptr && Search()->Enter(picked))
        return false;
    if (OpenForecast *const forecast = Forecast(); forecast != nullptr) {
        ShowSelected(SelectedImages()); // its message may wait behind this
        if (!forecast->MayAccept(*this))
            return false;
    }
    m_monikers.clear();
    for (RefItemPtr<DataSourceItem> const &item : picked) {
        DfltFldrs::Instance()->SaveDirHist(m_historyKey.c_str(), item->GetPath());
        for (BDIMoniker &moniker : m_options->MonikersOf(*item))
            m_monikers.push_back(std::move(moniker));
    }
    WriteSettings();
    return !m_monikers.empty();
}

bool DlgOpenDS::TakeGathered() {
    if (OpenForecast const *const forecast = Forecast(); forecast != nullptr) {
        std::vector<OpenForecast::Gathered> gathered;
        for (BasketEntry const &entry : GatheredItems()->Content().All())
            gathered.push_back({entry.name, {.path = entry.monikers.front().GetText()}, entry.bytes});
        if (!forecast->MayAccept(*this, gathered))
            return false;
    }
    m_monikers.clear();
    m_isOrdered = true;
    DString folder; // is the same for most
    for (BasketEntry const &entry : GatheredItems()->Content().All()) {
        if (entry.place != folder)
            DfltFldrs::Instance()->SaveDirHist(m_historyKey.c_str(), entry.monikers.front().GetText());
        folder = entry.place;
        for (BDIMoniker const &moniker : entry.monikers)
            m_monikers.push_back(moniker);
    }
    WriteSettings();
    return true;
}

void DlgOpenDS::WriteSettings() {
    DUserCnfg(kSection).WriteString(kRecursiveKey, m_recursiveButton->isChecked() ? "true" : "false");
    m_panes->KeepSorting(TemplateKey());
    m_fields->KeepMask(TemplateKey());
    m_options->Save();
    if (Travel() != nullptr)
        Travel()->Save();
}

} // namespace zelvar
