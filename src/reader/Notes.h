#pragma once

#include "zelvar/data/ReaderDuty.h"

namespace zelvar::reader {

/// What `ReaderDuty` says of notes, by the way to the application. The name has any length.
[[nodiscard]] std::optional<ReaderNote> FindNote(DString const &name);
void KeepNote(DString const &name, std::string_view content);

} // namespace zelvar::reader
