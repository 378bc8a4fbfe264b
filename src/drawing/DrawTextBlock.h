#pragma once

#include "zelvar/settings/CnfgLdr.h"

class QPainter;

namespace zelvar {

/// Draws a text, its upper left corner at (`x`, `y`), nothing right of or below pixel 1000, and the sign "®" as a
/// superscript behind each occurrence of the product's name. The painter keeps its colour, font and background.
ZELVAR_API void DrawTextBlock(QPainter *dc, CnfgLdr::TextBlock const &block);

} // namespace zelvar
