#include "zelvar/opends/core/PathButtons.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr std::size_t kLongestName = 13; // characters
constexpr std::size_t kCutNameTo = 10;
constexpr int kSpacing = 1; // pixels behind each button
constexpr int kMaxGap = 5;

bool BeginsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }

} // namespace

std::vector<PathButton> ArrangePathButtons(std::size_t count, int available, MeasurePathButton const &measure) {
    std::vector<PathButton> buttons(count);
    int sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        buttons[i] = {.entry = i, .width = measure(i, false, false)};
        sum += buttons[i].width + kSpacing;
    }
    auto const remeasure = [&](PathButton &button) {
        int const width = measure(button.entry, button.cutBefore, button.cutBehind);
        sum += width - button.width;
        button.width = width;
    };

    std::size_t removed = 0; // of the entries right behind the outermost
    while (count - removed >= 3 && sum > available) {
        ++removed;
        sum -= buttons[removed].width + kSpacing;
        if (removed == 1) {
            buttons[0].cutBehind = true;
            remeasure(buttons[0]);
        }
        buttons[removed + 1].cutBefore = true;
        remeasure(buttons[removed + 1]);
    }
    if (removed != 0)
        buttons.erase(buttons.begin() + 1, buttons.begin() + 1 + static_cast<std::ptrdiff_t>(removed));

    int const gap = removed != 0 ? std::clamp(available - sum - 2, 0, kMaxGap) : 0;
    int left = 0;
    for (PathButton &button : buttons) {
        button.left = left;
        left += button.width + kSpacing + (button.entry == 0 ? gap : 0);
    }
    return buttons;
}

DString PathButtonText(DString const &name, bool cutBefore, bool cutBehind) {
    DString text = name;
    if (std::count_if(name.begin(), name.end(), BeginsCharacter) > static_cast<std::ptrdiff_t>(kLongestName)) {
        std::size_t characters = 0;
        std::size_t end = 0;
        while (end < name.size() && (characters < kCutNameTo || !BeginsCharacter(name[end])))
            characters += BeginsCharacter(name[end++]) ? 1U : 0U;
        text = name.substr(0, end) + "...";
    }
    return (cutBefore ? "../" : "") + text + (cutBehind ? "/.." : "");
}

} // namespace zelvar
