#include "zelvar/opends/OpenForecast.h"

#include "zelvar/base/Translation.h"
#include "zelvar/controls/GUITools.h"
#include "zelvar/model/SeriesItem.h"
#include "zelvar/opends/DSPropertyWnd.h"
#include "zelvar/opends/FactsFinder.h"
#include "zelvar/opends/OpenLine.h"
#include "zelvar/platform/ui/EscapeWatch.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QMessageBox>

#include <algorithm>
#include <map>
#include <utility>

#include <unistd.h>

namespace zelvar {

namespace {

constexpr std::size_t kMostItems = 1000;             // more are not opened in the time
constexpr int kLookEvery = 30;                       // ms, whether the pane has read
constexpr int kSlow = 300;                           // ms
constexpr std::chrono::milliseconds kStep{10};       // of a wait
constexpr std::chrono::milliseconds kPatience{3000}; // of somebody who has pressed OK

/// In sentences, as lists show it.
DString Shown(DString const &name) { return platform::ToDString(platform::ToShownName(name)); }

std::uint64_t MemoryOfComputer() {
    long const pages = sysconf(_SC_PHYS_PAGES);
    long const size = sysconf(_SC_PAGESIZE);
    return pages < 1 || size < 1 ? 0 : static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(size);
}

} // namespace

platform::MessageId const OpenForecast::kFoundMessage = platform::RegisterMessage();

OpenForecast::OpenForecast(OpenLine &line, DSPropertyWnd &pane, Setup setup)
    : m_target(this), m_line(line), m_pane(pane), m_setup(std::move(setup)), m_memory(MemoryOfComputer()),
      m_finder(FactsFinder::Create()) {
    m_messages.On(kFoundMessage, this, &OpenForecast::OnFound);
    m_finder->SetOwner(m_target, kFoundMessage);
    m_pane.SetFactsHandler(m_setup.wish,
                           [this](OpenSubject const &subject, OpenFacts const &facts) { OnFacts(subject, facts); });
    m_line.SetDriverHandler([this](int index) { OnDriverChosen(index); });
    m_idle.setInterval(kLookEvery);
    m_slow.setInterval(kSlow);
    m_slow.setSingleShot(true);
    connect(&m_idle, &QTimer::timeout, this, &OpenForecast::LookOn);
    connect(&m_slow, &QTimer::timeout, this, [this] {
        if (m_outcome.text.empty() && !m_items.empty())
            SetOutcome({.text = Translated("being read ...")});
    });
}

OpenForecast::~OpenForecast() {
    m_line.SetDriverHandler({});
    m_pane.SetFactsHandler({}, {});
    m_target.Detach();
    m_finder->Release();
}

bool OpenForecast::event(QEvent *event) { return m_messages.Dispatch(*event) || QObject::event(event); }

OpenForecast::Item OpenForecast::NewItem(DataSourceItem const &item) const {
    Item made{
        .subject = {.path = item.GetPath(), .driverId = item.GetRDIDriverId(), .options = m_setup.optionsOf(item)}};
    made.facts.name = Shown(item.GetName());
    made.facts.fileSize = item.GetFileSize();
    if (auto const *const series = dynamic_cast<SeriesItem const *>(&item)) {
        if (series->MemberCount() != series->Series().Slots())
            made.facts.members = series->ShownSummary(); // of one without gaps its driver says how many there are
        made.facts.isOneImage = m_setup.isSeriesOneImage;
    }
    return made;
}

void OpenForecast::Fill(Item &item, OpenFacts facts) {
    facts.name = std::move(item.facts.name);
    facts.fileSize = item.facts.fileSize;
    facts.members = std::move(item.facts.members);
    facts.isOneImage = item.facts.isOneImage;
    item.facts = std::move(facts);
    item.isKnown = true;
}

void OpenForecast::Select(ItemList const &items) {
    std::vector<Item> selected;
    selected.reserve(std::min(items.size(), kMostItems));
    for (RefItemPtr<DataSourceItem> const &item : items) {
        if (selected.size() == kMostItems)
            break;
        selected.push_back(NewItem(*item));
    }
    auto const isSame = [](Item const &a, Item const &b) { return a.subject == b.subject; };
    if (items.size() == m_selected &&
        std::equal(selected.begin(), selected.end(), m_items.begin(), m_items.end(), isSame))
        return;
    std::map<DString, Item const *> known;
    for (Item const &item : m_items)
        if (item.isKnown)
            known.emplace(item.subject.path, &item);
    for (Item &item : selected) {
        auto const at = known.find(item.subject.path);
        if (at != known.end() && isSame(*at->second, item))
            Fill(item, at->second->facts);
        else if (item.subject == m_shown) // the pane does not read again what it shows
            Fill(item, m_shownFacts);
    }
    m_items = std::move(selected);
    m_selected = items.size();
    m_finder->Cancel();
    m_asked.clear();
    m_isAsked = false;
    m_slow.start();
    Update();
    if (m_selected > 1)
        m_idle.start();
    else
        m_idle.stop();
}

void OpenForecast::OnFacts(OpenSubject const &subject, OpenFacts const &facts) {
    m_shown = subject;
    m_shownFacts = facts;
    if (IsGivenUp(subject, facts)) {
        m_setup.onDriverChanged();
        return;
    }
    bool isOfUse = false;
    for (Item &item : m_items)
        if (item.subject == subject) {
            Fill(item, facts);
            isOfUse = true;
        }
    if (isOfUse)
        Update();
}

void OpenForecast::LookOn() {
    if (m_pane.IsReading())
        return; // the picture comes first
    m_idle.stop();
    m_isAsked = true;
    std::vector<OpenSubject> subjects;
    for (std::size_t i = 0; i < m_items.size(); ++i)
        if (!m_items[i].isKnown) {
            m_asked.push_back(i);
            subjects.push_back(m_items[i].subject);
        }
    m_finder->Ask(std::move(subjects), m_setup.wish);
    Update();
}

void OpenForecast::OnFound() {
    std::vector<OpenFacts> found = m_finder->Take();
    std::size_t const count = std::min(found.size(), m_asked.size());
    bool isAnyGivenUp = false;
    for (std::size_t i = 0; i < count; ++i) {
        Item &item = m_items[m_asked[i]];
        isAnyGivenUp = IsGivenUp(item.subject, found[i]) || isAnyGivenUp;
        Fill(item, std::move(found[i]));
    }
    m_asked.erase(m_asked.begin(), m_asked.begin() + static_cast<std::ptrdiff_t>(count));
    if (isAnyGivenUp)
        m_setup.onDriverChanged();
    else
        Update();
}

bool OpenForecast::IsGivenUp(OpenSubject const &subject, OpenFacts const &facts) {
    return !facts.image && subject.options.ends_with(m_choices.AddedTo({}, subject.path)) &&
           m_choices.GiveUp(subject.path);
}

void OpenForecast::OnDriverChosen(int index) {
    std::vector<DString> const &drivers = m_line.ShownDrivers();
    if (m_selected != 1 || index < 0 || static_cast<std::size_t>(index) >= drivers.size())
        return;
    // The first one opens it without being named.
    m_choices.Choose(m_items.front().subject.path, index == 0 ? DString() : drivers[static_cast<std::size_t>(index)]);
    m_setup.onDriverChanged();
}

void OpenForecast::UpdateDrivers() {
    DString const path = m_selected == 1 ? m_items.front().subject.path : DString();
    // While it is read with another one the choice stays as it is.
    if (path == m_driversOf && (path.empty() || m_items.front().facts.drivers.empty()))
        return;
    m_driversOf = path;
    std::vector<DString> const drivers = path.empty() ? std::vector<DString>() : m_items.front().facts.drivers;
    auto const chosen = std::find(drivers.begin(), drivers.end(), path.empty() ? path : m_choices.Of(path));
    m_line.ShowDrivers(drivers, chosen == drivers.end() ? (drivers.empty() ? -1 : 0)
                                                        : static_cast<int>(chosen - drivers.begin()));
}

bool OpenForecast::IsKnown() const {
    if (m_selected > 1)
        return m_isAsked && !m_finder->IsBusy();
    return m_items.empty() || m_items.front().isKnown;
}

bool OpenForecast::IsSettled() const {
    return !m_pane.IsReading() && !m_pane.HasFacts() && (IsKnown() || m_selected <= 1);
}

void OpenForecast::Update() {
    OpenOutcome outcome;
    if (m_selected == 1 && m_items.front().isKnown) {
        outcome = OutcomeOf(m_items.front().facts, m_setup.wish, m_memory);
    } else if (m_selected > 1) {
        // Said once, at the end: a line that counts is of no use to anybody.
        std::vector<OpenFacts> looked;
        if (IsKnown())
            for (auto item = m_items.begin(); item != m_items.end() && item->isKnown; ++item)
                looked.push_back(item->facts);
        outcome = OutcomeOf(looked, m_selected, m_setup.wish, m_memory);
    }
    SetOutcome(std::move(outcome));
    UpdateDrivers();
}

void OpenForecast::SayUnlisted(DString const &place, DError const &why) {
    OpenFacts facts;
    facts.error = why;
    OpenOutcome outcome = why.IsSet() ? OutcomeOf(facts, {.image = true}, 0) : OpenOutcome();
    if (!outcome.text.empty())
        outcome.text = Shown(place) + ": " + outcome.text;
    if (m_selected == 0 && (outcome.text != m_outcome.text || outcome.reason != m_outcome.reason))
        SetOutcome(outcome);
}

void OpenForecast::SetOutcome(OpenOutcome outcome) {
    m_outcome = std::move(outcome);
    if (m_instead.empty())
        m_line.Show(m_outcome);
}

void OpenForecast::SayInstead(DString text) {
    m_instead = std::move(text);
    m_line.Show(m_instead.empty() ? m_outcome : OpenOutcome{.text = m_instead});
}

bool OpenForecast::WaitForFacts() {
    GUITools::WaitCursor const cursor;
    platform::EscapeWatch watch;
    auto const end = std::chrono::steady_clock::now() + kPatience;
    while (!IsKnown() && std::chrono::steady_clock::now() < end) {
        bool const isReading = m_pane.IsReading(kStep);
        m_pane.TakeFacts();
        if (!isReading && m_selected <= 1)
            break; // there will be no more
        if (!isReading && !m_isAsked)
            LookOn();
        if (m_isAsked)
            std::ignore = m_finder->Wait(kStep);
        if (watch.IsPressed())
            return false;
    }
    OnFound();
    return true;
}

bool OpenForecast::Ask(QWidget &dialog, DString const &said, DString const &reason) {
    QMessageBox question(QMessageBox::Warning, dialog.windowTitle(), platform::ToQString(said),
                         QMessageBox::Yes | QMessageBox::No, &dialog);
    question.setObjectName(kQuestion);
    question.setTextFormat(Qt::PlainText);
    question.setInformativeText(platform::Shown("Open anyway?"));
    question.setDetailedText(ShownReason(reason));
    question.setDefaultButton(QMessageBox::No);
    return platform::RunModal(question) == QMessageBox::Yes;
}

bool OpenForecast::MayAccept(QWidget &dialog) {
    if (m_items.empty())
        return true;
    m_pane.TakeFacts(); // their messages may wait behind this
    OnFound();
    if (!IsKnown() && !WaitForFacts())
        return false;
    DString const name = m_selected == 1 ? m_items.front().facts.name + ": " : DString();
    return m_outcome.isUsable || Ask(dialog, name + m_outcome.text, m_outcome.reason);
}

bool OpenForecast::MayAccept(QWidget &dialog, std::vector<Gathered> const &gathered) const {
    std::vector<OpenSubject> subjects;
    for (std::size_t i = 0; i < std::min(gathered.size(), kMostItems); ++i)
        subjects.push_back(gathered[i].subject);
    std::shared_ptr<FactsFinder> const finder = FactsFinder::Create();
    finder->Ask(std::move(subjects), m_setup.wish);
    bool isEnded = false;
    {
        GUITools::WaitCursor const cursor;
        platform::EscapeWatch watch;
        auto const end = std::chrono::steady_clock::now() + kPatience;
        while (finder->IsBusy() && !isEnded && std::chrono::steady_clock::now() < end) {
            std::ignore = finder->Wait(kStep);
            isEnded = watch.IsPressed();
        }
    }
    std::vector<OpenFacts> looked = finder->Take();
    finder->Release();
    for (std::size_t i = 0; i < looked.size(); ++i) {
        looked[i].name = Shown(gathered[i].name);
        looked[i].fileSize = gathered[i].bytes;
    }
    OpenOutcome const outcome = OutcomeOf(looked, gathered.size(), m_setup.wish, m_memory);
    DString const name = gathered.size() == 1 ? Shown(gathered.front().name) + ": " : DString();
    return !isEnded && (outcome.isUsable || Ask(dialog, name + outcome.text, outcome.reason));
}

} // namespace zelvar
