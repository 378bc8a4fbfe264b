#pragma once

namespace zelvar {

/// Purpose of a dialog that browses items. The numbers are part of keys in the settings.
enum DLGTemplate {
    DT_DATA = 0,
    DT_DATA_ALT = 1,
    DT_WORKSPACE = 2,
    DT_PROJECT = 3,
    DT_RULESET = 4,
    DT_SOLUTION = 5,
};

/// Image data is picked: data sources are listed and a preview is shown.
[[nodiscard]] constexpr bool PicksImageData(DLGTemplate purpose) {
    return purpose == DT_DATA || purpose == DT_DATA_ALT;
}
/// A document of the product is picked: files are not probed for containers, images are not read.
[[nodiscard]] constexpr bool PicksDocument(DLGTemplate purpose) {
    return purpose == DT_WORKSPACE || purpose == DT_PROJECT || purpose == DT_RULESET || purpose == DT_SOLUTION;
}

} // namespace zelvar
