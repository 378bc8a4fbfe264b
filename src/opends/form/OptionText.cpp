#include "zelvar/opends/form/OptionText.h"

#include <map>

namespace zelvar {

DString MakeOptionText(std::vector<OptionField> const &fields) {
    std::map<DString, DString> values;
    std::map<DString, DString> selects;
    for (OptionField const &field : fields)
        if (!field.isSelect)
            values[field.name] = field.value;
    for (OptionField const &field : fields)
        if (field.isSelect)
            values[field.name] = selects[field.name] = field.value;

    DString text;
    for (auto const &[name, value] : values) {
        auto const chosen = selects.find(name + ".op");
        text += text.empty() ? "" : "&";
        text += name;
        text += chosen == selects.end() ? "=" : chosen->second;
        text += value;
    }
    return text;
}

} // namespace zelvar
