#pragma once

#include "zelvar/data/reader/ReaderSettings.h"

#include <cstddef>

namespace zelvar::test {

/// Makes the drivers over GDAL the provider of drivers: in this process or, where the environment variable
/// ZELVAR_TEST_READER is set, in readers. Those end with the test, which fails if one of them crashed.
void UseRealDrivers();
/// The readers whatever the environment says. They end in the same way.
void UseReaders(ReaderSettings const &settings);
/// Of the built program over GDAL, with as much time as a machine under load may need.
[[nodiscard]] ReaderSettings PatientReaders();

/// The most bytes that the drivers' process has had in memory. Ends the readers: the next question starts new ones.
[[nodiscard]] std::size_t PeakBytesOfDrivers();

} // namespace zelvar::test
