#pragma once

#include "zelvar/base/Report.h"

namespace zelvar::gdal {

/// Why PostgreSQL did not do it: `state` is the five characters that the server's error has in every language, empty
/// where none of the server's is known, `message` what is said. The text begins with `subject`, in quotes.
[[nodiscard]] DError ErrorOfPostgres(DString const &subject, std::string_view state, std::string_view message);

/// The five characters in a verbose message, "FATAL:  28P01: password ..."; empty if there are none.
[[nodiscard]] std::string_view PostgresStateIn(std::string_view message);

} // namespace zelvar::gdal
