#include "zelvar/settings/ZelRegistry.h"

#include "zelvar/settings/RegistryText.h"
#include "zelvar/xml/XMLNode.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

namespace zelvar {

namespace {

constexpr char kSeparator = '\\';
constexpr char kKeyElement[] = "RegKey";
constexpr char kValueElement[] = "RegValue";
constexpr char kPath[] = "path";
constexpr char kType[] = "type";
constexpr char kSize[] = "size";
constexpr int kDeepest = 1'100; // levels of keys; the stack holds them, and XML does not
constexpr std::size_t kMostSnapshotBytes = std::size_t{256} << 20U;

// As registries number them.
constexpr std::uint32_t kNotFound = 2;
constexpr std::uint32_t kAccessDenied = 5;
constexpr std::uint32_t kInvalidHandle = 6;

DString WithoutSeparators(DString path) {
    path.erase(path.find_last_not_of(kSeparator) + 1);
    return path;
}

std::optional<RegistryValue> ValueIn(XMLNode const &node, bool strict) {
    return RegistryValueOf(node.GetAttrUnt(kType), node.GetAttrInt(kSize), node.GetSafeText(), strict);
}

/// Whether an element of a value says what it must.
bool IsValueElement(XMLNode const &node) {
    bool const isTyped =
        node.HasAttr(kType) && DString(std::to_string(node.GetAttrUnt(kType))) == node.GetAttrStr(kType);
    return isTyped && node.HasAttr(kSize) && node.GetAttrInt(kSize, -1) >= 0 && ValueIn(node, true).has_value();
}

} // namespace

void ZelRegistry::SetRoot(DString const &root) { m_root = WithoutSeparators(root) + kSeparator; }

int ZelRegistry::ReadAny(char const *name, unsigned char **data, unsigned long *size) {
    *data = nullptr;
    *size = 0;
    std::optional<SettingsStore::Value> const stored =
        IsOpen() && name != nullptr ? Store().Read(GetPath(), name) : std::nullopt;
    if (!stored) {
        SetLastResult({.status = IsOpen() ? kNotFound : kInvalidHandle});
        return 0;
    }
    RegistryValue const value = ToRegistry(*stored);
    *size = value.data.size();
    if (*size > 0) {
        *data = new unsigned char[*size];
        std::ranges::copy(value.data, *data);
    }
    SetLastResult({.type = value.type, .size = static_cast<std::uint32_t>(*size)});
    return 1;
}

int ZelRegistry::WriteAny(char const *name, unsigned long type, unsigned char const *data, unsigned long size) {
    if (IsReadOnly() != 0)
        return 0;
    RegistryValue value{static_cast<std::uint32_t>(type), {}};
    if (data != nullptr)
        value.data.assign(data, data + size);
    return name != nullptr && Write(name, value) ? 1 : 0;
}

bool ZelRegistry::Write(DString const &name, RegistryValue const &value) {
    if (IsReadOnly() != 0)
        return false;
    bool const done = IsOpen() && Store().Write(GetPath(), name, ToStore(value));
    SetLastResult({.status = done       ? 0
                             : IsOpen() ? kAccessDenied
                                        : kInvalidHandle,
                   .type = value.type,
                   .size = static_cast<std::uint32_t>(value.data.size())});
    return done;
}

XMLNode *ZelRegistry::ToXMLNode() const {
    XMLNode *node = nullptr;
    Store().ReadTogether([&] { node = ToXMLNode(1); });
    return node;
}

XMLNode *ZelRegistry::ToXMLNode(int level) const {
    std::vector<DString> names;
    std::vector<DString> keys;
    if (!ReadKeyValues(names) || !ReadSubKeys(keys))
        return nullptr;
    auto node = std::make_unique<XMLNode>(kKeyElement);
    std::size_t const kept = std::min(GetPath().find_first_not_of(m_root), GetPath().size());
    node->SetSafeAttr(kPath, m_root.empty() ? GetPath() : GetPath().substr(kept));
    for (DString const &name : names) {
        std::optional<SettingsStore::Value> const stored = Store().Read(GetPath(), name);
        if (!stored)
            continue;
        RegistryValue const value = ToRegistry(*stored);
        XMLNode *const child = node->AddChld(kValueElement);
        child->SetSafeAttr(kPath, name);
        child->SetAttrInt(kType, value.type);
        child->SetAttrInt(kSize, static_cast<long long>(value.data.size()));
        child->SetSafeText(RegistryTextOf(value));
    }
    for (DString const &key : keys) {
        ZelRegistry below(Store(), IsAdmin(), IsReadOnly());
        below.m_root = m_root;
        if (level < kDeepest && below.Open((WithoutSeparators(GetPath()) + kSeparator + key).c_str()))
            node->AddChld(below.ToXMLNode(level + 1));
    }
    return node.release();
}

bool ZelRegistry::FromXMLNode(XMLNode *node) {
    if (node == nullptr || !CreateKey(WithoutSeparators(m_root + node->GetSafeAttr(kPath)).c_str()))
        return false;
    bool done = true;
    for (XMLNode *child = node->GetFirstChild(); child != nullptr; child = child->GetNext()) {
        if (EqualNoCase(child->GetName(), kKeyElement)) {
            ZelRegistry below(Store(), IsAdmin(), IsReadOnly());
            below.m_root = m_root;
            done = below.FromXMLNode(child) && done;
        } else if (EqualNoCase(child->GetName(), kValueElement)) {
            done = FromXMLValue(*child) && done;
        }
    }
    return done;
}

bool ZelRegistry::FromXMLValue(XMLNode const &node) {
    std::optional<RegistryValue> const value = ValueIn(node, false);
    return value && Write(node.GetSafeAttr(kPath), *value);
}

bool ZelRegistry::IsSnapshot(XMLNode const &node, DString *reason) {
    DString why;
    std::size_t bytes = 0;
    std::vector<XMLNode const *> open;
    if (EqualNoCase(node.GetName(), kKeyElement))
        open.push_back(&node);
    else
        why = Format("the root is no %s", kKeyElement);
    while (!open.empty() && why.empty()) {
        XMLNode const &key = *open.back();
        open.pop_back();
        for (XMLNode const *child = key.GetFirstChild(); child != nullptr && why.empty(); child = child->GetNext()) {
            if (EqualNoCase(child->GetName(), kKeyElement))
                open.push_back(child);
            else if (!EqualNoCase(child->GetName(), kValueElement))
                why = Format("there is a %s under the key '%s'", child->GetName().c_str(),
                             key.GetSafeAttr(kPath).c_str());
            else if (!IsValueElement(*child))
                why = Format("the value '%s' under the key '%s' is not what its type and size say",
                             child->GetSafeAttr(kPath).c_str(), key.GetSafeAttr(kPath).c_str());
            else if (bytes += static_cast<std::size_t>(child->GetAttrInt(kSize)); bytes > kMostSnapshotBytes)
                why = "the values are larger than 256 MB together";
        }
    }
    if (reason != nullptr)
        *reason = why;
    return why.empty();
}

} // namespace zelvar
