#include "zelvar/pixels/ImageFit.h"

#include "support/Test.h"

namespace zelvar {
namespace {

TEST(ImageFit, KeepsTheProportionsInsideThePlace) {
    EXPECT_EQ(FitInto({200, 100}, {50, 300}), (Size{50, 25}));
    EXPECT_EQ(FitInto({100, 200}, {300, 50}), (Size{25, 50}));
    EXPECT_EQ(FitInto({100, 100}, {70, 70}), (Size{70, 70}));
    EXPECT_EQ(FitInto({2, 1}, {5, 100}), (Size{5, 3})); // 2.5 goes away from zero
    EXPECT_EQ(FitInto({0, 1}, {5, 5}), Size{});
    EXPECT_EQ(FitInto({1, 1}, {5, 0}), Size{});
    EXPECT_EQ(FitInto({100000, 1}, {50, 50}), (Size{50, 0}));
}

} // namespace
} // namespace zelvar
