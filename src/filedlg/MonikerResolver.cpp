#include "zelvar/filedlg/MonikerResolver.h"

#include "zelvar/data/BDIDrvr.h"
#include "zelvar/data/RequestScope.h"

#include <algorithm>
#include <memory>

namespace zelvar {

namespace {

constexpr int kDeepest = 64;                 // a damaged container may hold itself
constexpr std::size_t kMostMembers = 100000; // of one container
constexpr std::uint32_t kNotSearched = 0x100 | 0x200;

bool HasOptions(BDIMoniker const &moniker) { return moniker.GetText().find('?') != DString::npos; }

bool IsStopped() { return RequestScope::Current() != nullptr && RequestScope::Current()->IsStopped(); }

/// A walk over the children of a node.
class ChildWalk {
public:
    ChildWalk(BDIMoniker const &moniker, BDINode const &node, int mask)
        : m_driver(*moniker.GetDrvr()), m_find(m_driver.FindFirstChildNode(moniker.GetRepository(), &node, mask)) {}
    ~ChildWalk() {
        if (m_find != nullptr)
            m_driver.FindClose(m_find);
    }
    ChildWalk(ChildWalk const &) = delete;
    ChildWalk &operator=(ChildWalk const &) = delete;

    /// Valid until the next call; null at the end.
    [[nodiscard]] BDINode const *Next() { return m_find == nullptr ? nullptr : m_driver.FindNextChildNode(m_find); }

private:
    BDIDrvr &m_driver;
    void *m_find;
};

/// What the file needs to be opened by its moniker.
DString DriverOptions(BDIMoniker const &moniker) {
    BDINode const *const node = moniker.GetNode();
    if (node == nullptr || HasOptions(moniker) || moniker.GetDrvr() == nullptr)
        return {};
    return moniker.GetDrvr()->GetDriverParameterString(node);
}

/// False if it has no child.
bool BecomeFirstChild(BDIMoniker &moniker) {
    DString path;
    {
        BDINode const &node = *moniker.GetNode();
        ChildWalk walk(moniker, node, static_cast<int>(node.type));
        BDINode const *const child = walk.Next();
        if (child == nullptr)
            return false;
        path = child->path;
    }
    moniker = BDIMoniker(path, moniker.GetDrvr());
    return true;
}

} // namespace

bool MonikerResolver::IsWanted(BDINode const &node) const {
    return (node.type & static_cast<std::uint32_t>(m_nodeMask)) != 0;
}

bool MonikerResolver::HasWanted(BDIMoniker const &moniker, BDINode const &node, int depth) const {
    if (m_nodeMask == 0 || moniker.GetDrvr() == nullptr || depth > kDeepest)
        return false;
    ChildWalk walk(moniker, node, m_nodeMask | BDIDrvr::kFindRecursive);
    while (BDINode const *const child = walk.Next()) {
        if (IsStopped())
            return false;
        if (IsWanted(*child) || ((child->type & kNotSearched) == 0 && HasWanted(moniker, *child, depth + 1)))
            return true;
    }
    return false;
}

bool MonikerResolver::HoldsAChoice() const {
    BDIMoniker const *const moniker = m_monikers.size() == 1 ? m_monikers.front() : nullptr;
    BDINode const *const node = moniker == nullptr ? nullptr : moniker->GetNode();
    return node != nullptr && HasWanted(*moniker, *node, 0);
}

void MonikerResolver::Replace(DVectorSafe<DString> const &paths) {
    std::unique_ptr<BDIMoniker> const file(m_monikers.front());
    m_monikers.clear();
    for (DString const &path : paths)
        m_monikers.push_back(new BDIMoniker(path, file->GetDrvr()));
}

void MonikerResolver::AddDriverOptions() {
    if (m_monikers.size() != 1 || m_monikers.front() == nullptr)
        return;
    if (DString const options = DriverOptions(*m_monikers.front()); !options.empty())
        Replace({m_monikers.front()->GetText() + "?" + options});
}

MonikerResolver::List MonikerResolver::Descendants(BDIMoniker const &moniker) const {
    List found;
    BDINode const *const root = moniker.GetNode();
    if (root == nullptr || moniker.GetDrvr() == nullptr)
        return found;
    int const mask = m_nodeMask | BDIDrvr::kFindRecursive;
    std::vector<std::unique_ptr<ChildWalk>> walks;
    walks.push_back(std::make_unique<ChildWalk>(moniker, *root, mask));
    while (!walks.empty() && found.size() < kMostMembers && !IsStopped()) {
        BDINode const *const child = walks.back()->Next();
        if (child == nullptr) {
            walks.pop_back();
            continue;
        }
        found.push_back(new BDIMoniker(child->path, moniker.GetDrvr()));
        if (walks.size() < kDeepest)
            walks.push_back(std::make_unique<ChildWalk>(moniker, *child, mask));
    }
    if (!IsStopped())
        return found;
    // A part of a container would look like all of it.
    for (BDIMoniker const *member : found)
        delete member;
    return {};
}

void MonikerResolver::ExpandAll() {
    if (m_monikers.empty())
        return;
    // Files that are chosen together are of one kind: what the first needs all need.
    DString const options = m_monikers.front() == nullptr ? DString() : DriverOptions(*m_monikers.front());
    List members;
    List kept;
    std::for_each(m_monikers.rbegin(), m_monikers.rend(), [&](BDIMoniker *moniker) {
        List found = moniker == nullptr || moniker->GetNode() == nullptr ? List() : Descendants(*moniker);
        m_known.insert(found.begin(), found.end());
        bool const takesOptions = found.empty() && moniker != nullptr && moniker->GetNode() != nullptr &&
                                  !HasOptions(*moniker) && !options.empty();
        if (takesOptions)
            found.push_back(new BDIMoniker(moniker->GetText() + "?" + options, moniker->GetDrvr()));
        if (found.empty())
            kept.push_back(moniker);
        else
            delete moniker;
        members.insert(members.end(), found.begin(), found.end());
    });
    std::reverse(kept.begin(), kept.end());
    m_monikers = std::move(kept);
    m_monikers.insert(m_monikers.end(), members.begin(), members.end());
}

void MonikerResolver::CheckTypes() {
    for (BDIMoniker *const moniker : m_monikers) {
        BDINode const *const node = moniker == nullptr || m_known.contains(moniker) ? nullptr : moniker->GetNode();
        if (node == nullptr || IsWanted(*node) || (node->type & BDINode_Container) != 0)
            continue;
        if ((static_cast<std::uint32_t>(m_nodeMask) & BDINode_Table) != 0 && BecomeFirstChild(*moniker))
            return;
        moniker->SetDrvr(nullptr);
    }
}

} // namespace zelvar
