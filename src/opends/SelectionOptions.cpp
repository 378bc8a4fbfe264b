#include "zelvar/opends/SelectionOptions.h"

#include "zelvar/controls/GUITools.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/model/SeriesItem.h"
#include "zelvar/opends/DSPropertyWnd.h"
#include "zelvar/opends/DriverChoices.h"
#include "zelvar/opends/ExtrasFinder.h"
#include "zelvar/opends/ImageExtraWnd.h"
#include "zelvar/platform/ui/EscapeWatch.h"

#include <chrono>
#include <utility>

namespace zelvar {

namespace {

DString WithOptions(DString const &path, DString const &options) {
    return options.empty() ? path : path + "?" + options;
}

} // namespace

platform::MessageId const SelectionOptions::kFoundMessage = platform::RegisterMessage();

SelectionOptions::SelectionOptions(bool hasDriverPages)
    : m_ofDriver(hasDriverPages ? std::make_unique<DriverOptionChoice>(DriverOptionChoice::Use::Reading) : nullptr),
      m_target(this), m_finder(ExtrasFinder::Create()) {
    m_messages.On(kFoundMessage, this, &SelectionOptions::OnFound);
    m_finder->SetOwner(m_target, kFoundMessage);
}

SelectionOptions::~SelectionOptions() {
    m_target.Detach();
    m_finder->Release();
}

bool SelectionOptions::event(QEvent *event) { return m_messages.Dispatch(*event) || QObject::event(event); }

void SelectionOptions::SetGiven(DString const &options) {
    if (m_ofDriver != nullptr)
        m_ofDriver->SetGiven(options);
}

void SelectionOptions::Open(DSPropertyWnd &pane, Sources sources) {
    m_pane = &pane;
    m_sources = std::move(sources);
    m_installed.Load();
}

void SelectionOptions::Close() { m_pane = nullptr; }

// ----------------------------------------------------------------------------------------------------- the page

// The options of the selection before stay where they are until it is known what takes their place.
void SelectionOptions::Update(ItemList const &items) {
    if (m_ofDriver != nullptr) { // without installed pages the first tells
        bool const isFirstEnough = m_installed.GetItems().empty() && !items.empty();
        DriverChoices const *const drivers = m_sources.drivers();
        bool const isChosen = drivers != nullptr && !items.empty();
        m_finder->Ask(m_installed, isFirstEnough ? ItemList{items.front()} : items, ExtrasFinder::Drivers::Ask,
                      isChosen ? drivers->Of(items.front()->GetPath()) : DString());
    } else if (!m_installed.GetItems().empty()) {
        m_finder->Ask(m_installed, items);
    } else {
        m_pane->UpdateExtras(items.empty() ? nullptr : items.front(), nullptr);
    }
}

void SelectionOptions::OnFound() {
    if (m_pane == nullptr)
        return;
    std::optional<ExtrasFinder::Answer> const answer = m_finder->TakeAnswer();
    if (!answer)
        return;
    ItemList const items = m_sources.selected();
    if (m_ofDriver != nullptr && answer->options == nullptr) {
        m_ofDriver->SetDriver(answer->driverId, answer->lists);
        ShowDriverPage(items);
    } else {
        if (m_ofDriver != nullptr)
            m_ofDriver->SetDriver({}, nullptr);
        m_pageItems.clear();
        m_pane->UpdateExtras(items.empty() ? nullptr : items.front(), answer->options.get());
    }
    m_sources.show(items);
}

bool SelectionOptions::IsUpdated() {
    constexpr std::chrono::milliseconds kLook{10};
    if (m_finder->IsBusy(kLook)) {
        GUITools::WaitCursor const cursor;
        platform::EscapeWatch watch;
        while (m_finder->IsBusy(kLook))
            if (watch.IsPressed())
                return false;
    }
    OnFound();
    return true;
}

void SelectionOptions::ShowDriverPage(ItemList const &items) {
    bool const hasPage = m_ofDriver->HasPage() && !items.empty() && !items.front()->GetPath().empty();
    m_pageItems = hasPage ? items : ItemList();
    if (!hasPage) {
        m_pane->ShowDriverOptions({}, {}, {});
        return;
    }
    DString const path = items.front()->GetPath();
    m_pane->ShowDriverOptions(m_ofDriver->DriverId(), m_ofDriver->Options(),
                              m_ofDriver->ValuesFor(path, NamedFor(path)));
}

void SelectionOptions::Take() {
    if (m_pageItems.empty())
        return;
    m_pane->ApplyOptions();
    OptionValues const values = m_pane->Extra()->GetValues();
    auto const text = [this](OptionValues const &of) { return ToOptionText(m_ofDriver->Options(), of); };
    DString const path = m_pageItems.front()->GetPath();
    if (text(values) == text(m_ofDriver->ValuesFor(path, NamedFor(path))))
        return; // each keeps its own
    std::vector<DString> paths;
    for (RefItemPtr<DataSourceItem> const &item : m_pageItems) // the selection may be another one by now
        paths.push_back(item->GetPath());
    m_ofDriver->Change(paths, values);
}

void SelectionOptions::ApplyPage() const {
    if (m_pageItems.empty())
        m_pane->ApplyOptions();
}

void SelectionOptions::Save() const {
    if (m_ofDriver != nullptr)
        m_ofDriver->Save();
}

// ------------------------------------------------------------------------------------------------------ monikers

DString SelectionOptions::NamedFor(DString const &path) const { return m_sources.named(path); }

DString SelectionOptions::TextFor(DataSourceItem const &item) const {
    DString const path = item.GetPath();
    DString options = m_pageItems.empty() ? m_pane->GetOptionString() : DString();
    if (options.empty())
        options = m_ofDriver == nullptr ? NamedFor(path) : m_ofDriver->TextFor(path, NamedFor(path));
    DriverChoices const *const drivers = m_sources.drivers();
    return drivers == nullptr ? options : drivers->AddedTo(std::move(options), path);
}

DString SelectionOptions::ChosenMonikerOf(DataSourceItem const &item) const {
    DString const path = item.GetPath();
    std::optional<DString> const changed = m_ofDriver == nullptr ? std::nullopt : m_ofDriver->ChangedText(path);
    return WithOptions(path, changed ? *changed : NamedFor(path));
}

DString SelectionOptions::MonikerOf(DataSourceItem const &item) const {
    ApplyPage();
    DString options = TextFor(item);
    if (dynamic_cast<SeriesItem const *>(&item) != nullptr && m_seriesMode != SeriesMode::Members)
        options += DString(options.empty() ? "" : "&") +
                   (m_seriesMode == SeriesMode::Frames ? "SERIES=frames" : "SERIES=slices");
    return WithOptions(item.GetPath(), options);
}

std::vector<BDIMoniker> SelectionOptions::MonikersOf(DataSourceItem const &item) const {
    auto const *const series = dynamic_cast<SeriesItem const *>(&item);
    if (series == nullptr || m_seriesMode != SeriesMode::Members) {
        DString driverId = item.GetBDIDriverId();
        if (DriverChoices const *const drivers = m_sources.drivers(); driverId.empty() && drivers != nullptr)
            driverId = drivers->Of(item.GetPath());
        BDIDrvr *const driver = driverId.empty() ? nullptr : BDIDrvrMngr::Instance()->GetDrvr(driverId.c_str());
        return {BDIMoniker(MonikerOf(item), driver)};
    }
    ApplyPage();
    DString const options = TextFor(item);
    std::vector<BDIMoniker> members;
    for (std::size_t member = 0; member < series->MemberCount(); ++member)
        members.emplace_back(WithOptions(series->MemberPath(member), options), nullptr);
    return members;
}

} // namespace zelvar
