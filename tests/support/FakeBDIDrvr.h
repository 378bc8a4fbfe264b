#pragma once

#include "zelvar/data/BDIDrvr.h"
#include "zelvar/data/BDIDrvrMngr.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace zelvar::test {

/// A tree driver that a test writes down; it counts what is open. One tree serves every URL that it opens.
class FakeBDIDrvr : public BDIDrvr {
public:
    struct Calls {
        int canRead = 0;
        int opened = 0;
        int openRepositories = 0;
        int openNodes = 0;
        int openFinds = 0;
    };

    FakeBDIDrvr(DString id, DString extensions) : m_id(std::move(id)), m_extensions(std::move(extensions)) {
        m_nodes["root"] = {.type = BDINode_Container, .name = "Root", .value = {}, .children = {}};
    }

    /// Adds a node below `parent`, whose path is "root" for the top of the tree.
    void Add(DString const &parent, DString const &path, unsigned type, DString const &name,
             DString const &value = {}) {
        m_nodes[path] = {.type = type, .name = name, .value = value, .children = {}};
        m_nodes[parent].children.push_back(path);
    }
    void SetAttribute(DString const &name, int value) { m_attributes[name] = value; }
    /// Only URLs for which it is true open; all do without it.
    void SetOpens(std::function<bool(DString const &)> opens) { m_opens = std::move(opens); }
    void SetReads(bool reads) { m_reads = reads; }
    /// `OpenNode` fails for that path.
    void Break(DString const &path) { m_broken.insert(path); }

    [[nodiscard]] Calls const &Counted() const { return *m_calls; }
    [[nodiscard]] DString const &LastFilter() const { return m_lastFilter; }

    [[nodiscard]] DString GetId() const override { return m_id; }
    [[nodiscard]] DString GetInfo() const override { return m_id + " for tests"; }
    [[nodiscard]] DString GetExtensions() const override { return m_extensions; }
    [[nodiscard]] int GetAttrInt(char const *name) const override {
        auto const found = m_attributes.find(name);
        return found == m_attributes.end() ? 0 : found->second;
    }
    [[nodiscard]] bool CanReadPath(DString const &) const override {
        ++m_calls->canRead;
        return m_reads;
    }
    void *OpenRepository(char const *url, BDINode **root, char const *filter) override {
        ++m_calls->opened;
        m_lastFilter = filter == nullptr ? "" : filter;
        if (m_opens && !m_opens(url))
            return nullptr;
        *root = Make("root");
        ++m_calls->openRepositories;
        return new DString(url);
    }
    void CloseRepository(void *repository) override {
        delete static_cast<DString *>(repository);
        --m_calls->openRepositories;
    }
    BDINode *OpenNode(void *, char const *path) override { return m_broken.contains(path) ? nullptr : Make(path); }
    BDINode *CloneNode(BDINode const *node) override {
        ++m_calls->openNodes;
        return new BDINode(*node);
    }
    void CloseNode(BDINode *node) override {
        --m_calls->openNodes;
        delete node;
    }
    void *FindFirstChildNode(void *, BDINode const *node, int mask) override {
        auto find = std::make_unique<Find>();
        for (DString const &path : m_nodes[node->path].children)
            if ((m_nodes[path].type & static_cast<unsigned>(mask)) != 0)
                find->found.push_back(Record(path));
        ++m_calls->openFinds;
        return find.release();
    }
    BDINode const *FindNextChildNode(void *handle) override {
        auto *find = static_cast<Find *>(handle);
        return find->at < find->found.size() ? &find->found[find->at++] : nullptr;
    }
    void FindClose(void *handle) override {
        --m_calls->openFinds;
        delete static_cast<Find *>(handle);
    }

private:
    struct Node {
        unsigned type = 0;
        DString name;
        DString value;
        std::vector<DString> children;
    };
    struct Find {
        std::vector<BDINode> found;
        std::size_t at = 0;
    };

    [[nodiscard]] BDINode Record(DString const &path) const {
        Node const &node = m_nodes.at(path);
        BDINode record;
        record.type = node.type;
        record.path = path;
        record.name = node.name;
        record.value = node.value;
        return record;
    }
    [[nodiscard]] BDINode *Make(DString const &path) {
        if (!m_nodes.contains(path))
            return nullptr;
        ++m_calls->openNodes;
        return new BDINode(Record(path));
    }

    DString m_id;
    DString m_extensions;
    std::map<DString, Node> m_nodes;
    std::map<DString, int> m_attributes{{"BDI_Multiple_Images", 1}};
    std::function<bool(DString const &)> m_opens;
    std::set<DString> m_broken;
    bool m_reads = true;
    DString m_lastFilter;
    std::unique_ptr<Calls> m_calls = std::make_unique<Calls>();
};

/// The drivers of a test: none of the machine's; all are gone at its end, when every item must be as well.
class FakeDrivers {
public:
    FakeDrivers() {
        BDIDrvrMngr::Instance()->Reset();
        SetDriverProvider([] {});
    }
    ~FakeDrivers() { BDIDrvrMngr::Instance()->Reset(); }
    FakeDrivers(FakeDrivers const &) = delete;
    FakeDrivers &operator=(FakeDrivers const &) = delete;

    /// Finish the driver in `prepare`: its attributes are read when it is added.
    static FakeBDIDrvr &Add(DString const &id, DString const &extensions,
                            std::function<void(FakeBDIDrvr &)> const &prepare = nullptr) {
        auto driver = std::make_unique<FakeBDIDrvr>(id, extensions);
        if (prepare)
            prepare(*driver);
        FakeBDIDrvr &added = *driver;
        BDIDrvrMngr::Instance()->Add(std::move(driver));
        return added;
    }
};

} // namespace zelvar::test
