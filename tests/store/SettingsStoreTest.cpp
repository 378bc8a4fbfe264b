#include "zelvar/store/SettingsStore.h"

#include "support/Processes.h"
#include "support/Told.h"
#include "zelvar/base/DFile.h"
#include "zelvar/base/DFileFind.h"
#include "zelvar/base/Directories.h"
#include "zelvar/store/DCnfg.h"

#include <filesystem>
#include <random>
#include <thread>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zelvar {
namespace {

using test::FullDisk;
using test::InChild;
using test::StatusOf;

struct SettingsStoreTest : testing::Test {
    [[nodiscard]] std::size_t FilesNamed(char const *mask) const {
        return DFileFind(m_folder.Path(), mask, true, false, false, true, 0).GetFiles().size();
    }
    /// Overwrites the middle of the file, past its header, so that it still looks like a database.
    void Damage() const {
        DString bytes = test::ReadFile(m_file);
        ASSERT_GT(bytes.size(), 4096U);
        std::fill(bytes.begin() + 4000, bytes.end(), '\xA5');
        m_folder.Write("settings.db", bytes);
    }
    test::TempFolder m_folder;
    DString m_file = m_folder / "settings.db";
};

TEST_F(SettingsStoreTest, ValuesComeBackInTheirType) {
    SettingsStore::Value const values[] = {std::int64_t{std::numeric_limits<std::int64_t>::min()},
                                           -0.5,
                                           DString("text \xFF\0 behind", 14),
                                           DString(),
                                           std::vector<DString>{"", "b", DString(70'000, 'x')},
                                           std::vector<DString>{},
                                           SettingsStore::Bytes{0, 255},
                                           SettingsStore::Bytes{},
                                           SettingsStore::Typed{0xFFFFFFFF, {0, 1}},
                                           SettingsStore::Typed{2, {}}};
    SettingsStore store(m_file);
    for (auto const &value : values) {
        ASSERT_TRUE(store.Write("a\\b", "n\xC3", value));
        EXPECT_EQ(store.Read("\\a\\\\b\\", "n\xC3"), value);
        EXPECT_EQ(SettingsStore(m_file).Read("a\\b", "n\xC3"), value);
    }
    EXPECT_EQ(store.ReadInt("a\\b", "n\xC3", 7), 7); // bytes are no number
    EXPECT_EQ(store.Read("A\\b", "n\xC3"), std::nullopt);
}

TEST_F(SettingsStoreTest, WhatHasBeenReadHoldsUntilAnybodyWrites) {
    SettingsStore store(m_file);
    SettingsStore other(m_file);
    EXPECT_EQ(store.ReadInt("k", "v", -1), -1);
    for (std::int64_t const value : {1, 2, 3}) {
        ASSERT_TRUE((value % 2 == 0 ? store : other).Write("k", "v", value));
        for (int again = 0; again < 2; ++again)
            EXPECT_EQ(store.ReadInt("k", "v", -1), value);
    }
    auto const logged = [&, begin = std::filesystem::file_size(m_file + "-wal")](std::int64_t value) {
        EXPECT_TRUE(store.Write("k", "v", value));
        return std::filesystem::file_size(m_file + "-wal") - begin;
    };
    EXPECT_EQ(logged(3), 0U) << "it had that value";
    EXPECT_EQ(logged(4) + logged(3), 3 * (24U + 1024U)) << "a page of 1 KB a change";
    store.Transact([&] {
        store.Write("k", "v", std::int64_t{4});
        EXPECT_EQ(store.ReadInt("k", "v", -1), 4) << "what only this transaction sees";
        return false;
    });
    EXPECT_EQ(store.ReadInt("k", "v", -1), 3);
    pid_t const child =
        InChild([&] { return other.Write("k", "w", std::int64_t{5}) && other.Remove("k", "v") ? 0 : 1; });
    ASSERT_EQ(StatusOf(child), 0);
    EXPECT_EQ(store.ReadInt("k", "v", -1), -1);
    EXPECT_EQ(store.ReadInt("k", "w", -1), 5);
    for (char const *part : {"", "-wal", "-shm"})
        std::filesystem::remove(m_file + part);
    EXPECT_EQ(store.ReadInt("k", "w", -1), -1) << "another file";
}

TEST_F(SettingsStoreTest, KeysFormATree) {
    SettingsStore store(m_file);
    for (char const *key : {"p", "p\\a", "p\\a b", "p\\a\\x", "p\\a]", "p\\\xFF\xFF\xFF\xFF\xFF", "q\\r\\s", ""})
        ASSERT_TRUE(store.Write(key, "v", std::int64_t{1}));
    EXPECT_EQ(store.Children(""), (std::vector<DString>{"p", "q"}));
    EXPECT_EQ(store.Children("p"), (std::vector<DString>{"a", "a b", "a]", "\xFF\xFF\xFF\xFF\xFF"}));
    EXPECT_EQ(store.Children("q"), std::vector<DString>{"r"});
    EXPECT_TRUE(store.RemoveTree("p\\a"));
    EXPECT_EQ(store.Children("p"), (std::vector<DString>{"a b", "a]", "\xFF\xFF\xFF\xFF\xFF"}));
    EXPECT_FALSE(store.Read("p\\a\\x", "v"));
    EXPECT_TRUE(store.Remove("p", "v"));
    EXPECT_FALSE(store.Remove("p", "v"));
    EXPECT_TRUE(store.HasKey("p"));
    EXPECT_TRUE(store.CreateKey("new\\empty"));
    EXPECT_EQ(store.Children("new"), std::vector<DString>{"empty"});
    EXPECT_TRUE(store.RemoveTree(""));
    EXPECT_TRUE(store.Children("").empty());
    EXPECT_TRUE(store.Names("").empty());
}

TEST_F(SettingsStoreTest, ReadingMakesNoFile) {
    SettingsStore store(m_folder / "deep/settings.db");
    EXPECT_FALSE(store.Read("a", "b"));
    EXPECT_FALSE(store.Remove("a", "b"));
    EXPECT_FALSE(std::filesystem::exists(m_folder / "deep"));
    EXPECT_TRUE(store.Write("a", "b", DString("c")));
    EXPECT_EQ(store.Names("a"), std::vector<DString>{"b"});
    std::filesystem::remove_all(m_folder / "deep"); // the next write finds its way again
    EXPECT_FALSE(store.Read("a", "b"));
    EXPECT_TRUE(store.Write("a", "b", DString("d")));
    EXPECT_EQ(SettingsStore(m_folder / "deep/settings.db").ReadString("a", "b"), "d");
}

TEST_F(SettingsStoreTest, ReadingTogetherSeesOneState) {
    SettingsStore store(m_file);
    SettingsStore other(m_file);
    int calls = 0;
    store.ReadTogether([&] { ++calls; }); // there is no file yet
    ASSERT_TRUE(store.Write("k", "v", std::int64_t{1}));
    store.ReadTogether([&] {
        ++calls;
        EXPECT_EQ(store.ReadInt("k", "v", 0), 1);
        EXPECT_TRUE(other.Write("k", "v", std::int64_t{2}));
        EXPECT_EQ(store.ReadInt("k", "v", 0), 1);
    });
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(store.ReadInt("k", "v", 0), 2);
    EXPECT_TRUE(store.Write("k", "v", std::int64_t{3}));
}

TEST_F(SettingsStoreTest, ATransactionIsWholeOrNothing) {
    SettingsStore store(m_file);
    auto const put = [&](char const *name) { return store.Write("k", name, std::int64_t{1}); };
    EXPECT_FALSE(store.Transact([&] { return put("refused") && false; }));
    EXPECT_THROW(store.Transact([&]() -> bool { throw std::runtime_error(put("thrown") ? "x" : "y"); }),
                 std::runtime_error);
    EXPECT_TRUE(store.Transact([&] {
        put("outer");
        EXPECT_FALSE(store.Transact([&] { return put("inner") && false; }));
        EXPECT_TRUE(store.Transact([&] { return put("second"); }));
        EXPECT_TRUE(store.Read("k", "outer"));
        return true;
    }));
    EXPECT_EQ(store.Names("k"), (std::vector<DString>{"outer", "second"}));
}

TEST_F(SettingsStoreTest, ProcessesThatIncrementTogetherLoseNothing) {
    constexpr int processes = 4;
    constexpr int increments = 200;
    SettingsStore store(m_file);
    auto const increment = [](SettingsStore &mine) {
        for (int i = 0; i < increments; ++i) {
            if (!mine.Transact([&] { return mine.Write("k", "n", mine.ReadInt("k", "n", 0) + 1); }))
                return 1;
        }
        return 0;
    };
    std::array<pid_t, processes> children{};
    for (std::size_t i = 0; i < children.size(); ++i) // each makes the file if it is the first; two share the parent's
        children.at(i) = InChild([&] {
            SettingsStore own(m_file);
            return increment(i < 2 ? own : store);
        });
    {
        std::jthread const threads[] = {std::jthread([&] { EXPECT_EQ(increment(store), 0); }),
                                        std::jthread([&] { EXPECT_EQ(increment(store), 0); })};
    }
    for (pid_t const child : children)
        EXPECT_EQ(StatusOf(child), 0);
    EXPECT_EQ(store.ReadInt("k", "n", 0), (processes + 2) * increments);
}

TEST_F(SettingsStoreTest, AWriterKilledAtAnyMomentLeavesEachTransactionWholeOrAbsent) {
    std::mt19937 random(11); // NOLINT(cert-msc51-cpp)
    test::Told told;
    std::int64_t former = 0;
    for (int round = 0; round < 30; ++round) {
        int channel[2] = {};
        ASSERT_EQ(pipe(channel), 0);
        pid_t const child = InChild([&] {
            SettingsStore mine(m_file);
            for (std::int64_t i = former + 1;; ++i) {
                mine.Transact([&] { return mine.Write("k", "a", i) && mine.Write("k\\sub", "b", i); });
                if (write(channel[1], &i, sizeof i) != sizeof i)
                    return 1;
            }
        });
        close(channel[1]);
        std::int64_t confirmed = 0;
        for (auto count = 1 + random() % 60; count > 0; --count)
            ASSERT_EQ(read(channel[0], &confirmed, sizeof confirmed), static_cast<ssize_t>(sizeof confirmed));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        close(channel[0]);
        SettingsStore store(m_file);
        former = store.ReadInt("k", "a", 0);
        EXPECT_GE(former, confirmed);
        EXPECT_EQ(store.ReadInt("k\\sub", "b", 0), former);
    }
    EXPECT_THAT(told.Take(), testing::IsEmpty());
}

TEST_F(SettingsStoreTest, ADamagedFileIsKeptBesideAndANewOneBegun) {
    test::Rows<char const *, DString> const cases = {
        {"a text longer than the header of a database", DString(120, 'x')},
        {"a few bytes", "short"},
        {"a header alone", DString("SQLite format 3\0", 16) + DString(2000, '\x7F')}};
    std::size_t aside = 0;
    for (auto const &[name, bytes] : cases) {
        SCOPED_TRACE(name);
        test::Told told;
        m_folder.Write("settings.db", bytes);
        SettingsStore store(m_file);
        EXPECT_FALSE(store.Read("k", "n"));
        EXPECT_TRUE(store.Write("k", "n", DString("new")));
        EXPECT_EQ(store.ReadString("k", "n"), "new");
        EXPECT_EQ(test::ReadFile(m_file + ".damaged-" + std::to_string(++aside)), bytes);
        EXPECT_EQ(told.Take().size(), 1U);
        EXPECT_EQ(FilesNamed("settings.db.damaged-*"), aside);
    }
}

TEST_F(SettingsStoreTest, DamageFoundLaterIsKeptBesideToo) {
    auto const read = [](SettingsStore &store) { return store.Read("k300", "n").has_value(); };
    std::function<bool(SettingsStore &)> const finders[] = {
        [&](SettingsStore &store) { return !read(store); },
        [&](SettingsStore &store) { return store.Transact([&] { return read(store) || true; }); }, // on the new file
        [&](SettingsStore &store) { return !store.ReadTogether([&] { std::ignore = read(store); }); },
        [](SettingsStore &store) { return !store.IsWhole(); }};
    std::size_t aside = 0;
    for (auto const &find : finders) {
        test::Told told;
        {
            SettingsStore store(m_file);
            store.Transact([&] {
                for (int i = 0; i < 500; ++i)
                    store.Write("k" + std::to_string(i), "n", DString(200, 'x'));
                return true;
            });
            EXPECT_TRUE(store.IsWhole());
        }
        Damage();
        SettingsStore store(m_file);
        SettingsStore other(m_file);
        EXPECT_TRUE(find(store));
        EXPECT_TRUE(store.Write("k300", "n", DString("after")));
        EXPECT_EQ(other.ReadString("k300", "n"), "after"); // finds the new file, and does not set that aside
        EXPECT_EQ(FilesNamed("settings.db.damaged-?"), ++aside);
        EXPECT_EQ(told.Take().size(), 1U);
    }
}

TEST_F(SettingsStoreTest, WhoCannotWaitIsNotHeldUpByAProcessThatIsStuck) {
    int begun[2] = {};
    int end[2] = {};
    ASSERT_EQ(pipe(begun) + pipe(end), 0);
    pid_t const stuck = InChild([&] {
        SettingsStore mine(m_file);
        close(end[1]);
        char byte = 0;
        bool const done = mine.Transact([&] {
            return mine.Write("k", "n", std::int64_t{10}) && write(begun[1], "b", 1) == 1 &&
                   read(end[0], &byte, 1) == 0;
        });
        return done ? 0 : 1;
    });
    char byte = 0;
    ASSERT_EQ(read(begun[0], &byte, 1), 1);
    SettingsStore store(m_file);
    auto const add = [&store] { return store.Write("k", "n", store.ReadInt("k", "n", 0) + 1); };
    auto const begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 20; ++i)
        EXPECT_TRUE(store.TransactSoon(add));
    EXPECT_TRUE(store.WriteSoon("k", "other", DString("x")));
    EXPECT_FALSE(store.TransactSoon([&] { return store.Write("k", "other", DString("y")) && false; }));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(1'000));
    EXPECT_EQ(store.ReadInt("k", "n", 0), 20); // seen here already
    EXPECT_EQ(store.ReadString("k", "other"), "x");
    EXPECT_FALSE(SettingsStore(m_file).Read("k", "other"));
    close(end[1]);
    EXPECT_EQ(StatusOf(stuck), 0);
    EXPECT_EQ(store.ReadInt("k", "n", 0), 30); // done behind the other's
    EXPECT_EQ(SettingsStore(m_file).ReadInt("k", "n", 0), 30);
}

TEST_F(SettingsStoreTest, ATransactionThatAForkFallsIntoIsTheParents) {
    SettingsStore store(m_file);
    pid_t child = -1;
    EXPECT_TRUE(store.Transact([&] {
        EXPECT_TRUE(store.Write("k", "before", std::int64_t{1}));
        child = fork();
        return child != 0 ? store.Write("k", "behind", std::int64_t{1}) : !store.Write("k", "child", std::int64_t{1});
    }) || child == 0);
    if (child == 0) // where it has failed
        _exit(!store.Write("k", "later", std::int64_t{1}) && !store.Read("k", "child") ? 0 : 1);
    EXPECT_EQ(StatusOf(child), 0);
    EXPECT_EQ(store.Names("k"), (std::vector<DString>{"before", "behind"}));
}

TEST_F(SettingsStoreTest, AFullDiskRefusesTheWriteAndLosesNothing) {
    EXPECT_TRUE(SettingsStore(m_file).Write("k", "n", DString("kept")));
    pid_t const child = InChild([&] {
        FullDisk const full(40'000);
        SettingsStore store(m_file);
        bool const refused = !store.Write("k", "big", DString(100'000, 'x'));
        return refused && store.ReadString("k", "n") == "kept" && store.Write("k", "n", DString("after")) ? 0 : 1;
    });
    EXPECT_EQ(StatusOf(child), 0);
    SettingsStore store(m_file);
    EXPECT_EQ(store.ReadString("k", "n"), "after");
    EXPECT_FALSE(store.Read("k", "big"));
}

TEST_F(SettingsStoreTest, WithoutTheRightToWriteReadingWorks) {
    EXPECT_TRUE(SettingsStore(m_file).Write("k", "n", DString("kept")));
    auto const withoutRights = [&](mode_t file, mode_t folder) {
        chmod(m_file.c_str(), file);
        chmod(m_folder.Path().c_str(), folder);
        pid_t const child = InChild([&] {
            constexpr uid_t nobody = 65534;
            if (geteuid() == 0 && setuid(nobody) != 0)
                return 2;
            SettingsStore store(m_file);
            bool const read = store.ReadString("k", "n") == "kept";
            bool const refused = !store.Write("k", "n", DString("x")) && !store.RemoveTree("k") &&
                                 !store.Transact([&] { return store.Write("k", "n", DString("x")); });
            return read && refused && store.ReadString("k", "n") == "kept" ? 0 : 1;
        });
        return StatusOf(child);
    };
    for (auto const &[file, folder] : {std::pair{0444U, 0777U}, {0444U, 0555U}, {0666U, 0555U}})
        EXPECT_EQ(withoutRights(file, folder), 0) << std::oct << file << " in " << folder;
    chmod(m_folder.Path().c_str(), 0755);
    for (DString const &place : {DString(), m_folder.Path(), DString("/proc/none/settings.db")})
        EXPECT_FALSE(SettingsStore(place).Write("k", "n", DString("x"))) << place;
}

TEST_F(SettingsStoreTest, TheInstanceFollowsTheFileNamedInTheEnvironment) {
    DString const former = GetSettingsFile();
    SettingsStore *const first = &SettingsStore::Instance();
    setenv("ZELVAR_SETTINGS", m_file.c_str(), 1);
    EXPECT_NE(&SettingsStore::Instance(), first);
    EXPECT_TRUE(DUserCnfg("Section").WriteString("key", " text "));
    EXPECT_EQ(DUserCnfg("Section").ReadString("key", "", true), "text");
    EXPECT_FALSE(DUserCnfg("Other", false).WriteString("key", "text"));
    DVectorSafe<DString> texts{"old"};
    EXPECT_FALSE(DUserCnfg("Section").ReadStringVec("key", texts));
    EXPECT_TRUE(texts.empty());
    EXPECT_TRUE(DUserCnfg("Section").WriteStringVec("list", {"a", ""}));
    EXPECT_TRUE(DUserCnfg("Section").ReadStringVec("list", texts));
    EXPECT_EQ(texts.size(), 2U);
    EXPECT_TRUE(DUserCnfg("Section").RemoveKey("key"));
    setenv("ZELVAR_SETTINGS", former.c_str(), 1);
    EXPECT_EQ(&SettingsStore::Instance(), first);
    EXPECT_FALSE(DUserCnfg("Section").HasKey("list"));
}

TEST(Profile, IsKeptPerApplicationAndNeedsItsKey) {
    EXPECT_TRUE(Profile::WriteInt("S\\T", "n", -5));
    Profile::SetRegistryKey("Other");
    EXPECT_EQ(Profile::GetInt("S\\T", "n", 1), 1);
    Profile::SetRegistryKey("");
    EXPECT_FALSE(Profile::HasRegistryKey());
    EXPECT_FALSE(Profile::WriteString("S", "t", "x"));
    EXPECT_EQ(Profile::GetString("S", "t", "fallback"), "fallback");
    Profile::SetRegistryKey("Zelvar");
    EXPECT_EQ(Profile::GetInt("S\\T", "n", 1), -5);
}

TEST(Profile, ANumberThatIsNoIntGivesTheFallback) {
    SettingsStore &store = SettingsStore::Instance();
    for (std::int64_t const value : {std::int64_t{1} << 32U, std::int64_t{INT32_MAX} + 1, INT64_MIN}) {
        ASSERT_TRUE(store.Write("Profile\\Zelvar\\Sizes", "n", value));
        EXPECT_EQ(Profile::GetInt("Sizes", "n", 7), 7) << value;
    }
    EXPECT_TRUE(Profile::WriteInt("Sizes", "n", INT32_MIN));
    EXPECT_EQ(Profile::GetInt("Sizes", "n", 7), INT32_MIN);
    EXPECT_TRUE(Profile::WriteString("Sizes", "n", "text"));
    EXPECT_EQ(Profile::GetInt("Sizes", "n", 7), 7);
}

} // namespace
} // namespace zelvar
