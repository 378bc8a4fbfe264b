#include "zelvar/search/Search.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/DataFolderLook.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/model/FolderVisits.h"
#include "zelvar/model/ListingWalk.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/platform/os/MountTable.h"
#include "zelvar/search/FactsReader.h"
#include "zelvar/search/StopQuestion.h"

#include <algorithm>
#include <deque>
#include <unordered_map>

#include <sys/stat.h>

namespace zelvar {

using platform::ShellChild;
using platform::ShellKind;
using platform::ShellNamespace;

namespace {

using Kind = SearchQuery::Kind;

bool MayBlockAt(DataSourceItem const &place) {
    if (dynamic_cast<NtwDataSourceItem const *>(&place) == nullptr)
        return true;
    DString const path = place.GetPath();
    return !path.empty() && platform::MayBlockAt(path);
}

/// When the file was changed that a container's items lie in; 0 if they lie in none.
std::int64_t FileTimeOf(DataSourceItem const &container) {
    DString const path = container.GetPath();
    DString const file = path.empty() ? path : BDIMoniker(path, nullptr).FindFile();
    struct stat state {};
    if (file.empty() || stat(file.c_str(), &state) != 0)
        return 0;
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    return std::int64_t{state.st_mtim.tv_sec} * kNanoseconds + state.st_mtim.tv_nsec;
}

/// One search under way.
class Walk {
public:
    Walk(SearchQuery const &query, FactsStore *store, StopSignal const &stop, Search::OnHit const &onHit)
        : m_query(query), m_masks(MasksOf(query.name)), m_stop(stop), m_onHit([this, &onHit](SearchHit &&hit) {
              ++m_hits;
              onHit(std::move(hit));
          }),
          m_opens(query.NeedsFacts() || query.inside || query.kind == Kind::Container),
          m_reader(query, store, stop, m_onHit) {}

    SearchProgress Run(std::vector<RefItemPtr<DataSourceItem>> const &places, Search::OnProgress const &onProgress) {
        for (RefItemPtr<DataSourceItem> const &place : places)
            if (place != nullptr)
                m_waiting.push_back({.item = place, .mayBlock = MayBlockAt(*place), .isPlace = true});
        while (!m_waiting.empty() && !m_stop) {
            Folder const folder = std::move(m_waiting.front());
            m_waiting.pop_front();
            auto *const plain = dynamic_cast<NtwDataSourceItem *>(folder.item.get());
            bool const isPlain = plain != nullptr && plain->GetType() == NtwDataSourceItem::TYPE_FOLDER;
            if (isPlain && !folder.isPlace && !folder.isLookedAt && TakeDataSet(*plain, folder.mayBlock))
                continue;
            if (!m_visits.Enter(*folder.item) && !folder.isPlace)
                continue;
            Note(*folder.item, isPlain ? ListFolder(folder, plain->GetId()) : ListTree(folder));
            ++m_progress.folders;
            if (onProgress)
                onProgress(Progress());
        }
        m_reader.Finish();
        return Progress();
    }

private:
    struct Folder {
        RefItemPtr<DataSourceItem> item;
        bool mayBlock = false;   ///< it lies on a network, or another process serves it
        bool isPlace = false;    ///< one of those that the search begins at: it is entered whatever it is
        bool isLookedAt = false; ///< it is known to be no data set
    };

    [[nodiscard]] SearchProgress Progress() const {
        SearchProgress progress = m_progress;
        progress.asked = m_reader.CountAsked();
        progress.hits = m_hits;
        return progress;
    }
    void Note(DataSourceItem const &folder, std::error_code error) {
        if (!error || m_stop)
            return;
        if (m_progress.unread++ == 0)
            m_progress.firstUnread = folder.GetPath(), m_progress.firstWhy = error;
    }
    [[nodiscard]] bool MatchesName(std::string_view name) const {
        return m_masks.empty() || PathMatchSpec(name, m_masks);
    }
    /// Whether a driver opens what is called so: each extension is asked about once.
    [[nodiscard]] bool IsClaimed(std::string_view name) {
        auto const [at, isNew] = m_claimed.try_emplace(DString(ExtensionOf(name)));
        if (isNew) {
            std::vector<RDIDriver *> const &drivers = RDIDriverMngr::Instance()->Drivers();
            at->second = !BDIDrvrMngr::Instance()->CandidatesFor(DString(name)).empty() ||
                         std::any_of(drivers.begin(), drivers.end(), [&](RDIDriver const *driver) {
                             DString const masks = driver->GetExtensions();
                             return !masks.empty() && PathMatchSpec(name, masks);
                         });
        }
        return at->second;
    }
    [[nodiscard]] bool FindsFiles() const { return m_query.kind != Kind::Folder && m_query.kind != Kind::DataSet; }

    std::error_code ListFolder(Folder const &folder, platform::ShellId const &id) {
        ShellNamespace const &shell = ShellNamespace::Current();
        if (folder.mayBlock && !DoesPlaceAnswer(shell.Path(id)))
            return std::make_error_code(std::errc::timed_out);
        auto const isWanted = [&](std::string_view name) {
            if (m_stop)
                return ShellNamespace::Wish::Stop;
            bool const is = FindsFiles() && (MatchesName(name) || m_query.inside) && m_query.MatchesFile(name) &&
                            (!m_opens || IsClaimed(name));
            return is ? ShellNamespace::Wish::Yes : ShellNamespace::Wish::No;
        };
        auto const visit = [&](ShellChild &&child) {
            if (child.kind == ShellKind::File)
                TakeFile(folder, std::move(child));
            else
                TakeFolder(folder, std::move(child));
            return !m_stop;
        };
        return shell.Enumerate(id, ShellNamespace::Purpose::Browse, visit, isWanted);
    }

