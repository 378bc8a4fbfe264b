#include "zelvar/settings/ZelRegistry.h"

#include "zelvar/settings/RegistryText.h"
#include "zelvar/xml/XMLNode.h"

#include <algorithm>
#include <charconv>
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

/// The bytes of an element of a value, if it says what it must.
std::optional<std::size_t> SizeOfValueElement(XMLNode const &node) {
    // A snapshot has many: no attribute is looked for twice.
    DString const typeText = node.GetAttrStr(kType);
    unsigned type = 0;
    bool const isTyped = std::from_chars(typeText.data(), typeText.data() + typeText.size(), type).ec == std::errc{} &&
                         std::to_string(type) == typeText;
    long long const size = isTyped ? node.GetAttrInt(kSize, -1) : -1;
    bool const isWhole = RegistryValueOf(type, size, size < 0 ? DString() : node.GetSafeText(), true).has_value();
    return isWhole ? std::optional(static_cast<std::size_t>(size)) : std::nullopt;
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
    std::optional<RegistryValue> const value =
        RegistryValueOf(node.GetAttrUnt(kType), node.GetAttrInt(kSize), node.GetSafeText(), false);
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
            else if (std::optional<std::size_t> const size = SizeOfValueElement(*child); !size)
                why = Format("the value '%s' under the key '%s' is not what its type and size say",
                             child->GetSafeAttr(kPath).c_str(), key.GetSafeAttr(kPath).c_str());
            else if (bytes += *size; bytes > kMostSnapshotBytes)
                why = "the values are larger than 256 MB together";
        }
    }
    if (reason != nullptr)
        *reason = why;
    return why.empty();
}

} // namespace zelvar
