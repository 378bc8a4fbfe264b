#include "zelvar/model/NtwDataSourceItemItr.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/data/ProbeAhead.h"
#include "zelvar/model/FoldedListing.h"
#include "zelvar/model/FolderAhead.h"
#include "zelvar/model/FolderFolding.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/SeriesItem.h"
#include "zelvar/model/SuffixFacts.h"
#include "zelvar/model/datasets/Sidecars.h"

#include <deque>
#include <utility>
#include <vector>

namespace zelvar {

using platform::ShellChild;
using platform::ShellKind;
using platform::ShellNamespace;

namespace {

bool IsShortcut(std::string_view name) {
    constexpr std::string_view kSuffix = ".lnk";
    return name.size() >= kSuffix.size() && EqualNoCase(name.substr(name.size() - kSuffix.size()), kSuffix);
}

/// Caches that the product keeps beside images: nobody must walk into them. The case of the names counts.
bool IsProductCache(std::string_view name) { return name == "_zoom_cache" || name == "_image_cache"; }

/// "*" and "*.*" name every file.
bool IsInForce(std::string_view filter) { return !filter.empty() && filter != "*" && filter != "*.*"; }

} // namespace

/// Makes the items of one folder. Files that drivers elsewhere are asked about wait for each other, and what comes
/// behind them waits too, so that the order stays.
class NtwDataSourceItemItr::Children {
public:
    using Row = FolderFolding::Row;

    Children(NtwDataSourceItemItr &itr, ShellNamespace const &shell, RefItemPtr<DataSourceItem> const &parent,
             char const *driverId)
        : m_itr(itr), m_shell(shell), m_parent(parent), m_driverId(driverId),
          m_isAnyDriver(driverId == nullptr || *driverId == '\0'), m_suffixes(shell) {}

    void Add(ShellChild &&child) { Add(Row{std::move(child)}); }
    void Add(Row &&row) {
        ShellChild const &child = row.child;
        SuffixFacts::Facts const &facts = m_suffixes.Of(child);
        bool const isAskedAbout =
            facts.isClaimed ? ProbeAhead::IsWorthwhile() : IsLookedInto(facts) && ProbeAhead::HasTimeForLooks();
        if (!isAskedAbout && m_gathered.empty() && m_underWay.empty()) {
            AddItem(row, facts, AskedAlone(facts));
            return;
        }
        DString path = isAskedAbout ? m_shell.Path(child.id) : DString();
        m_gathered.push_back({std::move(row), &facts, std::move(path)});
        m_asked += isAskedAbout ? 1 : 0;
        if (m_asked >= kTogether || m_gathered.size() >= kMostGathered)
            Ask();
    }
    void AddSeries(DString const &folder, FolderFolding::SeriesRow &&row) {
        Finish();
        if (RefItemPtr<DataSourceItem> item{SeriesItem::CreateItem(
                folder, std::move(row.series.name), std::move(row.series.slots), row.size, row.modified, m_parent)})
            m_itr.m_items.push_back(std::move(item));
    }
    void Finish() {
        if (!m_gathered.empty())
            Ask();
        while (!m_underWay.empty())
            AddAnswered();
    }

private:
    using Asked = NtwDataSourceItem::Asked;
    static constexpr std::size_t kTogether = 128;      // files to a question
    static constexpr std::size_t kMostGathered = 4096; // children, those among them that nobody is asked about

    struct Waiting {
        Row row;
        SuffixFacts::Facts const *facts;
        DString path; ///< of one that is asked about; empty for others
    };
    struct Question {
        std::vector<Waiting> files;
        ProbeAhead ahead;
    };

