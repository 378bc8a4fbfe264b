#include "zelvar/opends/places/SettingsFields.h"

#include "zelvar/base/Percent.h"
#include "zelvar/base/Redaction.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr char kBetween = ' '; // encoded fields have none

} // namespace

DString JoinFields(std::vector<DString> const &fields) {
    DString text;
    for (std::size_t i = 0; i < fields.size(); ++i)
        text.append(i == 0 ? 0 : 1, kBetween).append(PercentEncoded(fields[i], true));
    return text;
}

std::vector<DString> SplitFields(DString const &text) {
    std::vector<DString> fields = Split(text, kBetween);
    std::transform(fields.begin(), fields.end(), fields.begin(),
                   [](DString const &field) { return PercentDecoded(field); });
    return fields;
}

DString StorablePlace(DString const &place) { return place.find("://") == DString::npos ? place : Redacted(place); }

} // namespace zelvar
