#include "zelvar/platform/os/LocalFolder.h"

#include "zelvar/platform/os/FolderSlice.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include <dirent.h>

namespace zelvar::platform {

namespace {

/// How many entries are looked at between two turns of the visitor.
class SliceSize {
public:
    [[nodiscard]] std::size_t Get() const { return m_size; }
    void Learn(std::chrono::steady_clock::duration taken) {
        constexpr std::chrono::milliseconds kFast{3};
        constexpr std::chrono::milliseconds kSlow{20};
        if (taken < kFast)
            m_size = std::min(m_size * 2, kLargest);
        else if (taken > kSlow)
            m_size = std::max<std::size_t>(m_size / 4, 1);
    }

private:
    static constexpr std::size_t kLargest = 1024;
    std::size_t m_size = 32;
};

/// Shows the children of a slice to the visitor; false if it has enough.
class SliceVisitor {
public:
    SliceVisitor(ShellId const &folder, ShellNamespace::Visitor const &visit, ShellNamespace::FileTest const &wanted)
        : m_folder(folder), m_visit(visit), m_wanted(wanted) {}

    bool Show(FolderSlice const &slice) {
        return std::all_of(slice.Entries().begin(), slice.Entries().end(), [&](FolderSlice::Entry const &entry) {
            return !entry.kind || ShowOne(slice.NameOf(entry), entry);
        });
    }

private:
    bool ShowOne(std::string_view name, FolderSlice::Entry const &entry) {
        // What a link leads to is known only now.
        if (entry.type != DT_REG && *entry.kind == ShellKind::File && m_wanted)
            if (ShellNamespace::Wish const wish = m_wanted(name); wish != ShellNamespace::Wish::Yes)
                return wish == ShellNamespace::Wish::No;
        m_child.id = m_folder.Child(name, *entry.kind);
        m_child.name.assign(name);
        m_child.kind = *entry.kind;
        m_child.link = entry.type == DT_LNK;
        m_child.file = entry.file;
        return m_visit(std::move(m_child));
    }

    ShellId const &m_folder;
    ShellNamespace::Visitor const &m_visit;
    ShellNamespace::FileTest const &m_wanted;
    ShellChild m_child; ///< one for all, so that its text keeps its memory
};

} // namespace

std::error_code EnumerateLocalFolder(DString const &path, ShellId const &folder, ShellNamespace::Visitor const &visit,
                                     ShellNamespace::FileTest const &wanted) {
    FolderReader reader(path);
    if (!reader.IsOpen())
        return reader.Error();
    std::array<FolderSlice, 2> slices;
    FolderSlice *shown = slices.data();     // looked at, on its way to the visitor
    FolderSlice *asked = slices.data() + 1; // behind it
    SliceVisitor visitor(folder, visit, wanted);
    SliceHelper helper(reader.Descriptor());
    SliceSize size;
    std::error_code lookError;
    for (std::size_t total = 0;;) {
        reader.Read(*asked, size.Get(), wanted);
        total += asked->Entries().size();
        auto const start = std::chrono::steady_clock::now();
        constexpr std::size_t kLargeFolder = 2000; // entries; for fewer a thread costs more than it saves
        bool const shared = total > kLargeFolder && !asked->IsEmpty();
        if (shared)
            helper.Begin(*asked);
        bool const more = visitor.Show(*shown) && !asked->IsEmpty();
        if (more)
            asked->LookAt(reader.Descriptor());
        if (shared)
            helper.Wait();
        if (std::error_code const error = asked->Error())
            lookError = error;
        if (!more)
            return reader.Error() ? reader.Error() : lookError;
        size.Learn(std::chrono::steady_clock::now() - start);
        std::swap(shown, asked);
    }
}

} // namespace zelvar::platform
