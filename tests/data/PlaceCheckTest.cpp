#include "zelvar/data/PlaceCheck.h"

#include "support/ScriptedShellNamespace.h"
#include "zelvar/data/RequestScope.h"

#include <gtest/gtest.h>

#include <latch>

namespace zelvar {
namespace {

class SlowServer : public test::ScriptedShellNamespace {
public:
    void Answer() { m_answer.count_down(); }
    [[nodiscard]] bool DoesServerAnswer(DString const &path) const override {
        m_answer.wait();
        return path.ends_with("alive");
    }

private:
    mutable std::latch m_answer{1};
};

TEST(PlaceCheck, WhoWaitsForAServerMayEndTheWaitAndElseHearsItsAnswer) {
    // Those who were not waited for may still look at it when the test has ended.
    static auto &shell = *new std::shared_ptr<SlowServer>(std::make_shared<SlowServer>());
    platform::ShellNamespace::SetCurrent(shell);
    int asked = 0;
    {
        RequestScope const scope(RequestKind::List, [&asked] { return ++asked == 3; });
        EXPECT_FALSE(DoesPlaceAnswer("smb://alive"));
        EXPECT_TRUE(scope.IsUnanswered());
    }
    EXPECT_EQ(asked, 3) << "not held by the server";
    {
        RequestScope const scope(RequestKind::List, {}, std::chrono::milliseconds(1));
        EXPECT_FALSE(DoesPlaceAnswer("smb://alive"));
    }
    shell->Answer();
    EXPECT_TRUE(DoesPlaceAnswer("smb://alive"));
    EXPECT_FALSE(DoesPlaceAnswer("smb://dead"));
    platform::ShellNamespace::SetCurrent(nullptr);
}

} // namespace
} // namespace zelvar
