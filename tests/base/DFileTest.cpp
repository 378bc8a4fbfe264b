#include "zelvar/base/DFile.h"

#include "support/Processes.h"
#include "zelvar/base/DFileFind.h"
#include "zelvar/base/DFileFrmt.h"

#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

namespace zelvar {
namespace {

std::vector<DString> NamesOf(DFileFind const &find) {
    std::vector<DString> names;
    for (DFile const &file : find.GetFiles())
        names.push_back(file.GetName());
    return names;
}

TEST(DFile, GivesPathsWithoutDots) {
    EXPECT_EQ(DFile("/a/./b//../c/").GetAbsolutePath(), "/a/c");
    EXPECT_EQ(DFile("/../..").GetAbsolutePath(), "/");
    test::TempFolder const folder;
    std::filesystem::create_directory_symlink(folder.Folder("far/off"), folder / "out");
    EXPECT_EQ(DFile(folder / "out/../defs").GetAbsolutePath(), folder / "far/defs") << "as the system goes";
    EXPECT_EQ(DFile(folder / "out/x/../defs").GetAbsolutePath(), folder / "out/defs");
    EXPECT_EQ(DFile("").GetAbsolutePath(), "");
    EXPECT_EQ(DFile("s3://bucket/../x").GetAbsolutePath(), "s3://bucket/../x");
    EXPECT_EQ(DFile("x").GetAbsolutePath(), std::filesystem::current_path().string() + "/x");
    EXPECT_EQ(DFile(static_cast<char const *>(nullptr)).GetAbsolutePath(), "");
}

TEST(DFile, ReadsRegularFilesWithinTheLimit) {
    test::TempFolder const folder;
    DString const path = folder.Write("a\xFF", "12345");
    DString bytes = "old";
    EXPECT_TRUE(DFile(path).ReadAll(bytes, 5));
    EXPECT_EQ(bytes, "12345");
    EXPECT_FALSE(DFile(path).ReadAll(bytes, 4));
    EXPECT_FALSE(DFile(folder.Path()).ReadAll(bytes));
    DString const pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(DFile(pipe).ReadAll(bytes)); // and does not wait for a writer
    EXPECT_TRUE(DFile("/proc/self/status").ReadAll(bytes));
    EXPECT_FALSE(bytes.empty());
}

TEST(DFile, WritingKeepsModeAndLinkAndLeavesNothingBeside) {
    test::TempFolder const folder;
    DString const path = folder.Write("real", "old");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    DString const link = folder / "link";
    ASSERT_EQ(symlink("real", link.c_str()), 0);
    EXPECT_TRUE(DFile(link).WriteAtomically("new"));
    EXPECT_EQ(test::ReadFile(path), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(std::filesystem::status(path).permissions(), static_cast<std::filesystem::perms>(0640));
    EXPECT_EQ(NamesOf(DFileFind(folder.Path(), "*", true, true, false, true, 0)),
              (std::vector<DString>{"link", "real"}));
}

TEST(DFile, AFullDiskLeavesTheFormerFileWhole) {
    test::TempFolder const folder;
    DString const path = folder.Write("file", "former");
    bool const written = [&] {
        test::FullDisk const full(1000);
        return DFile(path).WriteAtomically(DString(5000, 'x'));
    }();
    EXPECT_FALSE(written);
    EXPECT_EQ(test::ReadFile(path), "former");
    EXPECT_EQ(DFileFind(folder.Path(), "*", true, true, false, true, 0).GetFiles().size(), 1U);
    EXPECT_FALSE(DFile(folder / "missing/file").WriteAtomically("x"));
    EXPECT_FALSE(DFile(folder.Path()).WriteAtomically("x"));
}

TEST(DFile, IsTakenApartAndPutTogetherAsText) {
    DFile file("/a/b c/d.tar.gz");
    EXPECT_EQ(file.GetPhysFilePath(), "/a/b c/");
    EXPECT_EQ(file.GetPhysFileName(), "d.tar.gz");
    EXPECT_EQ(file.GetPhysFileExtn(), "gz");
    file.ChngDir("/e");
    EXPECT_EQ(file.GetMoniker(), "/e/d.tar.gz");
    EXPECT_EQ(DFile("/a/").GetPhysFilePath(), "/a/");
    EXPECT_EQ(DFile("/a/").GetPhysFileName(), "");
    EXPECT_EQ(DFile(".").GetPhysFilePath(), "");
    EXPECT_EQ(DFile("").GetPhysFilePath(), "");
    EXPECT_EQ(StripExtn("/a/b.tif"), "*.tif");
    EXPECT_EQ(StripExtn("/a.d/b"), "");
    EXPECT_EQ(StripExtn(""), "");
}

TEST(DFileFrmt, AddsToAFilterAllOrNothing) {
    DFileFrmt const format("T", "A|B", "*.t");
    std::array<char, 16> buffer{};
    buffer.fill('x');
    buffer[0] = '\0';
    EXPECT_TRUE(format.GetFilter(buffer.data(), 9)); // eight bytes and the zero
    EXPECT_STREQ(buffer.data(), "A B|*.t|");
    EXPECT_EQ(buffer[9], 'x');
    EXPECT_FALSE(format.GetFilter(buffer.data(), 16));
    EXPECT_STREQ(buffer.data(), "A B|*.t|");
    EXPECT_EQ(DFileFrmt(nullptr, nullptr, nullptr).GetID(), "");
}

TEST(DFileFind, FindsByMaskInByteOrder) {
    test::TempFolder const folder;
    for (char const *name : {"b.xml", "a.XML", "\xFF.xml", ".hidden.xml", "c.txt", "sub/d.xml"})
        folder.Write(name);
    DString const loop = folder / "sub/loop";
    ASSERT_EQ(symlink("..", loop.c_str()) + symlink("sub", (folder / "sl").c_str()), 0);
    auto const find = [&](bool directories, bool recursive, bool hidden, int limit) {
        return NamesOf(DFileFind(folder.Path(), "*.xml;s*", true, directories, recursive, hidden, limit));
    };
    EXPECT_EQ(find(false, false, false, 0), (std::vector<DString>{"a.XML", "b.xml", "\xFF.xml"}));
    EXPECT_EQ(find(false, false, true, 0).front(), ".hidden.xml");
    EXPECT_EQ(find(true, true, false, 0), (std::vector<DString>{"a.XML", "b.xml", "sl", "sub", "d.xml", "\xFF.xml"}));
    EXPECT_EQ(find(true, true, false, 2).size(), 2U);
    EXPECT_TRUE(NamesOf(DFileFind(folder / "none", "*", true, true, true, true, 0)).empty());
}

} // namespace
} // namespace zelvar
