#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/model/DataSourceItem.h"

namespace zelvar {

/// The item that a text names: a path, an address, a node inside a container as listings print it, a numbered series of
/// files ("folder/s[001-120].tif"), or "source:NAME" for a connection definition, which is opened. Null if nothing is
/// there; why, as far as a driver knows, is then in `*error`, which may be null. May block as the medium does. A
/// password in an address stays behind, see `TakeSecrets`.
[[nodiscard]] ZELVAR_API RefItemPtr<DataSourceItem> ItemFromPlace(DString const &place, DError *error = nullptr);

/// Why a path or address is no place: what the system says of it, or that nobody answers. Empty if nothing is known
/// against it. Of a series what its driver says. For messages.
[[nodiscard]] ZELVAR_API DString ReasonAgainst(DString const &place);

} // namespace zelvar
