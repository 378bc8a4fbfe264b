#include "zelvar/charts/ChartColors.h"

#include "zelvar/platform/ui/PaletteColors.h"

namespace zelvar {

ChartColors ChartColors::Current() {
    ChartColors colors;
    colors.ground = platform::Themed(colors.ground);
    for (auto const member : {&ChartColors::ink, &ChartColors::point, &ChartColors::selectedPoint, &ChartColors::bar,
                              &ChartColors::selectedBar})
        colors.*member = platform::ThemedInk(colors.*member, colors.ground);
    return colors;
}

} // namespace zelvar
