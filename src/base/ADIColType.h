#pragma once

namespace zelvar {

/// Type of a column of an attribute table.
enum ADIColType : int {
    ADICol_None = 0, ///< never told; such a column counts as text
    ADICol_Int = 1,
    ADICol_Double = 2,
    ADICol_String = 3,
};

} // namespace zelvar
