#include "zelvar/model/FolderAhead.h"

#include "support/ScriptedShellNamespace.h"
#include "support/Test.h"

namespace zelvar {
namespace {

using platform::ShellChild;
using platform::ShellId;
using platform::ShellNamespace;

struct FolderAheadTest : testing::Test {
    FolderAheadTest() {
        for (int i = 0; i < kMany; ++i)
            m_shell->AddFile("/d/large/" + std::to_string(i) + (i % 2 == 0 ? ".tif" : ".txt"));
        m_shell->AddFile("/d/small/a.tif");
        m_shell->AddFile("/d/small/b.lnk");
        m_shell->SetUnreadable("/d/closed");
    }
    ~FolderAheadTest() override { ShellNamespace::SetCurrent(m_former); }
    [[nodiscard]] ShellId At(char const *path) const { return m_shell->Parse(path); }

    static constexpr int kMany = 20'000; // more than may wait to be visited
    std::shared_ptr<test::ScriptedShellNamespace> m_shell = std::make_shared<test::ScriptedShellNamespace>();
    std::shared_ptr<ShellNamespace> m_former = ShellNamespace::SetCurrent(m_shell);
};

TEST_F(FolderAheadTest, GivesTheChildrenOnceInTheirOrderAndEndsWhenNobodyWantsMore) {
    EXPECT_EQ(FolderAhead::Current(), nullptr);
    FolderAhead ahead("*.tif;*.lnk");
    EXPECT_EQ(FolderAhead::Current(), &ahead);
    constexpr std::size_t kAll = kMany;
    for (auto const &[path, most, seen] : test::Rows<char const *, std::size_t, std::size_t>{
             {"/d/large", kAll, kMany / 2}, {"/d/large", 3, 3}, {"/d/small", kAll, 1}})
        for (bool const isBegun : {true, false}) {
            if (isBegun) {
                ahead.Begin(At(path));
                ahead.Begin(At(path));
                while (m_shell->EnumerateCalls(path) == 0)
                    std::this_thread::yield();
            }
            std::vector<DString> names;
            auto const error = ahead.Take(At(path), "*.tif;*.lnk", [&, wanted = most](ShellChild &&child) {
                names.push_back(child.name);
                return names.size() < wanted;
            });
            EXPECT_EQ(error, isBegun ? std::optional(std::error_code()) : std::nullopt) << path;
            EXPECT_EQ(names.size(), isBegun ? seen : 0) << path;
            if (names.size() > 2) {
                EXPECT_EQ(names[1], "2.tif");
            }
        }
    EXPECT_EQ(m_shell->EnumerateCalls("/d/large"), 2);
    EXPECT_EQ(m_shell->EnumerateCalls("/d/small"), 1);
}

TEST_F(FolderAheadTest, TellsOfAFolderThatCannotBeReadAndKeepsToItsFilterAndToThisMachine) {
    FolderAhead ahead("");
    m_shell->AddFile("smb://host/share/a.tif");
    for (auto const &[path, error] :
         {std::pair{"/d/closed", std::optional(std::make_error_code(std::errc::permission_denied))},
          {"smb://host/share", std::nullopt}}) {
        ahead.Begin(At(path));
        while (path[0] == '/' && m_shell->EnumerateCalls(path) == 0)
            std::this_thread::yield();
        EXPECT_EQ(ahead.Take(At(path), "*", [](ShellChild &&) { return true; }), std::nullopt) << "another filter";
        EXPECT_EQ(ahead.Take(At(path), "", [](ShellChild &&) { return true; }), error) << path;
    }
    EXPECT_EQ(m_shell->EnumerateCalls("smb://host/share"), 0);
    ahead.Begin(At("/d/large")); // nobody takes it: it ends with its owner
}

} // namespace
} // namespace zelvar
