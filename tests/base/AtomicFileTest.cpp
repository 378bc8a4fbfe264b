#include "zelvar/base/AtomicFile.h"

#include "support/Test.h"

#include <filesystem>

#include <sys/stat.h>
#include <sys/wait.h>

namespace zelvar {
namespace {

std::size_t FilesIn(test::TempFolder const &folder) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder.Path()), {}));
}

TEST(AtomicFile, PiecesOfAnySizeComeInTheirOrder) {
    test::TempFolder const folder;
    DString const path = folder.Write("a", "former");
    std::ignore = chown(path.c_str(), 1, 2); // by the superuser alone
    AtomicFile file(path);
    DString expected;
    for (std::size_t const size : {1U, 300'000U, 0U, 200'000U, 100'000U, 262'144U, 7U}) {
        DString const piece(size, static_cast<char>('a' + expected.size() % 26));
        file.Write(piece);
        expected += piece;
    }
    EXPECT_TRUE(file.Flush());
    EXPECT_EQ(test::ReadFile(path), "former");
    EXPECT_TRUE(file.Commit());
    EXPECT_EQ(test::ReadFile(path), expected);
    EXPECT_FALSE(file.Commit());
    EXPECT_EQ(test::ReadFile(path), expected);
    EXPECT_EQ(FilesIn(folder), 1U);
    struct stat written {};
    EXPECT_EQ(stat(path.c_str(), &written), 0);
    EXPECT_TRUE(geteuid() != 0 || (written.st_uid == 1 && written.st_gid == 2)) << "it stays their file";
}

TEST(AtomicFile, OneThatIsAbandonedLeavesNoTrace) {
    test::TempFolder const folder;
    {
        AtomicFile file(folder / "a");
        file.Write("x");
        EXPECT_TRUE(file.Flush());
        EXPECT_EQ(FilesIn(folder), 1U);
        AtomicFile const other(folder / "b");
        if (pid_t const child = fork(); child == 0) { // which leaves what is its parent's
            file.~AtomicFile();
            _exit(0);
        } else {
            EXPECT_EQ(waitpid(child, nullptr, 0), child);
        }
        EXPECT_EQ(FilesIn(folder), 2U);
    }
    EXPECT_EQ(FilesIn(folder), 0U);
    for (DString const &nowhere : {folder / "no/a", folder.Path(), DString()}) {
        AtomicFile file(nowhere);
        file.Write("x");
        EXPECT_FALSE(file.IsGood());
        EXPECT_FALSE(file.Flush());
        EXPECT_FALSE(file.Commit());
    }
}

} // namespace
} // namespace zelvar
