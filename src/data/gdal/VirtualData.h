#pragma once

#include "zelvar/data/gdal/Formats.h"

namespace zelvar::gdal {

/// Whether a format's files hold no data but say where it lies: mosaics and layers over other sources.
[[nodiscard]] bool IsVirtual(Format const &format);

/// Why the virtual data set that GDAL calls `name` must not be opened, as a sentence; empty if it may. It and all that
/// it refers to are looked at: each reference names a plain file or a data set folder on a disk of this machine, or a
/// part of one, or nothing that is there; in a format that does not reach out itself; nothing refers back to itself,
/// leads through more than 16 virtual files, or multiplies. GDAL opens what it refers to with any of its formats, and
/// when it gets there. To be called inside a `GdalScope`.
[[nodiscard]] DString ReasonAgainstVirtual(DString const &name);

/// Whether a name leads through one of GDAL's file systems that a name on disk must not use: standard input would never
/// end, others read what a file's content names. Archives are no such ones.
[[nodiscard]] bool UsesForeignFileSystem(std::string_view name);

} // namespace zelvar::gdal
