#include "zelvar/model/listing/PaneState.h"

#include "support/Test.h"

namespace zelvar {
namespace {

PaneState const kSaved{.bdiFilter = 2, .formatId = "GTiff", .fileFilter = "*.tif", .rootPaths = {"/a", "/b"}};

TEST(PaneState, TellsWhatChangesAListing) {
    EXPECT_FALSE(StateChanged(kSaved, kSaved, true));
    for (auto const &[roots, changes] : test::Rows<std::vector<DString>, bool>{{{"/b", "/a"}, false},
                                                                               {{"/a", "/b", "/c"}, true},
                                                                               {{"/a", "/c"}, true},
                                                                               {{"/a"}, true},
                                                                               {{"/a", "/B"}, true}}) {
        PaneState wanted = kSaved;
        wanted.rootPaths = roots;
        EXPECT_EQ(StateChanged(kSaved, wanted, false), changes) << roots.back();
    }
    PaneState wanted = kSaved;
    wanted.bdiFilter = 0;
    EXPECT_TRUE(StateChanged(kSaved, wanted, false));
    wanted = kSaved;
    wanted.formatId = "gtiff";
    EXPECT_TRUE(StateChanged(kSaved, wanted, false));
    wanted = kSaved;
    wanted.fileFilter = "*.img";
    EXPECT_TRUE(StateChanged(kSaved, wanted, true));
    EXPECT_FALSE(StateChanged(kSaved, wanted, false)) << "a mask alone counts in a recursive list only";
}

TEST(PaneState, AWarmRunNeedsAllFormerRoots) {
    EXPECT_TRUE(CoversRoots({"/a"}, {"/b", "/a"}));
    EXPECT_FALSE(CoversRoots({"/a", "/b"}, {"/a"}));
    EXPECT_FALSE(CoversRoots({}, {"/a"}));
    EXPECT_FALSE(CoversRoots({"/a"}, {}));
}

} // namespace
} // namespace zelvar
