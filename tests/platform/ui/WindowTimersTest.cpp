#include "zelvar/platform/ui/WindowTimers.h"

#include "support/GuiTest.h"

#include <QtCore/QObject>
#include <QtCore/QTimerEvent>

namespace zelvar::platform {
namespace {

class Ticking : public QObject {
public:
    WindowTimers timers{*this};
    std::vector<int> expired; ///< our numbers, in order; 0 for a timer that is not one of ours

protected:
    void timerEvent(QTimerEvent *event) override {
        int found = 0;
        for (int const id : {1, 2})
            found = timers.Expired(id, *event) ? id : found;
        expired.push_back(found);
        timers.Kill(found);
    }
};

TEST(WindowTimers, ExpiriesAreToldApartAKilledTimerIsSilentAndForeignOnesAreNobodys) {
    Ticking window;
    window.timers.Set(1, 1);
    window.timers.Set(2, 5);
    window.timers.Kill(1);
    EXPECT_TRUE(!window.timers.IsRunning(1) && window.timers.IsRunning(2));
    EXPECT_TRUE(test::Eventually([&] { return !window.expired.empty(); }));
    EXPECT_EQ(window.expired, std::vector<int>{2});
    EXPECT_FALSE(window.timers.IsRunning(2));
    window.timers.Kill(2); // a timer that does not run
    window.expired.clear();

    window.timers.Set(1, 60'000); // and set again, it runs once
    window.timers.Set(1, 1);
    int const foreign = window.startTimer(3);
    EXPECT_TRUE(test::Eventually([&] { return window.expired.size() >= 2; }));
    window.killTimer(foreign);
    EXPECT_EQ(std::count(window.expired.begin(), window.expired.end(), 1), 1);
    EXPECT_EQ(std::count(window.expired.begin(), window.expired.end(), 0), static_cast<int>(window.expired.size()) - 1);
}

} // namespace
} // namespace zelvar::platform
