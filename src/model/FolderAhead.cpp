#include "zelvar/model/FolderAhead.h"

#include "zelvar/model/FoldedListing.h"
#include "zelvar/model/NtwDataSourceItemItr.h"
#include "zelvar/platform/os/MountTable.h"

#include <algorithm>
#include <iterator>
#include <system_error>
#include <tuple>
#include <utility>

namespace zelvar {

using platform::ShellChild;
using platform::ShellId;
using platform::ShellNamespace;

namespace {

thread_local FolderAhead *t_current = nullptr;

} // namespace

FolderAhead::FolderAhead(DString filter)
    : m_filter(std::move(filter)), m_folding(FoldedListing::Current()), m_former(std::exchange(t_current, this)) {}

FolderAhead::~FolderAhead() {
    t_current = m_former;
    {
        std::lock_guard const lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

FolderAhead *FolderAhead::Current() { return t_current; }

void FolderAhead::Begin(ShellId const &folder) {
    std::lock_guard const lock(m_mutex);
    auto const isIt = [&](Folder const &each) { return each.id == folder; };
    if (m_folders.size() >= kMostFolders || std::any_of(m_folders.begin(), m_folders.end(), isIt))
        return;
    if (!m_thread.joinable()) {
        try {
            m_thread = std::thread([this] { Run(); });
        } catch (std::system_error const &) {
            return; // no thread to be had: the walk reads by itself
        }
    }
    m_folders.push_back({.id = folder});
    m_changed.notify_all();
}

std::optional<std::error_code> FolderAhead::Take(ShellId const &folder, std::string_view filter,
                                                 ShellNamespace::Visitor const &visit) {
    std::unique_lock lock(m_mutex);
    auto const at =
        std::find_if(m_folders.begin(), m_folders.end(), [&](Folder const &each) { return each.id == folder; });
    if (at == m_folders.end() || filter != m_filter)
        return std::nullopt;
    bool wantsMore = at->phase != Phase::Waiting;
    while (wantsMore) {
        m_changed.wait(lock, [&] { return !at->read.empty() || at->phase != Phase::Reading; });
        Children const children = std::exchange(at->read, {});
        if (children.empty())
            break;
        lock.unlock();
        m_changed.notify_all();
        wantsMore =
            std::all_of(children.begin(), children.end(), [&](ShellChild child) { return visit(std::move(child)); });
        lock.lock();
    }
    at->isAbandoned = !wantsMore;
    m_changed.notify_all();
    m_changed.wait(lock, [&] { return at->phase != Phase::Reading; });
    std::optional<std::error_code> const result = at->phase == Phase::Done ? std::optional(at->error) : std::nullopt;
    m_folders.erase(at);
    return result;
}

void FolderAhead::Run() {
    std::unique_lock lock(m_mutex);
    auto const isWaiting = [](Folder const &each) { return each.phase == Phase::Waiting; };
    while (!m_isEnding) {
        auto const next = std::find_if(m_folders.rbegin(), m_folders.rend(), isWaiting);
        if (next == m_folders.rend()) {
            m_changed.wait(lock);
            continue;
        }
        Folder &folder = *next; // stays where it is until it is read
        folder.phase = Phase::Reading;
        lock.unlock();
        bool const isRead = Read(folder);
        lock.lock();
        folder.phase = isRead ? Phase::Done : Phase::Left;
        m_changed.notify_all();
    }
}

bool FolderAhead::HandOver(Folder &folder, Children &&children) {
    std::unique_lock lock(m_mutex);
    auto const isOver = [&] { return m_isEnding || folder.isAbandoned; };
    m_changed.wait(lock, [&] { return isOver() || folder.read.size() < kMostChildren; });
    std::move(children.begin(), children.end(), std::back_inserter(folder.read));
    children.clear();
    m_changed.notify_all();
    return !isOver();
}

bool FolderAhead::Read(Folder &folder) {
    ShellNamespace const &shell = ShellNamespace::Current();
    if (platform::MayBlockAt(shell.Path(folder.id)))
        return false;
    constexpr std::size_t kTogether = 128;
    Children children;
    folder.error = shell.Enumerate(
        folder.id, ShellNamespace::Purpose::Browse,
        [&](ShellChild &&child) {
            children.push_back(std::move(child));
            return children.size() < kTogether || HandOver(folder, std::move(children));
        },
        [&](std::string_view name) {
            return NtwDataSourceItemItr::IsVisited(name, m_filter, m_folding) ? ShellNamespace::Wish::Yes
                                                                              : ShellNamespace::Wish::No;
        });
    std::ignore = HandOver(folder, std::move(children));
    return true;
}

} // namespace zelvar