    void TakeFile(Folder const &folder, ShellChild &&child) {
        bool const matchesName = MatchesName(child.name);
        if (!m_query.MatchesState(child.file) || !(matchesName || m_query.inside))
            return;
        RefItemPtr<DataSourceItem> item(NtwDataSourceItem::CreateUnasked(child, folder.item));
        if (!item)
            return;
        if (!m_opens) {
            m_reader.Tell(std::move(item), {});
            return;
        }
        DString path = item->GetPath();
        m_reader.Add({std::move(item), std::move(path), child.file, matchesName});
    }

    // Most folders are only looked into when it is their turn: what lies nearer is found before that. One whose name
    // matches is found among the names beside it, and so it has to be known now what it is.
    void TakeFolder(Folder const &folder, ShellChild &&child) {
        bool const mayBlock = m_mounts.MayBlockAt(ShellNamespace::Current().Path(child.id)).value_or(folder.mayBlock);
        if (mayBlock && !m_query.remote) {
            ++m_progress.leftRemote;
            return;
        }
        RefItemPtr<NtwDataSourceItem> item(NtwDataSourceItem::CreateUnasked(child, folder.item));
        if (!item)
            return;
        bool const isFolderWanted = m_query.FindsFolders();
        bool const isWanted = !m_opens && (isFolderWanted || m_query.kind == Kind::DataSet) && MatchesName(child.name);
        if (isWanted && TakeDataSet(*item, mayBlock))
            return;
        if (isWanted && isFolderWanted)
            m_reader.Tell(item, {});
        m_waiting.push_back({.item = item, .mayBlock = mayBlock, .isLookedAt = isWanted});
    }

    /// Whether the folder is a data set: it is found as such then, and not entered.
    bool TakeDataSet(NtwDataSourceItem &folder, bool mayBlock) {
        DString path = mayBlock ? DString() : folder.GetPath();
        std::optional<FoundDataFolder> const found =
            path.starts_with('/') ? LookForDataFolder(path) : std::optional<FoundDataFolder>();
        if (!found)
            return false;
        folder.BecomeDataFolder(found->kind);
        bool const matchesName = MatchesName(folder.GetName());
        FileState const state{.size = 0, .modified = found->modified};
        bool const isWanted = m_query.kind != Kind::Folder && m_query.kind != Kind::File;
        // How many bytes there are in it nobody has counted.
        if (!isWanted || m_query.bytes.IsSet() || !m_query.MatchesState(state) || !(matchesName || m_query.inside))
            return true;
        RefItemPtr<DataSourceItem> item(&folder);
        if (m_opens)
            m_reader.Add({std::move(item), std::move(path), state, matchesName});
        else
            m_reader.Tell(std::move(item), {});
        return true;
    }

    /// What a driver lists: a container, or a connection.
    std::error_code ListTree(Folder const &folder) {
        std::error_code why;
        std::int64_t const fileTime = m_query.modified.IsSet() ? FileTimeOf(*folder.item) : 0;
        StopQuestion cancel(m_stop);
        ListingWalk walk({.nodeMask = kAllData,
                          .cancel = &cancel,
                          .onUnread = [&](DataSourceItem &, std::error_code error) { why = error; }});
        walk.Through(folder.item, [&](RefItemPtr<DataSourceItem> child) {
            bool const isFolder = child->IsFolder();
            if (isFolder ? m_query.FindsFolders() && MatchesName(child->GetName()) : IsLeafWanted(*child, fileTime)) {
                if (m_query.NeedsFacts())
                    m_reader.Add({child, child->GetPath(), {}, true});
                else
                    m_reader.Tell(child, {});
            }
            if (isFolder)
                m_waiting.push_back({std::move(child), true});
            return !m_stop;
        });
        return why;
    }

    /// Of what a driver lists. Where the driver does not know when it was changed, the time of its file counts.
    [[nodiscard]] bool IsLeafWanted(DataSourceItem const &leaf, std::int64_t fileTime) const {
        DString const name = leaf.GetName();
        auto const *const tree = dynamic_cast<TemplDataSourceItem const *>(&leaf);
        std::int64_t const own = tree == nullptr || tree->GetNode() == nullptr ? 0 : tree->GetNode()->modified;
        return m_query.kind != Kind::Folder && leaf.IsFile(kAllData) && MatchesName(name) &&
               m_query.MatchesFile(name) &&
               m_query.MatchesState({.size = leaf.GetFileSize(), .modified = own != 0 ? own : fileTime});
    }

    SearchQuery const &m_query;
    DString const m_masks; ///< empty for every name
    StopSignal const &m_stop;
    std::atomic<std::int64_t> m_hits{0};
    Search::OnHit m_onHit;
    bool const m_opens; ///< files have to be opened
    std::deque<Folder> m_waiting;
    FolderVisits m_visits;
    platform::MountPoints const m_mounts;
    std::unordered_map<DString, bool> m_claimed; ///< by extension
    SearchProgress m_progress;
    FactsReader m_reader; ///< ends first
};

} // namespace

Search::Search(SearchQuery query, FactsStore *store) : m_query(std::move(query)), m_store(store) {}

SearchProgress Search::Run(RefItemPtr<DataSourceItem> const &place, StopSignal const &stop, OnHit const &onHit,
                           OnProgress const &onProgress) const {
    return Run(std::vector{place}, stop, onHit, onProgress);
}

SearchProgress Search::Run(std::vector<RefItemPtr<DataSourceItem>> const &places, StopSignal const &stop,
                           OnHit const &onHit, OnProgress const &onProgress) const {
    return Walk(m_query, m_store, stop, onHit).Run(places, onProgress);
}

} // namespace zelvar
