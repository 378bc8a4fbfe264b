#include "zelvar/data/gdal/database/PostgresTree.h"

#include "zelvar/base/NaturalOrder.h"
#include "zelvar/data/gdal/database/PostgresRaster.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace zelvar::gdal {

namespace {

constexpr std::int64_t kMostAhead = 100'000;    // tables that are listed before anybody has asked for them
constexpr std::chrono::seconds kAheadHolds{10}; // for who goes through the schemas one by one

/// In place of what it is: who opens it is told the same.
constexpr char const *kUnreadable = "cannot be read: a quote or \\ in its name";

char const *WordOf(char kind) {
    switch (kind) {
    case 'v':
    case 'm':
        return "view";
    case 'f':
        return "foreign table";
    default:
        return "table";
    }
}

DString DetailsOf(PostgresRelation const &table) {
    return table.rows < 0
               ? DString(WordOf(table.kind))
               : zelvar::Format("%s, about %lld rows", WordOf(table.kind), static_cast<long long>(table.rows));
}

/// As folders are: natural order, whatever the database's own is.
void SortByName(std::vector<BDINode> &nodes) {
    std::vector<std::pair<DString, BDINode>> keyed;
    keyed.reserve(nodes.size());
    for (BDINode &node : nodes)
        keyed.emplace_back(MakeFileNameKey(node.name), std::move(node));
    std::ranges::stable_sort(keyed, {}, &std::pair<DString, BDINode>::first);
    nodes.clear();
    for (auto &[key, node] : keyed)
        nodes.push_back(std::move(node));
}

} // namespace

PostgresTree::PostgresTree(DatabaseAddress address)
    : m_address(std::move(address)), m_catalogue(m_address.ToText(), nullptr) {
    ConnectionTerms const *const terms = OwnDatabase(ConnectionKind::PostgreSql);
    if (terms != nullptr)
        if (auto const shown = terms->options.find("tables"); shown != terms->options.end())
            m_withPlainTables = shown->second != "geometry";
    m_root = MakeNode(kDirectoryNode, m_address.ToText(), m_address.Name());
}

std::unique_ptr<Tree> PostgresTree::Open(DatabaseAddress address, DError &error) {
    std::unique_ptr<PostgresTree> tree(new PostgresTree(std::move(address)));
    DatabaseAddress const &place = tree->m_address;
    if (place.table.empty()) {
        tree->m_listedRoot = tree->Children(tree->m_root);
        error = std::exchange(tree->m_error, {});
        if (!error.IsSet() && !place.schema.empty() && tree->m_listedRoot->empty())
            error = tree->m_catalogue.WhyNoTables(place.schema);
        return error.IsSet() ? nullptr : std::move(tree);
    }
    std::optional<PostgresRelation> const table = tree->m_catalogue.Table(place.schema, place.table, &error);
    if (!table)
        return nullptr;
    std::vector<BDINode> nodes = tree->NodesOf(*table, Overviews::Too);
    auto const named = std::ranges::find(nodes, place.ToText(), &BDINode::path);
    if (named != nodes.end())
        tree->m_root = *named;
    else if (nodes.size() == 1 && place.column.empty())
        tree->m_root = nodes.front();
    else if (nodes.size() > 1 && place.column.empty())
        tree->m_listedRoot = std::move(nodes); // its rasters, and what else it has
    else
        error.Set("\"" + place.ToText() + "\": there is no such raster", DError::Cause::Missing);
    return error.IsSet() ? nullptr : std::move(tree);
}

std::vector<BDINode> PostgresTree::Children(BDINode const &parent) const {
    m_error.Clear();
    std::vector<BDINode> nodes;
    auto const address = DatabaseAddress::In({.id = m_address.connection}, parent.path, &m_error);
    if (!address)
        return nodes;
    bool const isRoot = parent.path == m_root.path;
    if (isRoot && m_listedRoot)
        nodes = *std::exchange(m_listedRoot, std::nullopt);
    else if (!address->table.empty())
        return nodes;
    else
        nodes = address->schema.empty() ? ListSchemas() : ListTables(address->schema);
    for (BDINode const &node : nodes)
        m_found.insert_or_assign(node.path, node);
    return nodes;
}

BDINode PostgresTree::SchemaNode(DString const &schema) const {
    DatabaseAddress place = m_address;
    place.schema = schema;
    return MakeNode(kDirectoryNode, place.ToText(), schema);
}

