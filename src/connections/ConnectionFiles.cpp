#include "zelvar/connections/ConnectionFiles.h"

#include "zelvar/base/Directories.h"
#include "zelvar/connections/ConnectionFields.h"
#include "zelvar/connections/FilledWords.h"
#include "zelvar/model/DataSourceDefinitions.h"
#include "zelvar/model/DefinitionsLock.h"

#include <algorithm>
#include <array>
#include <set>

namespace zelvar {

namespace {

constexpr char const *kBusy = Mark("The definitions cannot be written, or another program is changing them.");
constexpr char const *kDamaged = Mark("%s cannot be read: nothing is written while that is so.");
constexpr char const *kNotWritten = Mark("%s cannot be written.");
constexpr char const *kMissing = Mark("There is no connection called %s.");
constexpr char const *kThere = Mark("There is a connection called %s already.");
constexpr char const *kNoHost = Mark("Hosts that are allowed are names or addresses.");
constexpr char const *kNoDefinitions = Mark("%s holds no connections.");
constexpr char const *kNoAddress = Mark("The connection %s has no address.");
constexpr char const *kHoldsPassword = Mark("The address of %s holds a password: it is not exported.");
constexpr char kDefinition[] = "DataSource";

ConnectionChange Refused(DString words) { return {.isDone = false, .words = std::move(words), .names = {}}; }
ConnectionChange Refused(char const *words) { return Refused(DString(Translated(words))); }
ConnectionChange Refused(char const *words, DString const &what) { return Refused(FilledWords(words, what)); }

bool IsNamed(XMLNode const &node, DString const &name) {
    return node.GetName() == kDefinition && node.GetAttrStr("name") == name;
}

/// The definitions while nobody else changes them.
class Definitions {
public:
    Definitions() {
        if (!m_lock.IsHeld())
            return;
        m_definitions.Load();
        DString const main = DFile(AppendPath(GetDataSourceDefinitionsDir(), "connections.xml")).GetAbsolutePath();
        m_damaged = m_definitions.GetNumFiles() == 0 || m_definitions.GetFile(0).file.GetAbsolutePath() != main
                        ? main
                        : DString();
    }

