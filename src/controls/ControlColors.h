#pragma once

class QPalette;

namespace zelvar {

/// The desktop's user has asked for strong colours: buttons are pure black or white, and texts the opposite.
[[nodiscard]] bool UsesHighContrast(QPalette const &palette);

} // namespace zelvar
