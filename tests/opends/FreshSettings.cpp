// Each test begins with settings that nobody has written to, in whatever order the tests of the program run.
#include "zelvar/store/SettingsStore.h"

#include <gtest/gtest.h>

namespace zelvar::test {
namespace {

class FreshSettings final : public testing::EmptyTestEventListener {
    void OnTestStart(testing::TestInfo const &) override {
        SettingsStore &settings = SettingsStore::Instance();
        for (DString const &key : settings.Children(""))
            settings.RemoveTree(key);
    }
};

bool const kIsHeard = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new FreshSettings); // which owns it
    return true;
}();

} // namespace
} // namespace zelvar::test
