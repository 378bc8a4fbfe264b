#include "zelvar/data/reader/RemoteTreeDriver.h"

#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/reader/AnswerReading.h"
#include "zelvar/data/reader/Readers.h"
#include "zelvar/data/reader/TreeProbes.h"

#include <cstring>
#include <utility>

namespace zelvar {

namespace {

struct Repository {
    wire::TreeSpecT spec;
    int reader = 0; ///< that has it open, as far as we know
};

struct Walk {
    std::vector<BDINode> children;
    std::size_t next = 0;
};

Repository &Of(void *repository) { return *static_cast<Repository *>(repository); }

std::unique_ptr<wire::TreeSpecT> Copy(wire::TreeSpecT const &spec) { return std::make_unique<wire::TreeSpecT>(spec); }

/// Asks about an open tree. Null if there is no such answer.
template <class Wanted, class Body>
std::unique_ptr<Wanted> AskAbout(Repository &repository, char const *what, Body body) {
    body.tree = Copy(repository.spec);
    Readers::Call const call{
        .kind = RequestKind::List, .what = what, .subject = repository.spec.url, .preferred = repository.reader};
    Readers::Answer answer = Readers::Instance().Ask(call, std::move(body));
    if (answer.message == nullptr)
        return nullptr;
    repository.reader = answer.reader;
    auto *const told = BodyOf<Wanted>(answer.message.get());
    return told == nullptr ? nullptr : std::make_unique<Wanted>(std::move(*told));
}

} // namespace

int RemoteTreeDriver::GetAttrInt(char const *name) const {
    if (std::strcmp(name, "BDI_Multiple_Images") == 0)
        return m_facts.multipleImages;
    return std::strcmp(name, "BDI_Filtering") == 0 ? m_facts.filtering : 0;
}

bool RemoteTreeDriver::CanReadPath(DString const &path) const { return TreeProbes::Reads(m_facts.id, path); }

void *RemoteTreeDriver::Open(char const *url, BDIDrvr **opener, BDINode **root, char const *filter, bool family) {
    if (url == nullptr || *url == '\0')
        return nullptr;
    auto repository = std::make_unique<Repository>();
    repository->spec.id = Readers::Instance().NextId();
    repository->spec.driver = m_facts.id;
    repository->spec.family = family;
    repository->spec.url = url;
    repository->spec.filter = filter == nullptr ? "" : filter;
    auto const opened = AskAbout<wire::TreeOpenedT>(*repository, "tree", wire::OpenTreeT());
    if (opened == nullptr || opened->root == nullptr)
        return nullptr;
    BDIDrvr *const named = BDIDrvrMngr::Instance()->GetDrvr(opened->driver.c_str());
    *opener = dynamic_cast<RemoteTreeDriver *>(named) != nullptr ? named : this;
    *root = new BDINode(NodeFrom(std::move(*opened->root)));
    return repository.release();
}

void *RemoteTreeDriver::OpenRepository(char const *url, BDINode **root, char const *filter) {
    BDIDrvr *opener = nullptr;
    return Open(url, &opener, root, filter, false);
}

void *RemoteTreeDriver::OpenRepositoryInFamily(char const *url, BDIDrvr **opener, BDINode **root, char const *filter) {
    return Open(url, opener, root, filter, true);
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
    wire::FindNodeT body;
    body.path = path;
    auto const found = AskAbout<wire::NodeFoundT>(Of(repository), "node", std::move(body));
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
    auto const listed = AskAbout<wire::ChildrenT>(Of(repository), "children", std::move(body));
    if (listed == nullptr || listed->nodes.empty())
        return nullptr;
    auto walk = std::make_unique<Walk>();
    walk->children = NodesFrom(std::move(*listed));
    return walk.release();
}

BDINode const *RemoteTreeDriver::FindNextChildNode(void *find) {
    auto *walk = static_cast<Walk *>(find);
    return walk != nullptr && walk->next < walk->children.size() ? &walk->children[walk->next++] : nullptr;
}

void RemoteTreeDriver::FindClose(void *find) { delete static_cast<Walk *>(find); }

} // namespace zelvar
