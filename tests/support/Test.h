#pragma once

// What nearly every test needs: GoogleTest with its matchers, files of a test's own, tables of cases and the plain
// headers of the standard library.

#include "support/TestFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace zelvar {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace test {

/// A table that a test goes through row by row: `for (auto const &[text, number] : rows)`.
template <class... Columns>
using Rows = std::initializer_list<std::tuple<Columns...>>;

} // namespace test
} // namespace zelvar
