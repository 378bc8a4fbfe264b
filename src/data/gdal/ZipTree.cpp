#include "zelvar/data/gdal/ZipTree.h"

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/data/gdal/ContainerProbe.h"

#include <cpl_vsi.h>

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvar::gdal {

namespace {

constexpr int kMostEntries = 1'000'000;
constexpr std::string_view kExtension = ".zip";

/// GDAL finds the archive's end in the name by its extension; where that is not plain, braces mark it.
DString ArchiveName(DString const &name) {
    bool const plain = name.size() > kExtension.size() && EqualNoCase(ExtensionOf(name), kExtension.substr(1)) &&
                       FoldCase(name).find(FoldCase(kExtension)) == name.size() - kExtension.size();
    return plain ? "/vsizip/" + name : "/vsizip/{" + name + "}";
}

bool HasZipMagic(DString const &path) {
    FileDescriptor const file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    std::array<char, 4> head{};
    return file.IsOpen() && pread(file.Get(), head.data(), head.size(), 0) == static_cast<ssize_t>(head.size()) &&
           std::string_view(head.data(), head.size()) == "PK\x03\x04";
}

/// Names that climb out of the archive or cannot be named again are left out.
bool IsPlainName(std::string_view name) {
    if (name.empty() || name.front() == '/')
        return false;
    auto const parts = Split(name, '/');
    return std::none_of(parts.begin(), parts.end(),
                        [](DString const &part) { return part == ".." || part == "." || part.empty(); });
}

} // namespace

std::unique_ptr<ZipTree> ZipTree::Open(Source const &source) {
    if (source.reach == Reach::Local && (source.name != source.diskPath || !HasZipMagic(source.diskPath)))
        return nullptr;
    GdalScope const scope(source.reach);
    std::unique_ptr<ZipTree> tree(new ZipTree);
    tree->m_prefix = ArchiveName(source.name);
    std::unique_ptr<VSIDIR, void (*)(VSIDIR *)> const directory(VSIOpenDir(tree->m_prefix.c_str(), -1, nullptr),
                                                                &VSICloseDir);
    if (directory == nullptr)
        return nullptr;
    tree->m_root = MakeNode(BDINode_Container, source.text, RootName(source));
    int count = 0;
    while (VSIDIREntry const *entry = VSIGetNextDirEntry(directory.get())) {
        if (++count > kMostEntries)
            return nullptr;
        DString name = entry->pszName == nullptr ? "" : entry->pszName;
        while (name.ends_with('/'))
            name.pop_back();
        if (IsPlainName(name))
            tree->Add(name, VSI_ISDIR(entry->nMode) != 0);
    }
    return count == 0 ? nullptr : std::move(tree);
}

void ZipTree::Add(DString const &name, bool isFolder) {
    std::uint32_t const type = isFolder ? kDirectoryNode : Formats::Instance().TypeOf(name);
    // An archive inside the archive would be unpacked to be read.
    if (type == 0 || type == BDINode_Container)
        return;
    m_holdsData = m_holdsData || !isFolder;
    DString const inside(ParentPathOf(name));
    DString const parent = inside.empty() ? m_root.path : NodePath(m_root.path, m_prefix + "/" + inside);
    BDINode node = MakeNode(type, NodePath(m_root.path, m_prefix + "/" + name), DString(FileNameOf(name)));
    if (m_nodes.emplace(node.path, node).second)
        m_children[parent].push_back(std::move(node));
}

std::optional<BDINode> ZipTree::Find(DString const &path) const {
    auto const at = m_nodes.find(path);
    return at == m_nodes.end() ? m_inner.Find(path) : std::optional(at->second);
}

std::vector<BDINode> ZipTree::Children(BDINode const &parent) const {
    auto const at = m_children.find(parent.path);
    if (at != m_children.end())
        return at->second;
    bool const isFile = parent.path != m_root.path && (parent.type & BDINode_Directory) == 0;
    return isFile && (parent.type & BDINode_Container) != 0 ? m_inner.Of(parent) : std::vector<BDINode>();
}

bool ZipDriver::CanReadPath(DString const &path) const {
    return AskOnce(path, "ZIP", [](DString const &asked) {
        auto const source = Resolve({asked, nullptr}, nullptr);
        auto const tree = source ? ZipTree::Open(*source) : nullptr;
        return tree != nullptr && tree->HoldsData();
    });
}

std::unique_ptr<Tree> ZipDriver::OpenTree(DString const &url, DString const &, DError &) const {
    BDIMoniker const moniker(url, nullptr);
    if (moniker.IsUrl() && !EqualNoCase(ExtensionOf(moniker.GetSource()), "zip"))
        return nullptr;
    auto const source = Resolve(moniker, nullptr);
    return source ? ZipTree::Open(*source) : nullptr;
}

} // namespace zelvar::gdal
