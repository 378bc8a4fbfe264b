#include "zelvar/reader/OpenTrees.h"

#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/BDIDrvrMngr.h"

#include <algorithm>

namespace zelvar::reader {

OpenTrees::Tree::~Tree() {
    for (Walk const &walk : walks)
        driver->FindClose(walk.find);
    if (root != nullptr)
        driver->CloseNode(root);
    if (repository != nullptr)
        driver->CloseRepository(repository);
}

void OpenTrees::Tree::CloseWalk(std::uint64_t number) {
    auto const at = std::ranges::find(walks, number, &Walk::number);
    if (at == walks.end())
        return;
    driver->FindClose(at->find);
    walks.erase(at);
}

OpenTrees::Tree *OpenTrees::Find(wire::TreeSpecT const &spec, DError &error) {
    if (Tree *const open = m_trees.Find(spec.id); open != nullptr)
        return open;
    auto tree = std::make_unique<Tree>();
    tree->driver = BDIDrvrMngr::Instance()->GetDrvr(spec.driver.c_str());
    if (tree->driver == nullptr) {
        error.Set("no tree driver " + spec.driver, DError::Cause::NotSupported);
        return nullptr;
    }
    char const *const filter = spec.filter.empty() ? nullptr : spec.filter.c_str();
    BDIDrvr &asked = *tree->driver;
    error.Clear();
    DString const url = TakeSecrets(spec.url);
    tree->repository = asked.OpenRepositoryOrSay(url.c_str(), spec.family, &tree->driver, &tree->root, filter, &error);
    if (tree->repository == nullptr) {
        if (!error.IsSet())
            error.Set(spec.driver + " does not open " + url);
        tree->root = nullptr; // what a driver left there that opened nothing is none
        return nullptr;
    }
    return m_trees.Add(spec.id, std::move(tree));
}

} // namespace zelvar::reader
