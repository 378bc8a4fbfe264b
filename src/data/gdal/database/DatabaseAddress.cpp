#include "zelvar/data/gdal/database/DatabaseAddress.h"

#include "zelvar/base/Percent.h"
#include "zelvar/data/ReaderDuty.h"

#include <algorithm>
#include <vector>

namespace zelvar::gdal {

namespace {

constexpr std::string_view kColumnOption = "COLUMN=";

/// The names of the path of an address, decoded.
std::vector<DString> NamesIn(std::string_view address) {
    std::size_t const scheme = address.find("://");
    address.remove_prefix(scheme == std::string_view::npos ? address.size() : scheme + 3);
    address = address.substr(0, address.find_first_of("?#"));
    std::size_t const slash = std::min(address.find('/'), address.size());
    std::vector<DString> names;
    for (DString const &name : Split(address.substr(slash), '/'))
        if (!name.empty())
            names.push_back(PercentDecoded(name));
    return names;
}

DString ColumnIn(std::string_view address) {
    std::size_t const question = address.find('?');
    if (question == std::string_view::npos)
        return {};
    for (DString const &option : Split(address.substr(question + 1), '&'))
        if (option.starts_with(kColumnOption))
            return PercentDecoded(std::string_view(option).substr(kColumnOption.size()));
    return {};
}

/// "." and ".." lead elsewhere wherever paths are tidied up.
DString Encoded(DString const &name) { return name == "." ? "%2E" : name == ".." ? "%2E%2E" : PercentEncoded(name); }

} // namespace

std::optional<DatabaseAddress> DatabaseAddress::In(ConnectionTerms const &terms, std::string_view address,
                                                   DError *error) {
    constexpr std::size_t kMostNames = 2; // a schema and a table
    std::vector<DString> const own = NamesIn(terms.id);
    std::vector<DString> const names = NamesIn(address);
    bool const lies = names.size() >= own.size() && std::equal(own.begin(), own.end(), names.begin());
    bool const hasZero =
        std::ranges::any_of(names, [](DString const &name) { return name.find('\0') != DString::npos; });
    if (!lies || hasZero || names.size() > own.size() + kMostNames) {
        if (error != nullptr)
            error->Set("\"" + DString(address) + "\" names nothing in \"" + terms.id + "\"", DError::Cause::Missing);
        return std::nullopt;
    }
    DatabaseAddress found{.connection = terms.id, .column = ColumnIn(address)};
    if (names.size() > own.size())
        found.schema = names[own.size()];
    if (names.size() > own.size() + 1)
        found.table = names[own.size() + 1];
    return found;
}

DString DatabaseAddress::ToText() const {
    DString text = connection;
    while (text.ends_with('/'))
        text.pop_back();
    for (DString const &name : {schema, table})
        if (!name.empty())
            text.append("/").append(Encoded(name));
    return column.empty() ? text : text.append("?").append(kColumnOption).append(PercentEncoded(column));
}

DString DatabaseAddress::Name() const {
    if (!table.empty())
        return table;
    std::vector<DString> const names = NamesIn(connection);
    return !schema.empty() ? schema : names.empty() ? connection : names.back();
}

ConnectionTerms const *OwnDatabase(ConnectionKind kind) {
    ReaderDuty const *const duty = OwnDuty();
    return duty != nullptr && duty->connection && duty->connection->kind == kind ? &*duty->connection : nullptr;
}

std::optional<DatabaseAddress> InOwnDatabase(ConnectionKind kind, std::string_view address, DError *error) {
    if (ConnectionTerms const *const terms = OwnDatabase(kind))
        return DatabaseAddress::In(*terms, address, error);
    if (error != nullptr && StartsWithNoCase(address, kind == ConnectionKind::Odbc ? "odbc:" : "postgresql"))
        error->Set("\"" + DString(address) + "\": databases are read by readers of their connections alone",
                   DError::Cause::NotSupported);
    return std::nullopt;
}

char const *DatabaseId(ConnectionKind kind) { return kind == ConnectionKind::Odbc ? "ODBC" : "PostgreSQL"; }

char const *DatabaseInfo(ConnectionKind kind) {
    return kind == ConnectionKind::Odbc ? "ODBC data source" : "PostgreSQL database";
}

std::set<DString> WantedSchemas(ConnectionTerms const *terms) {
    std::set<DString> wanted;
    auto const named = terms == nullptr ? std::map<DString, DString>::const_iterator() : terms->options.find("schemas");
    if (terms == nullptr || named == terms->options.end())
        return wanted;
    for (DString const &name : Split(named->second, ','))
        if (DString trimmed(Trimmed(name)); !trimmed.empty())
            wanted.insert(std::move(trimmed));
    return wanted;
}

} // namespace zelvar::gdal
