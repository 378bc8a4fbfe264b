#pragma once

#include "zelvar/base/DString.h"

#include <vector>

namespace zelvar {

/// A field of an option page as it stands filled in now.
struct OptionField {
    DString name;
    DString value;
    bool isSelect = false;
};

/// The fields as one text, "a=1&b>2", by name as bytes. Where a select element is named as a field with ".op" behind
/// it, its value stands for the "="; such a select is an entry of its own as well. Of fields of one name the last one
/// counts, selects after text fields.
[[nodiscard]] DString MakeOptionText(std::vector<OptionField> const &fields);

} // namespace zelvar
