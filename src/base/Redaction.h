#pragma once

#include "zelvar/base/DString.h"

namespace zelvar {

/// The text without secrets, for all that is shown, logged, printed or stored: each reads "***". Secrets are passwords
/// in addresses and behind `password=` and its kin, keys, signatures and tokens in queries, and what follows
/// `Authorization:`. A text without any comes back as it is; so does what came from here. Linear in time.
[[nodiscard]] ZELVAR_API DString Redacted(std::string_view text);

} // namespace zelvar
