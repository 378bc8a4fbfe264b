#include "zelvar/data/RequestScope.h"

#include "support/Test.h"

namespace zelvar {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;

TEST(RequestScope, TheInnermostCountsAndKnowsTheListingAroundIt) {
    EXPECT_EQ(RequestScope::Current(), nullptr);
    RequestScope listing(RequestKind::List);
    {
        RequestScope probe(RequestKind::Probe);
        EXPECT_EQ(RequestScope::Current(), &probe);
        EXPECT_EQ(probe.Listing(), &listing);
        probe.SetUnanswered();
    }
    EXPECT_EQ(RequestScope::Current(), &listing);
    EXPECT_TRUE(listing.IsUnanswered());
    EXPECT_EQ(listing.Listing(), nullptr);
}

TEST(RequestScope, AStopAnywhereAroundStopsIt) {
    bool stopped = false;
    RequestScope const outer(RequestKind::List, [&] { return stopped; });
    RequestScope const inner(RequestKind::Preview, [] { return false; });
    EXPECT_FALSE(inner.IsStopped());
    stopped = true;
    EXPECT_TRUE(inner.IsStopped());
}

TEST(RequestScope, TheShortestTimeAroundBoundsWhatIsInside) {
    RequestScope const outer(RequestKind::List, {}, hours(1));
    RequestScope const none(RequestKind::List);
    RequestScope const inner(RequestKind::Probe, {}, hours(2));
    ASSERT_TRUE(inner.TimeLeft());
    EXPECT_LE(*inner.TimeLeft(), hours(1));
    RequestScope const past(RequestKind::Probe, {}, milliseconds(-1));
    EXPECT_LT(*past.TimeLeft(), milliseconds(0));
}

TEST(RequestScope, OneThatStandsAloneKnowsNothingAroundIt) {
    RequestScope outer(
        RequestKind::List, [] { return true; }, milliseconds(1));
    RequestScope alone(RequestKind::List, {}, hours(1), RequestScope::Nesting::Alone);
    EXPECT_FALSE(alone.IsStopped());
    EXPECT_GT(*alone.TimeLeft(), milliseconds(1000));
    alone.SetUnanswered();
    EXPECT_FALSE(outer.IsUnanswered());
}

} // namespace
} // namespace zelvar
