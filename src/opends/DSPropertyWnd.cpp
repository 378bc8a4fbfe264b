#include "zelvar/opends/DSPropertyWnd.h"

#include "zelvar/base/Translation.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/opends/DSMessages.h"
#include "zelvar/opends/ImageExtraWnd.h"
#include "zelvar/opends/ImagePreviewWnd.h"
#include "zelvar/opends/PreviewBar.h"
#include "zelvar/opends/PropertyWorker.h"
#include "zelvar/opends/ValueScale.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/props/CZelPropList.h"

#include <QtGui/QResizeEvent>
#include <QtWidgets/QProxyStyle>
#include <QtWidgets/QStyle>
#include <QtWidgets/QTabBar>

namespace zelvar {

namespace {

/// Tabs with little room beside their captions: the pane is narrow.
class CompactTabs final : public QProxyStyle {
public:
    int pixelMetric(PixelMetric metric, QStyleOption const *option, QWidget const *widget) const override {
        constexpr int kBesideCaption = 10; // pixels, both sides together
        return metric == PM_TabBarTabHSpace ? kBesideCaption : QProxyStyle::pixelMetric(metric, option, widget);
    }
};

/// A tab's page that keeps the preview over its whole area, but for a bar below, while the preview is in its place.
class PreviewPage final : public QWidget {
public:
    explicit PreviewPage(QWidget *parent) : QWidget(parent), m_preview(new ImagePreviewWnd(this)) {}
    [[nodiscard]] ImagePreviewWnd *Preview() const { return m_preview; }
    void SetBar(PreviewBar *bar) { m_bar = bar; }

protected:
    void resizeEvent(QResizeEvent *event) override {
        QWidget::resizeEvent(event);
        Arrange();
    }
    bool event(QEvent *event) override {
        if (event->type() == QEvent::LayoutRequest)
            Arrange();
        return QWidget::event(event);
    }

private:
    void Arrange() {
        QRect picture = rect();
        if (m_bar != nullptr && !m_bar->isHidden()) {
            // In a pane that is too low for both, the picture keeps a third.
            int const wanted = m_bar->hasHeightForWidth() ? m_bar->heightForWidth(width()) : m_bar->sizeHint().height();
            int const below = std::min(wanted, height() - height() / 3);
            picture.setHeight(height() - below);
            m_bar->setGeometry(0, height() - below, width(), below);
        }
        if (!m_preview->IsLifted())
            m_preview->setGeometry(picture);
    }
    ImagePreviewWnd *m_preview; ///< a child, but for the time that it is lifted
    PreviewBar *m_bar = nullptr;
};

} // namespace

DSPropertyWnd::DSPropertyWnd(QWidget *parent)
    : CZelTabCtrl(parent), m_target(this), m_worker(PropertyWorker::Create()) {
    m_messages.On(WM_ITEM_CANVAS_READY, this, &DSPropertyWnd::OnCanvasReady);
    m_messages.On(WM_ITEM_PROPPERTY_MAP_READY, this, &DSPropertyWnd::OnPropsReady);
    m_messages.On(WM_DS_APPLY_OPTIONS, this, &DSPropertyWnd::OnApplyOptions);
    m_messages.On(WM_DS_APPLY_FILTER, this, &DSPropertyWnd::OnApplyFilter);
    auto *compact = new CompactTabs;
    compact->setParent(this);
    tabBar()->setStyle(compact);
    // All of them are seen, in languages with long captions too.
    setUsesScrollButtons(false);
    setElideMode(Qt::ElideRight);
}

DSPropertyWnd::~DSPropertyWnd() {
    m_target.Detach();
    m_worker->Release();
}

bool DSPropertyWnd::event(QEvent *event) { return m_messages.Dispatch(*event) || CZelTabCtrl::event(event); }

int DSPropertyWnd::Create(Rect const &rect, DLGTemplate dlgTemplate, QWidget *parent, unsigned id) {
    m_dlgTemplate = dlgTemplate;
    setParent(parent);
    setGeometry(rect.left, rect.top, rect.Width(), rect.Height());
    platform::SetDlgCtrlID(*this, static_cast<int>(id));

    if (!PicksDocument(m_dlgTemplate)) {
        auto *page = new PreviewPage(this);
        m_previewWnd = page->Preview();
        AddTab(page, Translated("Preview"));
    }
    m_propList = new CZelPropList(this);
    AddProps();
    AddTab(m_propList, Translated("Properties"));
    if (!PicksDocument(m_dlgTemplate)) {
        m_optionsTab = GetTabsNum();
        m_extraWnd = new ImageExtraWnd(this);
        m_extraWnd->SetOptionsName("{Options}");
        m_extraWnd->SetOwner(this);
        m_extraWnd->SetApplyMsg(WM_DS_APPLY_OPTIONS);
        AddTab(m_extraWnd, Translated("Options"));
        ShowTab(m_optionsTab, false, true, false);
    }
    SetActiveTab(0);
    m_worker->SetOwner(m_target, m_dlgTemplate);
    return 0;
}

void DSPropertyWnd::AddPreviewBar() {
    constexpr int kPatience = 400; // ms
    if (m_previewWnd == nullptr)
        return;
    auto *const page = static_cast<PreviewPage *>(m_previewWnd->parentWidget());
    m_bar = new PreviewBar(page);
    page->SetBar(m_bar);
    m_patience = new QTimer(this);
    m_patience->setSingleShot(true);
    m_patience->setInterval(kPatience);
    connect(m_patience, &QTimer::timeout, this, [this] { m_previewWnd->Clear(ImagePreviewWnd::ModeWaiting); });
    connect(m_bar, &PreviewBar::Chosen, this, &DSPropertyWnd::OnChosen);
    m_previewWnd->setMouseTracking(true);
    connect(m_previewWnd, &ImagePreviewWnd::Pointed, this, [this](double x, double y) {
        m_bar->PointAt(x, y);
        m_previewWnd->SetNote(m_bar->Scale()->PointedText());
    });
    m_worker->WantValues();
}

void DSPropertyWnd::OnChosen() {
    if (m_closing)
        return;
    m_worker->Look(m_bar->Choice());
    m_patience->start();
}

void DSPropertyWnd::AddProps() {
    m_propList->EnableHeaderCtrl(true);
    m_propList->SetVSDotNetLook(true);
    m_propList->EnableDescriptionArea(true);
    CZelProp *group = nullptr;
    for (PropertyRow const &row : PropertyRows()) {
        if (PicksDocument(m_dlgTemplate) && DString("Image") == row.group)
            continue;
        if (group == nullptr || group->GetName() != Translated(row.group)) {
            group = new CZelProp(Translated(row.group));
            m_propList->AddProperty(group);
        }
        auto *prop = new CZelProp(Translated(row.name), "", "", static_cast<std::uint64_t>(row.id));
        prop->AllowEdit(false);
        group->AddSubItem(prop);
    }
    m_propList->EnableDescriptionArea(false);
}

bool DSPropertyWnd::AreOptionsShown() const { return m_optionsTab >= 0 && IsTabVisible(m_optionsTab); }

void DSPropertyWnd::ShowProps(RefItemPtr<DataSourceItem> item, char const *format) {
    if (item == nullptr)
        return;
    DString const path = item->GetPath();
    DString const options = m_optionsOf ? m_optionsOf(*item) : GetOptionString();
    DString const formatText = format == nullptr ? "" : format;
    // An empty format never causes a new job by itself. What Clear has taken away is not shown any more.
    if (!m_closing && path == m_shownPath && options == m_shownOptions &&
        (formatText.empty() || formatText == m_shownFormat))
        return;
    m_closing = false;
    m_shownPath = path;
    m_shownOptions = options;
    m_shownFormat = formatText;
    ClearWnd(ImagePreviewWnd::ModeWaiting);
    m_worker->Restart(std::move(item), formatText, options);
}

void DSPropertyWnd::ClearWnd(int mode) {
    m_props.clear();
    UpdateProperties();
    if (m_previewWnd != nullptr)
        m_previewWnd->Clear(static_cast<ImagePreviewWnd::Mode>(mode));
    if (m_bar == nullptr)
        return;
    m_patience->stop();
    if (mode == ImagePreviewWnd::ModeWaiting)
        m_bar->Reset();
    else
        m_bar->ShowExtent({});
}

int DSPropertyWnd::WidthOfTabs() const {
    int width =
        2 * tabBar()->style()->pixelMetric(QStyle::PM_DefaultFrameWidth) + tabBar()->fontMetrics().averageCharWidth();
    for (int tab = 0; tab < count(); ++tab)
        width += fontMetrics().horizontalAdvance(tabText(tab)) +
                 tabBar()->style()->pixelMetric(QStyle::PM_TabBarTabHSpace, nullptr, tabBar());
    return width;
}

bool DSPropertyWnd::IsReading() const { return m_worker->IsBusy(); }

bool DSPropertyWnd::IsReading(std::chrono::milliseconds wait) const {
    std::ignore = m_worker->Wait(wait); // only its thread's end is waited for
    return IsReading();
}

void DSPropertyWnd::SetFactsHandler(OpenWish const &wish, FactsHandler handler) {
    m_worker->WantFacts(wish);
    m_onFacts = std::move(handler);
}

bool DSPropertyWnd::HasFacts() const { return m_worker->HasSeen(); }

void DSPropertyWnd::TakeFacts() {
    if (std::optional<PropertyWorker::Seen> const seen = m_worker->TakeSeen(); seen && m_onFacts && !m_closing)
        m_onFacts(seen->subject, seen->facts);
}

void DSPropertyWnd::Clear() {
    m_closing = true;
    m_worker->Cancel();
    ClearWnd(ImagePreviewWnd::ModeNothing);
}

void DSPropertyWnd::OnCanvasReady(platform::MessageParam first) {
    if (m_closing || m_previewWnd == nullptr)
        return;
    if (m_patience != nullptr)
        m_patience->stop();
    std::optional<DCanvas> canvas = m_worker->TakeCanvas();
    if (first == 1 && canvas && canvas->HasData()) {
        m_previewWnd->GetCanvas() = std::move(*canvas);
        m_previewWnd->ShowCanvas();
    } else if (first != 1 || canvas) {
        m_previewWnd->Clear(ImagePreviewWnd::ModeNothing);
    }
}

void DSPropertyWnd::OnPropsReady() {
    if (std::optional<PropertyWorker::Classified> const classified = m_worker->TakeClassified())
        if (auto *const file = dynamic_cast<NtwDataSourceItem *>(classified->item.get())) {
            file->SetClassified(classified->isContainer);
            if (m_onClassified)
                m_onClassified();
        }
    if (m_closing)
        return;
    if (std::optional<PropertyMap> props = m_worker->TakeProps()) {
        m_props = std::move(*props);
        UpdateProperties();
        if (m_bar != nullptr)
            m_bar->ShowExtent(ExtentOf(m_props));
    }
    TakeFacts();
    if (std::optional<PreviewValues> values = m_worker->TakeValues(); values && m_bar != nullptr)
        m_bar->ShowValues(std::move(*values));
}

void DSPropertyWnd::UpdateProperties() {
    for (int i = 0; i < m_propList->GetPropertyCount(); ++i) {
        CZelProp *const group = m_propList->GetProperty(i);
        for (int j = 0; j < group->GetSubItemsCount(); ++j) {
            CZelProp *const prop = group->GetSubItem(j);
            auto const text = m_props.find(static_cast<int>(prop->GetData()));
            prop->SetValue(text == m_props.end() ? DString() : text->second);
        }
    }
}

void DSPropertyWnd::UpdateExtras(RefItemPtr<DataSourceItem> const &, DataSourceExtras::Item *extras) {
    if (m_optionsTab < 0)
        return;
    if (extras == nullptr) {
        ShowTab(m_optionsTab, false, true, false);
        return;
    }
    m_extraWnd->Navigate(extras->ItemTemplatePath);
    // It comes to the front when it comes up; who has gone back to the preview since stays there while files of one
    // format are looked through.
    if (!IsTabVisible(m_optionsTab))
        ShowTab(m_optionsTab, true, true, true);
}

void DSPropertyWnd::ShowDriverOptions(DString const &driverId, std::vector<DriverOption> const &options,
                                      std::map<DString, DString> const &values) {
    if (m_optionsTab < 0)
        return;
    if (!options.empty())
        m_extraWnd->ShowOptions(driverId, options, values);
    ShowTab(m_optionsTab, !options.empty(), true, false);
}

void DSPropertyWnd::ApplyOptions() {
    if (AreOptionsShown())
        m_extraWnd->ApplyOptions();
}

DString DSPropertyWnd::GetOptionString() const { return AreOptionsShown() ? m_extraWnd->GetOptionText() : DString(); }

void DSPropertyWnd::Tell(platform::MessageId message) {
    if (message != 0)
        platform::PostMessage(m_coordinator.isNull() ? parent() : m_coordinator.data(), message);
}

void DSPropertyWnd::OnApplyOptions() { Tell(m_optChangedMsg); }
void DSPropertyWnd::OnApplyFilter() { Tell(m_fltrChangedMsg); }

} // namespace zelvar
