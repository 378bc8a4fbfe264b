#pragma once

#include "zelvar/model/datasets/DataSetFolding.h"
#include "zelvar/platform/os/ShellNamespace.h"

#include <condition_variable>
#include <list>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace zelvar {

/// Reads folders of this machine that a walk will enter soon, on a thread of its own, while the walk is busy with
/// another one. All of it belongs to the thread that made it, for which it is the current one while it lives.
class FolderAhead {
public:
    /// `filter` is a mask for plain files. Folders are read for the folding of the thread, see `FoldedListing`.
    explicit FolderAhead(DString filter);
    ~FolderAhead();
    FolderAhead(FolderAhead const &) = delete;
    FolderAhead &operator=(FolderAhead const &) = delete;

    /// The one of this thread, or null.
    [[nodiscard]] static FolderAhead *Current();
    /// Reads `folder` as soon as there is time. Not one that a link leads to, and none on a mount that may not answer:
    /// these wait for the walk.
    void Begin(platform::ShellId const &folder);
    /// Visits the children as `ShellNamespace::Enumerate` does; nothing if the folder has not been begun with that
    /// filter.
    std::optional<std::error_code> Take(platform::ShellId const &folder, std::string_view filter,
                                        platform::ShellNamespace::Visitor const &visit);

private:
    using Children = std::vector<platform::ShellChild>;
    enum class Phase { Waiting, Reading, Done, Left };
    struct Folder {
        platform::ShellId id;
        Phase phase = Phase::Waiting;
        bool isAbandoned = false;
        Children read{}; ///< and not visited yet
        std::error_code error{};
    };
    static constexpr std::size_t kMostFolders = 8;     // that wait to be entered: as many levels of a tree
    static constexpr std::size_t kMostChildren = 4096; // of one folder that wait to be visited

    void Run();
    /// False for one that is left to the walk.
    bool Read(Folder &folder);
    /// Waits for room; false if nobody wants more.
    bool HandOver(Folder &folder, Children &&children);

    DString const m_filter;
    DataSetFolding const m_folding;
    FolderAhead *m_former;
    std::thread m_thread; ///< none before the first folder
    std::mutex m_mutex;   ///< guards all below
    std::condition_variable m_changed;
    std::list<Folder> m_folders; ///< the next one to be entered last
    bool m_isEnding = false;
};

} // namespace zelvar
