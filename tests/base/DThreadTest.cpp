#include "zelvar/base/DThread.h"

#include "support/Test.h"

#include <future>
#include <stdexcept>

namespace zelvar {
namespace {

using namespace std::chrono_literals;

/// Runs until it is told to end.
class Gate : public DThread {
public:
    ~Gate() override {
        Open();
        Finish();
    }
    void Run() override {
        ++runs;
        m_opened.get_future().wait();
        if (throws)
            throw std::runtime_error("from the worker");
    }
    void Open() {
        if (!std::exchange(m_isOpen, true))
            m_opened.set_value();
    }
    void Shut() {
        m_opened = {};
        m_isOpen = false;
    }
    int runs = 0;
    bool throws = false;

private:
    std::promise<void> m_opened;
    bool m_isOpen = false;
};

TEST(DThread, RunsOnceAtATimeAndCanRunAgain) {
    Gate worker;
    EXPECT_FALSE(worker.IsRunning());
    EXPECT_TRUE(worker.Start());
    EXPECT_TRUE(worker.IsRunning());
    EXPECT_FALSE(worker.Start());
    EXPECT_FALSE(worker.Wait(1ms));
    worker.Open();
    EXPECT_TRUE(worker.Wait(10s));
    EXPECT_FALSE(worker.IsRunning());
    worker.Finish();
    EXPECT_EQ(worker.runs, 1);
    worker.Shut();
    EXPECT_TRUE(worker.Start());
    worker.Open();
    worker.Finish();
    EXPECT_EQ(worker.runs, 2);
}

TEST(DThread, AnExceptionEndsTheWorkerAndNothingElse) {
    Gate worker;
    worker.throws = true;
    EXPECT_TRUE(worker.Start());
    worker.Open();
    EXPECT_TRUE(worker.Wait(10s));
}

TEST(DThread, AnAbandonedWorkerGoesOnByItself) {
    static std::vector<std::unique_ptr<Gate>> left; // an abandoned worker must outlive its thread
    Gate &worker = *left.emplace_back(std::make_unique<Gate>());
    ASSERT_TRUE(worker.Start());
    worker.Abandon();
    EXPECT_TRUE(worker.IsRunning());
    worker.Open();
    EXPECT_TRUE(worker.Wait(10s));
}

} // namespace
} // namespace zelvar
