#include "zelvar/base/ProcessMoments.h"

#include "support/Processes.h"

namespace zelvar {
namespace {

void Fork() {
    std::ignore = test::StatusOf(test::InChild([] { return 0; }));
}

/// A process that forks while its object is made, and while that ends.
struct Forking {
    Forking() { Fork(); }
    ~Forking() { Fork(); }
};

struct Object final : ProcessMoments {
    explicit Object(int &told) : m_told(told) {}
    void BeforeFork() override { ++m_told; }
    void AfterFork(Side /*side*/) override {}

private:
    int &m_told;
    Forking m_forking;
    Known m_known{*this};
};

TEST(ProcessMoments, AnObjectIsToldOnlyWhileItIsWhole) {
    int told = 0;
    {
        Object const object(told);
        EXPECT_EQ(told, 0);
        Fork();
        EXPECT_EQ(told, 1);
    }
    EXPECT_EQ(told, 1);
}

} // namespace
} // namespace zelvar
