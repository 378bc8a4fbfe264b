#pragma once

#include "zelvar/data/BDINode.h"
#include "zelvar/data/wire/Messages.h"

#include <memory>

namespace zelvar {

// A node as it goes over the wire; both ends use these.
[[nodiscard]] ZELVAR_API std::unique_ptr<wire::NodeT> ToWire(BDINode const &node);
[[nodiscard]] ZELVAR_API BDINode NodeFrom(wire::NodeT &&node);

} // namespace zelvar
