#include "zelvar/model/DataSourceRepository.h"

#include "zelvar/base/Report.h"
#include "zelvar/base/TypedSecrets.h"

#include <algorithm>
#include <boost/tokenizer.hpp>
#include <map>
#include <tuple>

namespace zelvar {

namespace {

constexpr char const *kDefinition = "DataSource";

/// A later pair of the same key does not overwrite the earlier one.
std::map<DString, DString> ParsePairs(DString const &params) {
    std::map<DString, DString> pairs;
    for (DString const &token : boost::tokenizer(params, boost::char_separator<char>(";"))) {
        std::size_t const equals = token.find('=');
        if (equals != DString::npos)
            pairs.emplace(token.substr(0, equals), token.substr(equals + 1));
    }
    return pairs;
}

bool IsDefinition(XMLNode const &node) { return node.GetName() == kDefinition && !node.GetAttrStr("name").empty(); }

/// Deletes the first definition of that name. False if there is none.
bool RemoveFirst(XMLNode &root, DString const &name) {
    for (XMLNode::ChldItr child(root); child.IsValid(); child.Next())
        if (child.Get()->GetName() == kDefinition && child.Get()->GetAttrStr("name") == name) {
            child.Rmv();
            return true;
        }
    return false;
}

} // namespace

void DataSourceRepository::Clear() {
    Destroy();
    m_files.clear();
}

bool DataSourceRepository::LoadFromXMLFile(char const *path, bool createIfMissing) {
    if (path == nullptr)
        return false;
    FileRec record;
    record.file = DFile(path);
    if (record.file.Exist()) {
        record.root.reset(new XMLNode);
        if (!record.root->Load(record.file)) {
            Report::UserNotificationEnforced("Connections configuration can not be read (%s). Check it's validity.",
                                             record.file.GetAbsolutePath().c_str());
            return false;
        }
        m_files.push_back(record);
        ParseXML(record.root.get());
        return true;
    }
    if (createIfMissing) {
        record.root.reset(new XMLNode("DataSources"));
        record.m_modified = true;
        m_files.push_back(record);
    }
    return false;
}

int DataSourceRepository::ParseXML(XMLNode *root) {
    int taken = 0;
    for (XMLNode *node = root == nullptr ? nullptr : root->GetFirstChild(); node != nullptr; node = node->GetNext())
        if (IsDefinition(*node)) {
            Set(node->GetAttrStr("name"), node);
            ++taken;
        }
    return taken;
}

int DataSourceRepository::Rebuild() {
    Destroy();
    for (FileRec const &record : m_files)
        ParseXML(record.root.get());
    return 0;
}

/// The file in whose tree the node sits, or null.
DataSourceRepository::FileRec *DataSourceRepository::FileOf(XMLNode const &node) {
    XMLNode const *top = &node;
    while (top->GetParent() != nullptr)
        top = top->GetParent();
    auto const at =
        std::find_if(m_files.begin(), m_files.end(), [&](FileRec const &record) { return record.root.get() == top; });
    return at == m_files.end() ? nullptr : &*at;
}

bool DataSourceRepository::AddDataSource(int fileIndex, XMLNode *node) {
    if (fileIndex < 0 || static_cast<std::size_t>(fileIndex) >= m_files.size() || node == nullptr ||
        !IsDefinition(*node))
        return false;
    FileRec *const former = FileOf(*node);
    if (former != nullptr && former->root.get() == node)
        return false;
    // Out of its tree first: it may be one of those that it replaces.
    if (XMLNode *const parent = node->GetParent())
        std::ignore = parent->TakeChld(node).release();
    if (former != nullptr)
        former->m_modified = true;
    FileRec &record = m_files[static_cast<std::size_t>(fileIndex)];
    DString const name = node->GetAttrStr("name");
    constexpr int kMostDuplicates = 100;
    for (int pass = 0; pass < kMostDuplicates && RemoveFirst(*record.root, name); ++pass) {
    }
    record.root->AddChld(node);
    record.m_modified = true;
    Destroy();
    return true;
}

bool DataSourceRepository::RemoveAndDeleteDataSource(int fileIndex, XMLNode *node) {
    if (fileIndex < 0 || static_cast<std::size_t>(fileIndex) >= m_files.size() || node == nullptr ||
        node->GetParent() == nullptr)
        return false;
    m_files[static_cast<std::size_t>(fileIndex)].m_modified = true;
    if (FileRec *const file = FileOf(*node)) // which may be another one
        file->m_modified = true;
    node->GetParent()->DelChld(node);
    Destroy();
    return true;
}

DString DataSourceRepository::FindByUrl(DString const &url) const {
    DString const sought = TakeSecrets(url);
    if (!url.empty())
        for (auto const &[name, node] : *this)
            if (TakeSecrets(GetURLFromNode(node)) == sought)
                return name;
    return {};
}

DString DataSourceRepository::GetURLFromNode(XMLNode const *node) {
    XMLNode const *const parameters = node == nullptr ? nullptr : node->GetChldNode("Parameters");
    if (parameters == nullptr)
        return {};
    DString url = node->GetAttrStr("url");
    return ApplyParams(url, parameters->GetText()) ? url : DString();
}

bool DataSourceRepository::ApplyParams(DString &url, DString const &params) {
    std::map<DString, DString> const pairs = ParsePairs(params);
    // A value may hold placeholders itself. One that refers to itself would never end.
    constexpr int kMostSteps = 10'000;
    constexpr std::size_t kLongestUrl = 1U << 20U;
    std::size_t at = 0;
    for (int step = 0; step < kMostSteps && url.size() < kLongestUrl; ++step) {
        at = url.find("${", at);
        if (at == DString::npos)
            return true;
        std::size_t const end = url.find('}', at + 1);
        if (end == DString::npos)
            return false;
        auto const pair = pairs.find(url.substr(at + 2, end - at - 2));
        if (pair == pairs.end())
            return false;
        url.replace(at, end + 1 - at, pair->second);
    }
    return false;
}

} // namespace zelvar
