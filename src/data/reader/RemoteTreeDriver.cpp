#include "zelvar/data/reader/RemoteTreeDriver.h"

#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/reader/AnswerReading.h"
#include "zelvar/data/reader/Readers.h"
#include "zelvar/data/reader/TreeProbes.h"

#include <cstring>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace zelvar {

namespace {

/// What the reader has told of the children of a node. Who lists opens each of them by its path right behind that: so
/// the last listing answers, and not a message for each.
class Listing {
public:
    explicit Listing(std::vector<BDINode> nodes) : m_nodes(std::move(nodes)) {}
    [[nodiscard]] BDINode const *At(std::size_t index) const {
        return index < m_nodes.size() ? &m_nodes[index] : nullptr;
    }
    [[nodiscard]] BDINode const *Find(std::string_view path) {
        if (m_byPath.empty())
            for (BDINode const &node : m_nodes)
                m_byPath.emplace(node.path, &node);
        auto const at = m_byPath.find(path);
        return at == m_byPath.end() ? nullptr : at->second;
    }

private:
    std::vector<BDINode> m_nodes;
    std::unordered_map<std::string_view, BDINode const *> m_byPath;
};

struct Repository {
    wire::TreeSpecT spec;
    int reader = 0; ///< that has it open, as far as we know
    DError walkError;
    std::shared_ptr<Listing> listing; ///< the last one; null before
};

struct Walk {
    std::shared_ptr<Listing> listing;
    std::size_t next = 0;
};

Repository &Of(void *repository) { return *static_cast<Repository *>(repository); }

/// For the reader, which connects.
std::unique_ptr<wire::TreeSpecT> Copy(wire::TreeSpecT const &spec) {
    auto copy = std::make_unique<wire::TreeSpecT>(spec);
    copy->url = WithSecrets(std::move(copy->url));
    return copy;
}

/// Asks about an open tree. Null if there is no such answer, with the reason in `error`.
template <class Wanted, class Body>
std::unique_ptr<Wanted> AskAbout(Repository &repository, char const *what, Body body, DError &error) {
    body.tree = Copy(repository.spec);
    Readers::Call const call{
        .kind = RequestKind::List, .what = what, .subject = repository.spec.url, .preferred = repository.reader};
    Readers::Answer answer = Readers::Instance().Ask(call, std::move(body));
    if (answer.message != nullptr)
        repository.reader = answer.reader;
    auto *const told = BodyOf<Wanted>(answer.message.get());
    if (told != nullptr)
        return std::make_unique<Wanted>(std::move(*told));
    error = FailureOf(answer.message.get(), answer.error);
    return nullptr;
}

} // namespace

int RemoteTreeDriver::GetAttrInt(char const *name) const {
    if (std::strcmp(name, "BDI_Multiple_Images") == 0)
        return m_facts.multipleImages;
    return std::strcmp(name, "BDI_Filtering") == 0 ? m_facts.filtering : 0;
}

bool RemoteTreeDriver::CanReadPath(DString const &path) const { return TreeProbes::Reads(m_facts.id, path); }

void *RemoteTreeDriver::OpenRepositoryOrSay(char const *url, bool inFamily, BDIDrvr **opener, BDINode **root,
                                            char const *filter, DError *error) {
    if (url == nullptr || *url == '\0')
        return nullptr;
    auto repository = std::make_unique<Repository>();
    repository->spec.id = Readers::Instance().NextId();
    repository->spec.driver = m_facts.id;
    repository->spec.family = inFamily;
    repository->spec.url = TakeSecrets(url);
    repository->spec.filter = filter == nullptr ? "" : filter;
    DError failure;
    auto const opened = AskAbout<wire::TreeOpenedT>(*repository, "tree", wire::OpenTreeT(), failure);
    if (error != nullptr)
        *error = failure;
    if (opened == nullptr || opened->root == nullptr)
        return nullptr;
    BDIDrvr *const named = BDIDrvrMngr::Instance()->GetDrvr(opened->driver.c_str());
    *opener = dynamic_cast<RemoteTreeDriver *>(named) != nullptr ? named : this;
    *root = new BDINode(NodeFrom(std::move(*opened->root)));
    return repository.release();
}

void *RemoteTreeDriver::OpenRepository(char const *url, BDINode **root, char const *filter) {
    BDIDrvr *opener = nullptr;
    return OpenRepositoryOrSay(url, false, &opener, root, filter, nullptr);
}

void *RemoteTreeDriver::OpenRepositoryInFamily(char const *url, BDIDrvr **opener, BDINode **root, char const *filter) {
    return OpenRepositoryOrSay(url, true, opener, root, filter, nullptr);
}

void RemoteTreeDriver::CloseRepository(void *repository) {
    if (repository == nullptr)
        return;
    wire::CloseTreeT body;
    body.id = Of(repository).spec.id;
    Readers::Instance().Tell(Of(repository).reader, body);
    delete &Of(repository);
}

BDINode *RemoteTreeDriver::OpenNode(void *repository, char const *path) {
    if (repository == nullptr || path == nullptr)
        return nullptr;
    if (Of(repository).listing != nullptr)
        if (BDINode const *const listed = Of(repository).listing->Find(path))
            return new BDINode(*listed);
    wire::FindNodeT body;
    body.path = path;
    DError failure;
    auto const found = AskAbout<wire::NodeFoundT>(Of(repository), "node", std::move(body), failure);
    return found == nullptr || found->node == nullptr ? nullptr : new BDINode(NodeFrom(std::move(*found->node)));
}

BDINode *RemoteTreeDriver::CloneNode(BDINode const *node) { return node == nullptr ? nullptr : new BDINode(*node); }

void RemoteTreeDriver::CloseNode(BDINode *node) { delete node; }

void *RemoteTreeDriver::FindFirstChildNode(void *repository, BDINode const *node, int mask) {
    if (repository == nullptr || node == nullptr)
        return nullptr;
    wire::ListChildrenT body;
    body.parent = ToWire(*node);
    body.mask = mask;
    Of(repository).walkError.Clear();
    Of(repository).listing.reset();
    auto const listed =
        AskAbout<wire::ChildrenT>(Of(repository), "children", std::move(body), Of(repository).walkError);
    if (listed == nullptr || listed->nodes.empty())
        return nullptr;
    auto walk = std::make_unique<Walk>();
    walk->listing = std::make_shared<Listing>(NodesFrom(std::move(*listed)));
    Of(repository).listing = walk->listing;
    return walk.release();
}

BDINode const *RemoteTreeDriver::FindNextChildNode(void *find) {
    auto *walk = static_cast<Walk *>(find);
    return walk == nullptr ? nullptr : walk->listing->At(walk->next++);
}

DError RemoteTreeDriver::GetWalkError(void *repository) const {
    return repository == nullptr ? DError() : Of(repository).walkError;
}

void RemoteTreeDriver::FindClose(void *find) { delete static_cast<Walk *>(find); }

} // namespace zelvar
