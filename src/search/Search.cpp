#include "zelvar/search/Search.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/DataFolderLook.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/model/FolderVisits.h"
#include "zelvar/model/ListingWalk.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/platform/os/MountTable.h"
#include "zelvar/search/FactsReader.h"

#include <algorithm>
#include <deque>
#include <unordered_map>

namespace zelvar {

using platform::ShellChild;
using platform::ShellKind;
using platform::ShellNamespace;

namespace {

using Kind = SearchQuery::Kind;

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

    SearchProgress Run(RefItemPtr<DataSourceItem> const &place, Search::OnProgress const &onProgress) {
        m_waiting.push_back({place, false});
        while (!m_waiting.empty() && !m_stop) {
            Folder const folder = std::move(m_waiting.front());
            m_waiting.pop_front();
            if (!m_visits.Enter(*folder.item) && folder.item != place)
                continue;
            auto const *const plain = dynamic_cast<NtwDataSourceItem const *>(folder.item.get());
            bool const isPlain = plain != nullptr && plain->GetType() == NtwDataSourceItem::TYPE_FOLDER;
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
        bool mayBlock = false; ///< it lies on a network, or another process serves it
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
        if (!DoesPlaceAnswer(shell.Path(id)))
            return std::make_error_code(std::errc::timed_out);
        auto const isWanted = [&](std::string_view name) {
            if (m_stop)
                return ShellNamespace::Wish::Stop;
            bool const is = FindsFiles() && (MatchesName(name) || m_query.inside) && (!m_opens || IsClaimed(name));
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

    void TakeFolder(Folder const &folder, ShellChild &&child) {
        DString const path = ShellNamespace::Current().Path(child.id);
        bool const mayBlock = folder.mayBlock || platform::MayBlockAt(path);
        if (mayBlock && !m_query.remote) {
            ++m_progress.leftRemote;
            return;
        }
        std::optional<FoundDataFolder> const found =
            mayBlock || !path.starts_with('/') ? std::nullopt : LookForDataFolder(path);
        RefItemPtr<NtwDataSourceItem> item(NtwDataSourceItem::CreateUnasked(child, folder.item));
        if (!item)
            return;
        if (found) {
            item->BecomeDataFolder(found->kind);
            TakeDataSet(std::move(item), path, *found);
            return;
        }
        if (m_query.FindsFolders() && MatchesName(child.name))
            m_reader.Tell(item, {});
        m_waiting.push_back({std::move(item), mayBlock});
    }

    void TakeDataSet(RefItemPtr<NtwDataSourceItem> item, DString path, FoundDataFolder const &found) {
        bool const matchesName = MatchesName(item->GetName());
        FileState const state{.size = 0, .modified = found.modified};
        bool const isWanted = m_query.kind != Kind::Folder && m_query.kind != Kind::File;
        // How many bytes there are in it nobody has counted.
        if (!isWanted || m_query.bytes.IsSet() || !m_query.MatchesState(state) || !(matchesName || m_query.inside))
            return;
        if (m_opens)
            m_reader.Add({std::move(item), std::move(path), state, matchesName});
        else
            m_reader.Tell(std::move(item), {});
    }

    /// What a driver lists: a container, or a connection.
    std::error_code ListTree(Folder const &folder) {
        std::error_code why;
        ListingWalk walk({.nodeMask = 0, .onUnread = [&](DataSourceItem &, std::error_code error) { why = error; }});
        walk.Through(folder.item, [&](RefItemPtr<DataSourceItem> child) {
            bool const isFolder = child->IsFolder();
            if (MatchesName(child->GetName()) && !(isFolder ? !m_query.FindsFolders() : m_query.kind == Kind::Folder)) {
                DString path = child->GetPath();
                if (!m_query.NeedsFacts())
                    m_reader.Tell(child, {});
                else if (!isFolder)
                    m_reader.Add({child, std::move(path), {}, true});
            }
            if (isFolder)
                m_waiting.push_back({std::move(child), true});
            return !m_stop;
        });
        return why;
    }

    SearchQuery const &m_query;
    DString const m_masks; ///< empty for every name
    StopSignal const &m_stop;
    std::atomic<std::int64_t> m_hits{0};
    Search::OnHit m_onHit;
    bool const m_opens; ///< files have to be opened
    std::deque<Folder> m_waiting;
    FolderVisits m_visits;
    std::unordered_map<DString, bool> m_claimed; ///< by extension
    SearchProgress m_progress;
    FactsReader m_reader; ///< ends first
};

} // namespace

Search::Search(SearchQuery query, FactsStore *store) : m_query(std::move(query)), m_store(store) {}

SearchProgress Search::Run(RefItemPtr<DataSourceItem> const &place, StopSignal const &stop, OnHit const &onHit,
                           OnProgress const &onProgress) const {
    return Walk(m_query, m_store, stop, onHit).Run(place, onProgress);
}

} // namespace zelvar
