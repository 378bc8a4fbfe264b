#include "zelvar/base/Report.h"

#include "support/Test.h"

#include <thread>

namespace zelvar {
namespace {

TEST(Report, TellsTheUserThroughTheHandlerAndWithoutOneOnStderr) {
    std::vector<DString> told;
    auto const former = Report::SetUserHandler([&told](Report::Severity severity, DString const &text) {
        told.push_back((severity == Report::Severity::Warning ? "warning " : "notice ") + text);
    });
    Report::UserNotification("%d%%", 50);
    Report::UserNotificationEnforced("%s", "must be seen");
    Report::UserWarning("100%% of %s", "%s"); // a text that looks like a format stays as it is
    EXPECT_THAT(told, ElementsAre("notice 50%", "notice must be seen", "warning 100% of %s"));

    Report::SetUserHandler(nullptr);
    testing::internal::CaptureStderr();
    Report::UserWarning("to the console");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "to the console\n");
    Report::SetUserHandler(former);
    EXPECT_EQ(told.size(), 3U);
}

TEST(Report, AHandlerMayReportItselfAndReplaceItself) {
    std::vector<DString> told;
    auto const former = Report::SetTraceHandler([&told](int level, DString const &text) {
        told.push_back(std::to_string(level) + text);
        if (level == 2)
            Report::TraceMessage(3, "nested");
        else
            Report::SetTraceHandler(nullptr);
    });
    Report::TraceMessage(2, "first");
    Report::TraceMessage(2, "nobody listens");
    EXPECT_THAT(told, ElementsAre("2first", "3nested"));
    Report::SetTraceHandler(former);
}

TEST(Report, ThreadsReportWhileTheHandlerIsReplaced) {
    std::atomic<int> seen{0};
    auto const former = Report::SetTraceHandler([&seen](int, DString const &) { ++seen; });
    std::thread worker([] {
        for (int i = 0; i < 1000; ++i)
            Report::TraceMessage(2, "%d", i);
    });
    for (int i = 0; i < 1000; ++i)
        Report::SetTraceHandler([&seen](int, DString const &) { ++seen; });
    worker.join();
    Report::SetTraceHandler(former);
    EXPECT_EQ(seen, 1000);
}

} // namespace
} // namespace zelvar
