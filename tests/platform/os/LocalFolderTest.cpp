#include "support/Processes.h"
#include "zelvar/platform/os/LinuxShellNamespace.h"

#include <filesystem>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace zelvar::platform {
namespace {

using testing::Pair;

void SetModified(DString const &path, timespec time) {
    timespec const times[] = {time, time};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

struct LocalFolder : testing::Test {
    std::error_code Visit(ShellId const &folder, std::function<bool(ShellChild &&)> const &visit,
                          ShellNamespace::FileTest const &wanted = {}) const {
        return shell.Enumerate(folder, ShellNamespace::Purpose::Browse, visit, wanted);
    }
    /// Name and kind of the children; nothing if the folder cannot be read.
    [[nodiscard]] std::optional<std::map<DString, ShellKind>>
    Listed(DString const &path, ShellNamespace::FileTest const &wanted = {}) const {
        std::map<DString, ShellKind> children;
        auto const add = [&](ShellChild &&child) {
            children[child.name] = child.kind;
            EXPECT_EQ(shell.Path(child.id), path + "/" + child.name);
            return true;
        };
        return Visit(shell.Parse(path), add, wanted) ? std::nullopt : std::optional(children);
    }
    test::TempFolder temp;
    LinuxShellNamespace shell;
};

TEST_F(LocalFolder, ListsFilesWithSizeAndTimeAndFoldersWithout) {
    SetModified(temp.Write("a.tif", "12345"), {1'700'000'000, 250'000'000});
    temp.Folder("b");
    std::map<DString, ShellChild> children;
    EXPECT_FALSE(Visit(shell.Parse(temp.Path()), [&](ShellChild &&child) {
        children[child.name] = child;
        return true;
    }));
    ASSERT_THAT(children, ElementsAre(Pair("a.tif", testing::_), Pair("b", testing::_)));
    EXPECT_EQ(children["a.tif"].file.size, 5);
    EXPECT_EQ(children["a.tif"].file.modified, 1'700'000'000'250'000'000);
    EXPECT_EQ(children["b"].file.size, -1);
    EXPECT_EQ(children["b"].file.modified, 0);
}

TEST_F(LocalFolder, LeavesHiddenFilesOutAndKeepsAnyOtherName) {
    for (char const *name : {".hidden", "line\nfeed", "invalid \xFF\xFE utf-8", " blank ", "back\\slash"})
        temp.Write(name);
    EXPECT_THAT(Listed(temp.Path()).value(),
                ElementsAre(Pair(" blank ", ShellKind::File), Pair("back\\slash", ShellKind::File),
                            Pair("invalid \xFF\xFE utf-8", ShellKind::File), Pair("line\nfeed", ShellKind::File)));
}

TEST_F(LocalFolder, FollowsLinksAndLeavesOutThoseThatLeadNowhereOrInACircle) {
    temp.Write("file");
    temp.Folder("folder");
    std::filesystem::create_symlink("file", temp / "to file");
    std::filesystem::create_symlink("folder", temp / "to folder");
    std::filesystem::create_symlink("missing", temp / "broken");
    std::filesystem::create_symlink("circle b", temp / "circle a");
    std::filesystem::create_symlink("circle a", temp / "circle b");
    EXPECT_THAT(Listed(temp.Path()).value(),
                ElementsAre(Pair("file", ShellKind::File), Pair("folder", ShellKind::Directory),
                            Pair("to file", ShellKind::File), Pair("to folder", ShellKind::Directory)));
    EXPECT_TRUE(shell.Parse(temp / "broken").IsNull());
    EXPECT_TRUE(shell.Parse(temp / "circle a").IsNull());
    EXPECT_EQ(shell.IdentityOf(shell.Parse(temp / "to folder")), shell.IdentityOf(shell.Parse(temp / "folder")));
}

TEST_F(LocalFolder, DevicesPipesAndSocketsAreNoThingsAndAreNeverOpened) {
    ASSERT_EQ(mkfifo((temp / "pipe").c_str(), 0600), 0); // opening it would wait for a writer for ever
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    (temp / "socket").copy(address.sun_path, sizeof address.sun_path - 1);
    int const socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(socket, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    close(socket);
    std::filesystem::create_symlink("/dev/null", temp / "device");
    EXPECT_THAT(Listed(temp.Path()).value(), IsEmpty());
    for (DString const &path : {temp / "pipe", temp / "socket", temp / "device", DString("/dev/zero")})
        EXPECT_TRUE(shell.Parse(path).IsNull()) << path;
}

TEST_F(LocalFolder, RefusedFilesAreNotVisitedAndFoldersAlwaysAre) {
    temp.Write("a.tif");
    temp.Write("b.txt");
    temp.Folder("c.txt");
    std::filesystem::create_symlink("b.txt", temp / "link.txt");
    using Wish = ShellNamespace::Wish;
    auto const onlyTif = [](std::string_view name) { return name.ends_with(".tif") ? Wish::Yes : Wish::No; };
    EXPECT_THAT(Listed(temp.Path(), onlyTif).value(),
                ElementsAre(Pair("a.tif", ShellKind::File), Pair("c.txt", ShellKind::Directory)));
    int asked = 0;
    std::ignore = Listed(temp.Path(), [&](std::string_view) { return ++asked == 2 ? Wish::Stop : Wish::No; });
    EXPECT_EQ(asked, 2) << "who refuses every file can end it too";
}

TEST_F(LocalFolder, AFolderThatIsGoneOrIsNoneCannotBeRead) {
    DString const file = temp.Write("file");
    ShellId const folder = shell.Parse(temp.Folder("folder"));
    std::filesystem::remove(temp / "folder");
    auto const visit = [](ShellChild &&) { return true; };
    EXPECT_EQ(Visit(folder, visit), std::errc::no_such_file_or_directory);
    EXPECT_EQ(Visit(shell.Parse(file), visit), std::errc::not_a_directory);
    EXPECT_TRUE(shell.Parse(temp / "folder").IsNull());
    EXPECT_FALSE(shell.KindOf(folder).has_value());
}

TEST_F(LocalFolder, AFolderDeletedWhileItIsListedEndsTheListing) {
    constexpr int kFiles = 1000;
    for (int i = 0; i < kFiles; ++i) // more than one read of the folder
        temp.Write("folder/" + DString(200, 'x') + std::to_string(i));
    int visited = 0;
    EXPECT_FALSE(Visit(shell.Parse(temp / "folder"), [&](ShellChild &&) {
        if (++visited == 1)
            std::filesystem::remove_all(temp / "folder");
        return true;
    }));
    EXPECT_GE(visited, 1);
    EXPECT_LT(visited, kFiles); // those not looked at yet are gone
}

TEST_F(LocalFolder, ALargeFolderIsListedWholeAndInTheOrderOfItsEntries) {
    constexpr int kFiles = 5000; // a second thread takes part
    for (int i = 0; i < kFiles; ++i)
        temp.Write(std::to_string(i), DString(static_cast<std::size_t>(i % 7), 'x'));
    std::vector<DString> entries;
    for (auto const &entry : std::filesystem::directory_iterator(temp.Path()))
        entries.push_back(entry.path().filename());
    std::vector<DString> listed;
    EXPECT_FALSE(Visit(shell.Parse(temp.Path()), [&](ShellChild &&child) {
        EXPECT_EQ(child.file.size, std::stoi(child.name) % 7);
        listed.push_back(child.name);
        return true;
    }));
    EXPECT_EQ(listed, entries);
    int visited = 0;
    Visit(shell.Parse(temp.Path()), [&](ShellChild &&) { return ++visited < 4000; });
    EXPECT_EQ(visited, 4000);
}

/// The result of `body` as an ordinary user; root may read everything.
bool AsOrdinaryUser(std::function<bool()> const &body) {
    constexpr uid_t kNobody = 65534;
    return test::StatusOf(test::InChild([&] {
               bool const dropped = setgid(kNobody) == 0 && setuid(kNobody) == 0;
               return getuid() != 0 && (dropped || geteuid() != 0) && body() ? 0 : 1;
           })) == 0;
}

TEST_F(LocalFolder, AFolderWithoutPermissionCannotBeReadNorIsOneWholeWhoseFilesCannotBeLookedAt) {
    std::filesystem::permissions(temp.Path(), std::filesystem::perms(0755));
    DString const locked = temp.Folder("locked");
    DString const seen = temp.Folder("seen");
    temp.Write("seen/file");
    std::filesystem::create_symlink("/root/x", temp / "link");
    bool const isRoot = geteuid() == 0;
    std::filesystem::permissions(locked, std::filesystem::perms(isRoot ? 0700 : 0));
    std::filesystem::permissions(seen, std::filesystem::perms(isRoot ? 0744 : 0444));
    EXPECT_TRUE(AsOrdinaryUser(
        [&] { return !Listed(locked).has_value() && !Listed(seen).has_value() && Listed(temp.Path())->size() == 2; }));
    for (DString const &folder : {locked, seen})
        std::filesystem::permissions(folder, std::filesystem::perms(0700));
}

TEST_F(LocalFolder, AChainLeadsFromTheRootDriveDown) {
    ShellId const id = shell.Parse("/usr//share/../share/");
    EXPECT_EQ(shell.Path(id), "/usr/share");
    EXPECT_EQ(id.Parent().Kind(), ShellKind::Directory);
    EXPECT_EQ(id.Parent().Parent().Kind(), ShellKind::Fixed);
    EXPECT_EQ(shell.DisplayName(id.Parent().Parent()), "File System (/)");
    EXPECT_TRUE(id.Parent().Parent().Parent() == shell.Drives());
    EXPECT_TRUE(shell.Parse("").IsNull());
    EXPECT_TRUE(shell.Parse(DString("/usr\0/share", 11)).IsNull());
    EXPECT_TRUE(shell.Parse("http://localhost/x").IsNull());
}

TEST_F(LocalFolder, PathsLeadToWhatIsThereAndNoFurther) {
    temp.Write("file.tif", "1");
    temp.Folder("a b\n\xFF");
    std::map<DString, std::optional<ShellKind>> const places{{temp / "file.tif", ShellKind::File},
                                                             {temp / "./file.tif/", ShellKind::File},
                                                             {temp / "file.tif/inside", {}},
                                                             {temp / "FILE.TIF", {}},
                                                             {temp / "a b\n\xFF", ShellKind::Directory},
                                                             {temp / "a b\n\xFF/../file.tif", ShellKind::File},
                                                             {temp / DString(300, 'x'), {}},
                                                             {"/", ShellKind::Fixed},
                                                             {"/..", ShellKind::Fixed}};
    for (auto const &[path, kind] : places) {
        SCOPED_TRACE(path);
        ShellId const id = shell.Parse(path);
        EXPECT_EQ(id.IsNull(), !kind.has_value());
        if (kind) {
            EXPECT_EQ(id.Kind(), kind);
            EXPECT_EQ(shell.KindOf(id), kind);
            EXPECT_TRUE(shell.Parse(shell.Path(id)) == id);
        }
    }
}

TEST_F(LocalFolder, WhatAThingIsNowMayDifferFromWhatItWas) {
    ShellId const id = shell.Parse(temp.Write("x"));
    EXPECT_FALSE(shell.IdentityOf(id).has_value()); // no folder
    std::filesystem::remove(temp / "x");
    EXPECT_FALSE(shell.Times(id).has_value());
    temp.Folder("x");
    EXPECT_EQ(id.Kind(), ShellKind::File);
    EXPECT_EQ(shell.KindOf(id), ShellKind::Directory);
    EXPECT_EQ(shell.Times(id)->size, -1);
    EXPECT_EQ(shell.IdentityOf(id), shell.IdentityOf(shell.Parse(temp / "x")));
}

TEST_F(LocalFolder, TimesBeyondWhatNanosecondsHoldAreUnknown) {
    DString const path = temp.Write("future");
    SetModified(path, {8'999'999'999, 999'999'999}); // as late as it goes, in 2255
    EXPECT_EQ(shell.Times(shell.Parse(path))->modified, 8'999'999'999'999'999'999);
    SetModified(path, {10'000'000'000, 0});
    EXPECT_EQ(shell.Times(shell.Parse(path))->modified, 0);
    SetModified(path, {-1, 500'000'000});
    EXPECT_EQ(shell.Times(shell.Parse(path))->modified, -500'000'000);
    SetModified(path, {0, 0}); // 0 would be unknown
    EXPECT_EQ(shell.Times(shell.Parse(path))->modified, 1);
}

TEST_F(LocalFolder, TheVirtualPlacesHaveNamesAndNoPath) {
    std::vector<DString> names;
    EXPECT_FALSE(Visit(ShellId::Desktop(), [&](ShellChild &&child) {
        names.push_back(child.name);
        EXPECT_EQ(shell.Path(child.id), "");
        EXPECT_EQ(shell.KindOf(child.id), ShellKind::Virtual);
        EXPECT_FALSE(shell.Times(child.id).has_value());
        EXPECT_FALSE(shell.IdentityOf(child.id).has_value());
        EXPECT_FALSE(Visit(child.id, [](ShellChild &&) { return true; })) << "it can be listed";
        return true;
    }));
    EXPECT_THAT(names, ElementsAre("Computer", "Network"));
    EXPECT_EQ(shell.DisplayName(ShellId::Desktop()), "Desktop");
    EXPECT_EQ(shell.DisplayName(ShellId()), "");
    EXPECT_EQ(shell.Path(ShellId()), "");
    EXPECT_FALSE(shell.KindOf(ShellId()).has_value());
    EXPECT_TRUE(Visit(ShellId(), [](ShellChild &&) { return true; }));
}

} // namespace
} // namespace zelvar::platform
