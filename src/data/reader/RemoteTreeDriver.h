#pragma once

#include "zelvar/data/BDIDrvr.h"
#include "zelvar/data/wire/Messages.h"

namespace zelvar {

/// A tree driver that lives in the readers. All it holds here is what a tree is opened by: a reader that is lost loses
/// no tree, the next one opens it again.
class RemoteTreeDriver : public BDIDrvr {
public:
    explicit RemoteTreeDriver(wire::DriverFactsT facts) : m_facts(std::move(facts)) {}

    [[nodiscard]] DString GetId() const override { return m_facts.id; }
    [[nodiscard]] DString GetInfo() const override { return m_facts.info; }
    [[nodiscard]] DString GetExtensions() const override { return m_facts.extensions; }
    [[nodiscard]] DString GetFamily() const override { return m_facts.family; }
    [[nodiscard]] int GetAttrInt(char const *name) const override;
    [[nodiscard]] bool CanReadPath(DString const &path) const override;

    void *OpenRepository(char const *url, BDINode **root, char const *filter) override;
    void CloseRepository(void *repository) override;
    void *OpenRepositoryInFamily(char const *url, BDIDrvr **opener, BDINode **root, char const *filter) override;
    void *OpenRepositoryOrSay(char const *url, bool inFamily, BDIDrvr **opener, BDINode **root, char const *filter,
                              DError *error) override;
    BDINode *OpenNode(void *repository, char const *path) override;
    BDINode *CloneNode(BDINode const *node) override;
    void CloseNode(BDINode *node) override;
    void *FindFirstChildNode(void *repository, BDINode const *node, int mask) override {
        return FindFirstChildNamed(repository, node, mask, nullptr);
    }
    void *FindFirstChildNamed(void *repository, BDINode const *node, int mask, char const *names) override;
    BDINode const *FindNextChildNode(void *find) override;
    void FindClose(void *find) override;
    [[nodiscard]] DError GetWalkError(void *repository) const override;
    [[nodiscard]] bool IsNextAtHand(void *find) const override;
    void FetchNextPart(void *find) override;
    [[nodiscard]] bool HasPlainNodes() const override { return true; }

private:
    wire::DriverFactsT m_facts;
};

} // namespace zelvar