std::vector<BDINode> PostgresTree::ListSchemas() const {
    std::vector<BDINode> nodes;
    m_ahead.clear();
    m_entered.clear();
    m_tables = 0;
    auto const schemas = m_catalogue.Schemas(&m_error);
    if (!schemas)
        return nodes;
    for (PostgresSchema const &schema : *schemas) {
        BDINode &node = nodes.emplace_back(SchemaNode(schema.name));
        node.value =
            zelvar::Format(schema.tables == 1 ? "%lld table" : "%lld tables", static_cast<long long>(schema.tables));
        m_tables += schema.tables;
    }
    SortByName(nodes);
    return nodes;
}

std::vector<PostgresRelation> PostgresTree::TablesOf(DString const &schema) const {
    if (Clock::now() - m_aheadSince > kAheadHolds)
        m_ahead.clear();
    if (auto known = m_ahead.extract(schema)) // once: who asks again wants to know how it is now
        return std::move(known.mapped());
    bool const isSecond = m_entered.size() == 1 && !m_entered.contains(schema);
    m_entered.insert(schema);
    if (isSecond && m_tables <= kMostAhead) {
        auto all = m_catalogue.Tables({}, &m_error);
        if (!all)
            return {};
        for (PostgresRelation &table : *all)
            if (!m_entered.contains(table.schema) || table.schema == schema)
                m_ahead[table.schema].push_back(std::move(table));
        m_aheadSince = Clock::now();
        auto own = m_ahead.extract(schema);
        return own ? std::move(own.mapped()) : std::vector<PostgresRelation>();
    }
    return m_catalogue.Tables(schema, &m_error).value_or(std::vector<PostgresRelation>());
}

std::vector<BDINode> PostgresTree::ListTables(DString const &schema) const {
    std::vector<BDINode> nodes;
    for (PostgresRelation const &table : TablesOf(schema))
        std::ranges::move(NodesOf(table, Overviews::LeftOut), std::back_inserter(nodes));
    SortByName(nodes);
    return nodes;
}

/// A raster is a node for each of its columns; overviews belong to what they are of. What else a table has is a layer
/// if there are places in it, whose attributes are a table. A table of rasters alone is no table besides.
std::vector<BDINode> PostgresTree::NodesOf(PostgresRelation const &table, Overviews overviews) const {
    std::vector<BDINode> nodes;
    DatabaseAddress place = m_address;
    place.schema = table.schema;
    place.table = table.name;
    auto const rasters = std::ranges::count(table.spatial, true, &PostgresRelation::Column::isRaster);
    for (PostgresRelation::Column const &column : table.spatial) {
        if (!column.isRaster || (column.isOverview && overviews == Overviews::LeftOut))
            continue;
        place.column = column.name;
        DString const name = rasters == 1 ? table.name : table.name + " (" + column.name + ")";
        nodes.push_back(MakeNode(BDINode_Raster, place.ToText(), name));
        bool const isReadable =
            std::ranges::all_of(std::array{table.schema, table.name, column.name}, &IsReadableRasterName);
        nodes.back().value = isReadable ? "raster" : kUnreadable;
    }
    place.column.clear();
    bool const isLayer = table.HasGeometry();
    if (isLayer || (m_withPlainTables && !table.HasRaster())) {
        nodes.push_back(
            MakeNode(isLayer ? BDINode_Thematic | BDINode_Table : BDINode_Table, place.ToText(), table.name));
        nodes.back().value = DetailsOf(table);
    }
    return nodes;
}

std::optional<BDINode> PostgresTree::Find(DString const &path) const {
    if (auto const at = m_found.find(path); at != m_found.end())
        return at->second;
    auto const place = DatabaseAddress::In({.id = m_address.connection}, path, nullptr);
    if (!place || place->schema.empty())
        return std::nullopt;
    if (place->table.empty())
        return SchemaNode(place->schema);
    auto const table = m_catalogue.Table(place->schema, place->table, nullptr);
    if (!table)
        return std::nullopt;
    std::vector<BDINode> const nodes = NodesOf(*table, Overviews::Too);
    auto const named = std::ranges::find(nodes, place->ToText(), &BDINode::path);
    return named == nodes.end() ? std::nullopt : std::optional(*named);
}

} // namespace zelvar::gdal
