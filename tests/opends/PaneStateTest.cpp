#include "zelvar/opends/core/PaneState.h"

#include <gtest/gtest.h>

namespace zelvar {
namespace {

PaneState const kSaved{.bdiFilter = 2, .formatId = "GTiff", .fileFilter = "*.tif", .rootPaths = {"/a", "/b"}};

TEST(PaneState, TellsWhatChangesAListing) {
    EXPECT_FALSE(StateChanged(kSaved, kSaved, true));
    PaneState wanted = kSaved;
    wanted.rootPaths = {"/b", "/a"};
    EXPECT_FALSE(StateChanged(kSaved, wanted, true)) << "the order of roots";
    wanted.rootPaths = {"/a", "/c"};
    EXPECT_TRUE(StateChanged(kSaved, wanted, false)) << "another root";
    wanted.rootPaths = {"/a"};
    EXPECT_TRUE(StateChanged(kSaved, wanted, false)) << "fewer roots";
    wanted.rootPaths = {"/a", "/B"};
    EXPECT_TRUE(StateChanged(kSaved, wanted, false)) << "the case of a path";
    wanted = kSaved;
    wanted.bdiFilter = 0;
    EXPECT_TRUE(StateChanged(kSaved, wanted, false));
    wanted = kSaved;
    wanted.formatId = "gtiff";
    EXPECT_TRUE(StateChanged(kSaved, wanted, false));
}

TEST(PaneState, AChangedMaskAloneCountsInARecursiveListOnly) {
    PaneState wanted = kSaved;
    wanted.fileFilter = "*.img";
    EXPECT_TRUE(StateChanged(kSaved, wanted, true));
    EXPECT_FALSE(StateChanged(kSaved, wanted, false));
}

TEST(PaneState, AWarmRunNeedsAllFormerRoots) {
    EXPECT_TRUE(CoversRoots({"/a"}, {"/b", "/a"}));
    EXPECT_FALSE(CoversRoots({"/a", "/b"}, {"/a"}));
    EXPECT_FALSE(CoversRoots({}, {"/a"}));
    EXPECT_FALSE(CoversRoots({"/a"}, {}));
}

} // namespace
} // namespace zelvar