    /// Why nothing can be changed; empty if it can.
    [[nodiscard]] DString Against() const {
        if (!m_lock.IsHeld())
            return Translated(kBusy);
        return m_damaged.empty() ? DString() : Format(Translated(kDamaged), m_damaged.c_str());
    }
    [[nodiscard]] XMLNode *Find(DString const &name) const {
        return m_definitions.Find(name) ? m_definitions.Get(name) : nullptr;
    }
    void Add(std::unique_ptr<XMLNode> node) {
        m_definitions.GetFile(0).root->AddChld(std::move(node));
        m_definitions.GetFile(0).m_modified = true;
        m_definitions.Rebuild();
    }
    /// To be called once the node has been changed.
    void Touch(XMLNode const &node) {
        for (std::size_t i = 0; i < m_definitions.GetNumFiles(); ++i)
            if (auto &record = m_definitions.GetFile(static_cast<int>(i)); record.root.get() == node.GetParent())
                record.m_modified = true;
        m_definitions.Rebuild();
    }
    /// Puts a definition where one of that name is.
    void Replace(XMLNode &former, std::unique_ptr<XMLNode> node) {
        XMLNode &root = *former.GetParent();
        root.DelChld(&former);
        Touch(*root.AddChld(std::move(node)));
    }
    void Remove(DString const &name) {
        for (std::size_t i = 0; i < m_definitions.GetNumFiles(); ++i) {
            auto &record = m_definitions.GetFile(static_cast<int>(i));
            for (XMLNode::ChldItr child(*record.root); child.IsValid();)
                if (IsNamed(*child.Get(), name)) {
                    child.Rmv();
                    record.m_modified = true;
                } else {
                    child.Next();
                }
        }
        m_definitions.Rebuild();
    }
    /// "Field (2)".
    [[nodiscard]] DString FreeName(DString const &name) const {
        DString free = name;
        for (int number = 2; m_definitions.Find(free); ++number)
            free = Format("%s (%d)", name.c_str(), number);
        return free;
    }
    [[nodiscard]] ConnectionChange Write(std::vector<DString> names) {
        for (std::size_t i = 0; i < m_definitions.GetNumFiles(); ++i) {
            auto const &record = m_definitions.GetFile(static_cast<int>(i));
            if (record.m_modified && !record.root->Save(&record.file, false))
                return Refused(kNotWritten, record.file.GetAbsolutePath());
        }
        return {.isDone = true, .words = {}, .names = std::move(names)};
    }

private:
    DefinitionsLock m_lock;
    DataSourceDefinitions m_definitions;
    DString m_damaged;
};

/// Changes a definition, which is called `newName` then.
template <class Work>
ConnectionChange Change(DString const &name, DString const &newName, Work const &work) {
    Definitions definitions;
    if (DString const against = definitions.Against(); !against.empty())
        return Refused(against);
    XMLNode *const node = definitions.Find(name);
    if (node == nullptr)
        return Refused(kMissing, name);
    if (newName != name && definitions.Find(newName) != nullptr)
        return Refused(kThere, newName);
    work(*node);
    definitions.Touch(*node);
    return definitions.Write({newName});
}

DString FaultsInWords(Connection const &connection) {
    DString words;
    for (ConnectionFault const &fault : FaultsOf(connection))
        words.append(words.empty() ? "" : " ").append(fault.words);
    return words;
}

/// Attributes of others that may be secrets.
void DropSecretAttributes(XMLNode &node) {
    static constexpr std::array kNames{"password", "passwd",       "pwd",          "secret_key",
                                       "token",    "access_token", "session_token"};
    for (char const *name : kNames)
        if (node.HasAttr(name))
            node.SetAttr(name, "");
}

/// Whether the address names a password in words: of the kinds that we make, none does.
bool SpellsPassword(XMLNode const &definition) {
    DString const url = DataSourceRepository::GetURLFromNode(&definition);
    for (std::size_t at = 0; at < url.size(); ++at)
        for (std::string_view const key : {"password=", "passwd=", "pwd="})
            if (std::string_view const rest = std::string_view(url).substr(at); StartsWithNoCase(rest, key))
                if (rest.size() > key.size() && DString(" &;").find(rest[key.size()]) == DString::npos)
                    return true;
    return false;
}

/// A copy without secrets; null for one that would hold one all the same.
std::unique_ptr<XMLNode> ExportedOf(XMLNode const &definition) {
    std::unique_ptr<XMLNode> copy = definition.Copy();
    std::optional<Connection> connection = Connection::FromNode(definition);
    if (connection && connection->secret == SecretPlace::Definition) {
        connection->secret = SecretPlace::Ask;
        connection->WriteTo(*copy);
    }
    DropSecretAttributes(*copy);
    if (XMLNode *const part = copy->GetChldNode("Connection"))
        DropSecretAttributes(*part);
    return SpellsPassword(*copy) ? nullptr : std::move(copy);
}

/// What a file to import holds: definitions with a name and an address.
ConnectionChange ReadImport(DString const &file, std::vector<std::unique_ptr<XMLNode>> &nodes) {
    XMLNode root;
    DString reason;
    if (!root.Load(DFile(file), &reason))
        return Refused(reason);
    for (XMLNode const *node = root.GetFirstChild(); node != nullptr; node = node->GetNext()) {
        if (node->GetName() != kDefinition || node->GetAttrStr("name").empty())
            continue;
        if (!Connection::FromNode(*node))
            return Refused(kNoAddress, node->GetAttrStr("name"));
        nodes.push_back(node->Copy());
    }
    return nodes.empty() ? Refused(kNoDefinitions, file) : ConnectionChange{.isDone = true, .words = {}, .names = {}};
}

} // namespace

ConnectionChange SaveConnection(Connection const &connection, IfThere ifThere) {
    if (DString words = FaultsInWords(connection); !words.empty())
        return Refused(std::move(words));
    Definitions definitions;
    if (DString const against = definitions.Against(); !against.empty())
        return Refused(against);
    Connection named = connection;
    XMLNode *const there = definitions.Find(connection.name);
    if (there != nullptr && ifThere == IfThere::Refuse)
        return Refused(kThere, connection.name);
    if (there != nullptr && ifThere == IfThere::Skip)
        return {.isDone = true, .words = {}, .names = {}};
    if (there != nullptr && ifThere == IfThere::Replace) {
        definitions.Replace(*there, named.ToNode());
        return definitions.Write({named.name});
    }
    named.name = definitions.FreeName(connection.name);
    definitions.Add(named.ToNode());
    return definitions.Write({named.name});
}

ConnectionChange EditConnection(DString const &name, Connection const &connection) {
    if (DString words = FaultsInWords(connection); !words.empty())
        return Refused(std::move(words));
    return Change(name, connection.name, [&](XMLNode &node) { connection.WriteTo(node); });
}

ConnectionChange RenameConnection(DString const &name, DString const &newName) {
    Connection const named{.name = newName};
    for (ConnectionFault const &fault : FaultsOf(named))
        if (fault.field == "name")
            return Refused(fault.words);
    return Change(name, newName, [&](XMLNode &node) { node.SetAttr("name", newName); });
}

ConnectionChange AllowHost(DString const &name, HostAndPort const &host) {
    if (!IsHostName(host.host))
        return Refused(kNoHost);
    return Change(name, name, [&](XMLNode &node) {
        std::optional<Connection> connection = Connection::FromNode(node);
        if (!connection ||
            std::find(connection->allow.begin(), connection->allow.end(), host) != connection->allow.end())
            return;
        connection->allow.push_back(host);
        connection->WriteTo(node);
    });
}

ConnectionChange DuplicateConnection(DString const &name) {
    Definitions definitions;
    if (DString const against = definitions.Against(); !against.empty())
        return Refused(against);
    XMLNode const *const node = definitions.Find(name);
    if (node == nullptr)
        return Refused(kMissing, name);
    std::unique_ptr<XMLNode> copy = node->Copy();
    DString const free = definitions.FreeName(name);
    copy->SetAttr("name", free);
    definitions.Add(std::move(copy));
    return definitions.Write({free});
}

ConnectionChange RemoveConnection(DString const &name) {
    Definitions definitions;
    if (DString const against = definitions.Against(); !against.empty())
        return Refused(against);
    if (definitions.Find(name) == nullptr)
        return Refused(kMissing, name);
    definitions.Remove(name);
    return definitions.Write({name});
}

ConnectionChange ExportConnections(std::vector<DString> const &names, DString const &file) {
    DataSourceDefinitions definitions;
    definitions.Load();
    XMLNode root("DataSources");
    for (DString const &name : names) {
        if (!definitions.Find(name))
            return Refused(kMissing, name);
        std::unique_ptr<XMLNode> copy = ExportedOf(*definitions.Get(name));
        if (copy == nullptr)
            return Refused(kHoldsPassword, name);
        root.AddChld(std::move(copy));
    }
    DString const text = root.SaveText();
    if (text.empty() || !DFile(file).WriteAtomically(text))
        return Refused(kNotWritten, file);
    return {.isDone = true, .words = {}, .names = names};
}

ConnectionChange ConflictsOfImport(DString const &file) {
    std::vector<std::unique_ptr<XMLNode>> nodes;
    ConnectionChange read = ReadImport(file, nodes);
    if (!read.isDone)
        return read;
    DataSourceDefinitions definitions;
    definitions.Load();
    for (std::unique_ptr<XMLNode> const &node : nodes)
        if (DString const name = node->GetAttrStr("name"); definitions.Find(name))
            read.names.push_back(name);
    return read;
}

ConnectionChange ImportConnections(DString const &file, IfThere ifThere) {
    std::vector<std::unique_ptr<XMLNode>> nodes;
    if (ConnectionChange read = ReadImport(file, nodes); !read.isDone)
        return read;
    Definitions definitions;
    if (DString const against = definitions.Against(); !against.empty())
        return Refused(against);
    std::vector<DString> names;
    for (std::unique_ptr<XMLNode> &node : nodes) {
        DString const name = node->GetAttrStr("name");
        // Two of one name in the file are two connections, whatever is to become of those that were there.
        bool const isFromFile = std::find(names.begin(), names.end(), name) != names.end();
        XMLNode *const there = definitions.Find(name);
        if (there != nullptr && ifThere == IfThere::Refuse)
            return Refused(kThere, name);
        if (there != nullptr && ifThere == IfThere::Skip)
            continue;
        if (there != nullptr && ifThere == IfThere::Replace && !isFromFile) {
            names.push_back(name);
            definitions.Replace(*there, std::move(node));
            continue;
        }
        names.push_back(definitions.FreeName(name));
        if (names.back() != name)
            node->SetAttr("name", names.back());
        definitions.Add(std::move(node));
    }
    return definitions.Write(std::move(names));
}

} // namespace zelvar
