#pragma once

#include "zelvar/data/options/DriverOption.h"

namespace zelvar::gdal {

/// What a list of options in GDAL's XML holds, in its order, each name once. An option whose description is odd (a type
/// that is not known, a choice without values, a range that holds nothing) is a text; of a list that is no XML the
/// names are found all the same. Nothing of it is longer than a person would read.
[[nodiscard]] std::vector<DriverOption> ParseOptionList(DString const &xml);

/// What the format of that id says; those that are not taken here are barred.
[[nodiscard]] std::vector<DriverOption> OpenOptionsOf(DString const &formatId);
[[nodiscard]] std::vector<DriverOption> CreationOptionsOf(DString const &formatId);

} // namespace zelvar::gdal
