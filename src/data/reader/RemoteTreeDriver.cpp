#include "zelvar/data/reader/RemoteTreeDriver.h"

#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/reader/AnswerReading.h"
#include "zelvar/data/reader/Readers.h"
#include "zelvar/data/reader/TreeProbes.h"

#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace zelvar {

namespace {

constexpr std::int64_t kMostChildren = 3'000'000; // of one node
constexpr int kMostParts = 100'000;

struct Repository {
    wire::TreeSpecT spec;
    int reader = 0; ///< that has it open, as far as we know
    DError walkError;
};

/// A walk that gets its children in the parts in which they come. It lives no longer than its repository is open.
struct Walk {
    Repository *repository = nullptr;
    wire::ListChildrenT question;
    std::vector<BDINode> children; ///< the present part
    std::size_t next = 0;
    bool hasMore = false;
    int parts = 0;
    [[nodiscard]] bool IsAtHand() const { return next < children.size() || !hasMore; }
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

/// Asks for the next part of a walk, which may hold nothing.
void FetchPart(Walk &walk) {
    walk.next = 0;
    walk.children.clear();
    DError error;
    auto const listed = AskAbout<wire::ChildrenT>(*walk.repository, "children", walk.question, error);
    walk.hasMore = listed != nullptr && listed->more;
    if (listed != nullptr && listed->failed != nullptr)
        error = ErrorFrom(listed->failed.get());
    // Whoever stops a walk knows why; others through the same repository go on.
    RequestScope const *const scope = RequestScope::Current();
    if (error.IsSet() && (scope == nullptr || !scope->IsStopped()))
        walk.repository->walkError = std::move(error);
    if (listed == nullptr)
        return;
    walk.children = NodesFrom(std::move(*listed));
    walk.question.first += static_cast<std::int64_t>(walk.children.size());
    // A reader that never came to an end would be asked for ever.
    if (!walk.hasMore || (walk.question.first < kMostChildren && ++walk.parts < kMostParts))
        return;
    walk.hasMore = false;
    walk.repository->walkError.Set("\"" + walk.question.parent->path + "\" holds more than can be listed",
                                   DError::Cause::TooLarge);
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
    wire::FindNodeT body;
    body.path = path;
    DError failure;
    auto const found = AskAbout<wire::NodeFoundT>(Of(repository), "node", std::move(body), failure);
    return found == nullptr || found->node == nullptr ? nullptr : new BDINode(NodeFrom(std::move(*found->node)));
}

BDINode *RemoteTreeDriver::CloneNode(BDINode const *node) { return node == nullptr ? nullptr : new BDINode(*node); }

void RemoteTreeDriver::CloseNode(BDINode *node) { delete node; }

void *RemoteTreeDriver::FindFirstChildNamed(void *repository, BDINode const *node, int mask, char const *names) {
    if (repository == nullptr || node == nullptr)
        return nullptr;
    auto walk = std::make_unique<Walk>();
    walk->repository = &Of(repository);
    walk->question.parent = ToWire(*node);
    walk->question.mask = mask;
    walk->question.names = names == nullptr ? "" : names;
    walk->question.together = RequestScope::Together();
    walk->question.walk = Readers::Instance().NextId();
    Of(repository).walkError.Clear();
    FetchPart(*walk);
    return walk->children.empty() && !walk->hasMore ? nullptr : walk.release();
}

BDINode const *RemoteTreeDriver::FindNextChildNode(void *find) {
    auto *walk = static_cast<Walk *>(find);
    while (walk != nullptr && !walk->IsAtHand())
        FetchPart(*walk);
    return walk != nullptr && walk->next < walk->children.size() ? &walk->children[walk->next++] : nullptr;
}

bool RemoteTreeDriver::IsNextAtHand(void *find) const {
    return find == nullptr || static_cast<Walk *>(find)->IsAtHand();
}

void RemoteTreeDriver::FetchNextPart(void *find) {
    if (auto *const walk = static_cast<Walk *>(find); walk != nullptr && !walk->IsAtHand())
        FetchPart(*walk);
}

DError RemoteTreeDriver::GetWalkError(void *repository) const {
    return repository == nullptr ? DError() : Of(repository).walkError;
}

void RemoteTreeDriver::FindClose(void *find) {
    std::unique_ptr<Walk> const walk(static_cast<Walk *>(find));
    if (walk == nullptr || !walk->hasMore)
        return;
    wire::CloseWalkT body;
    body.tree = walk->repository->spec.id;
    body.walk = walk->question.walk;
    Readers::Instance().Tell(walk->repository->reader, body);
}

} // namespace zelvar
