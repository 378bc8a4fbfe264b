#include "zelvar/data/gdal/database/OdbcTree.h"

#include "zelvar/base/NaturalOrder.h"
#include "zelvar/data/gdal/database/OdbcSession.h"

#include <algorithm>
#include <set>
#include <utility>

namespace zelvar::gdal {

namespace {

enum Field { kCatalog, kSchema, kTable, kType };
constexpr std::size_t kLongestName = 1024;
constexpr std::size_t kMostTables = 1'000'000;

} // namespace

std::unique_ptr<Tree> OdbcTree::Open(DatabaseAddress const &address, DError &error) {
    std::unique_ptr<OdbcTree> tree(new OdbcTree(address.connection));
    tree->m_root =
        MakeNode(kDirectoryNode, address.connection, DatabaseAddress{.connection = address.connection}.Name());
    if (!tree->List()) {
        error = tree->m_error;
        return nullptr;
    }
    tree->m_isFresh = true;
    if (DString const path = address.ToText(); path != tree->m_root.path) {
        auto const named = tree->m_nodes.find(path);
        if (named == tree->m_nodes.end()) {
            error.Set("\"" + path + "\" is not there", DError::Cause::Missing);
            return nullptr;
        }
        tree->m_root = named->second;
    }
    return tree;
}

void OdbcTree::Add(DString const &schema, DString const &table, DString const &type) const {
    DatabaseAddress place{.connection = m_connection};
    DString const top = place.ToText();
    DString parent = top;
    if (schema.empty()) {
        place.schema = table;
    } else {
        place.schema = schema;
        parent = place.ToText();
        BDINode const folder = MakeNode(kDirectoryNode, parent, schema);
        if (m_nodes.try_emplace(parent, folder).second)
            m_children[top].push_back(folder);
        place.table = table;
    }
    BDINode node = MakeNode(BDINode_Table, place.ToText(), table);
    node.value = type.find("VIEW") != DString::npos ? "view" : "table";
    if (m_nodes.try_emplace(node.path, node).second)
        m_children[parent].push_back(std::move(node));
}

bool OdbcTree::List() const {
    m_error.Clear();
    std::shared_ptr<OdbcSession> const session = OdbcSession::Open(&m_error);
    auto const rows = session == nullptr ? nullptr : session->Tables(m_connection, &m_error);
    if (rows == nullptr)
        return false;
    m_children.clear();
    m_nodes.clear();
    std::set<DString> const wanted = WantedSchemas(OwnDatabase(ConnectionKind::Odbc));
    int const folder = session->HasCatalogsAlone() ? kCatalog : kSchema;
    OdbcStatement::Next next = OdbcStatement::Next::Row;
    while (m_nodes.size() < kMostTables && (next = rows->Step()) == OdbcStatement::Next::Row) {
        DString const schema = rows->Text(folder, kLongestName);
        DString const table = rows->Text(kTable, kLongestName);
        if (!table.empty() && (wanted.empty() || wanted.contains(schema)))
            Add(schema, table, rows->Text(kType, kLongestName));
    }
    if (next == OdbcStatement::Next::Failed)
        m_error.Set("\"" + m_connection + "\": the list of its tables ended too soon", DError::Cause::NoAnswer);
    for (auto &[parent, nodes] : m_children)
        std::ranges::stable_sort(nodes, {}, [](BDINode const &node) { return MakeFileNameKey(node.name); });
    return next != OdbcStatement::Next::Failed;
}

std::vector<BDINode> OdbcTree::Children(BDINode const &parent) const {
    // Who comes back to the top wants to know how it is now.
    bool const isTop = parent.path == m_root.path;
    if (isTop && !std::exchange(m_isFresh, false) && !List())
        return {};
    auto const at = m_children.find(parent.path);
    return at == m_children.end() ? std::vector<BDINode>() : at->second;
}

std::optional<BDINode> OdbcTree::Find(DString const &path) const {
    auto const at = m_nodes.find(path);
    return at == m_nodes.end() ? std::nullopt : std::optional(at->second);
}

} // namespace zelvar::gdal