    /// A driver that was named is asked about each file, whatever that is called.
    [[nodiscard]] bool IsLookedInto(SuffixFacts::Facts const &facts) const { return m_isAnyDriver && facts.isNameless; }
    [[nodiscard]] Asked AskedAlone(SuffixFacts::Facts const &facts) const {
        if (IsLookedInto(facts))
            return Asked::ByNobody;
        return m_isAnyDriver && !facts.isClaimed ? Asked::NotAtAll : Asked::AmongOthers;
    }
    /// Whether a driver can open the file is asked once, here.
    void AddItem(Row const &row, SuffixFacts::Facts const &facts, Asked asked) {
        RefItemPtr<NtwDataSourceItem> item(
            NtwDataSourceItem::CreateChild(row.child, m_parent, m_driverId, facts.icon, asked));
        if (item && row.data)
            item->BecomeDataFolder(*row.data);
        if (item && item->m_fileSize >= 0)
            item->m_fileSize += row.beside;
        if (item)
            m_itr.m_items.push_back(std::move(item));
    }
    void Ask() {
        ProbeAhead::Files claimed;
        ProbeAhead::Files nameless;
        for (Waiting const &each : m_gathered)
            if (!each.path.empty())
                (each.facts->isClaimed ? claimed : nameless).push_back({each.path, each.row.child.file});
        while (m_underWay.size() >= ProbeAhead::kMostUnderWay)
            AddAnswered();
        m_underWay.push_back({std::exchange(m_gathered, {}), ProbeAhead(claimed, std::move(nameless))});
        m_asked = 0;
    }
    void AddAnswered() {
        auto &[files, ahead] = m_underWay.front();
        ahead.Wait();
        for (auto const &[row, facts, path] : files)
            AddItem(row, *facts,
                    IsLookedInto(*facts) && ahead.IsFound(path) ? Asked::FoundContainer : AskedAlone(*facts));
        m_underWay.pop_front();
    }

    NtwDataSourceItemItr &m_itr;
    ShellNamespace const &m_shell;
    RefItemPtr<DataSourceItem> const &m_parent;
    char const *m_driverId;
    bool m_isAnyDriver;
    SuffixFacts m_suffixes;
    std::vector<Waiting> m_gathered;
    std::size_t m_asked = 0; ///< of the gathered
    std::deque<Question> m_underWay;
};

bool NtwDataSourceItemItr::IsListed(std::string_view name, std::string_view filter) {
    return !IsShortcut(name) && (!IsInForce(filter) || PathMatchSpec(name, filter));
}

bool NtwDataSourceItemItr::IsVisited(std::string_view name, std::string_view filter, DataSetFolding folding) {
    return IsListed(name, filter) || (folding.sidecars && !IsShortcut(name) && MayBeSidecar(name));
}

void NtwDataSourceItemItr::Fill(platform::ShellId const &folder, DataSourceItem::ICancel *cancel,
                                RefItemPtr<DataSourceItem> const &parent, char const *filter, char const *driverId) {
    ShellNamespace const &shell = ShellNamespace::Current();
    if (!DoesPlaceAnswer(shell.Path(folder))) {
        m_error = std::make_error_code(std::errc::timed_out);
        CreateCursor();
        return;
    }
    std::string_view const mask = filter == nullptr ? std::string_view() : filter;
    DataSetFolding const folding = FoldedListing::Current();
    bool stopped = false;
    auto const isStopped = [&] { return stopped = stopped || (cancel != nullptr && cancel->IsCanceled()); };
    // The stop signal is asked once a child: here for those that are left out, below for the others.
    auto const isWanted = [&](std::string_view name) {
        if (!stopped && IsVisited(name, mask, folding))
            return ShellNamespace::Wish::Yes;
        return isStopped() ? ShellNamespace::Wish::Stop : ShellNamespace::Wish::No;
    };
    Children children(*this, shell, parent, driverId);
    std::optional<FolderFolding> folded;
    if (folding.IsAny())
        folded.emplace(shell, folder, folding, mask);
    auto const visit = [&](ShellChild &&child) {
        if (isStopped())
            return false;
        if (child.kind != ShellKind::File && IsProductCache(child.name))
            return true;
        if (folded)
            folded->Add(std::move(child));
        else
            children.Add(std::move(child));
        return true;
    };
    FolderAhead *const ahead = FolderAhead::Current();
    auto const taken = ahead == nullptr ? std::nullopt : ahead->Take(folder, mask, visit);
    m_error = taken ? *taken : shell.Enumerate(folder, ShellNamespace::Purpose::Browse, visit, isWanted);
    if (folded)
        folded->Finish(
            isStopped, [&](FolderFolding::Row &row) { children.Add(std::move(row)); },
            [&](FolderFolding::SeriesRow &&row) { children.AddSeries(shell.Path(folder), std::move(row)); });
    children.Finish();
    CreateCursor();
}

} // namespace zelvar
