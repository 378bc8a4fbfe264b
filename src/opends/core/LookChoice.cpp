#include "zelvar/opends/core/LookChoice.h"

#include <algorithm>
#include <charconv>

namespace zelvar {

LookChoice LookChoice::Resized(int steps) const {
    LookChoice resized = *this;
    resized.side = std::clamp(side / kStep * kStep + steps * kStep, kLeast, kMost);
    return resized;
}

DString LookToText(LookChoice const &look) {
    return Format("%s %d%s", look.thumbnails ? "thumbnails" : "rows", look.side, look.remote ? " remote" : "");
}

LookChoice LookFromText(std::string_view text) {
    LookChoice look;
    for (DString const &word : Split(text, ' ')) {
        int side = 0;
        auto const [end, error] = std::from_chars(word.data(), word.data() + word.size(), side);
        if (error == std::errc() && end == word.data() + word.size())
            look.side = std::clamp(side, LookChoice::kLeast, LookChoice::kMost);
        look.thumbnails = look.thumbnails || word == "thumbnails";
        look.remote = look.remote || word == "remote";
    }
    return look;
}

} // namespace zelvar
