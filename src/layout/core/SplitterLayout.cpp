#include "zelvar/layout/core/SplitterLayout.h"

#include <algorithm>

namespace zelvar {

void LayOutTracks(std::vector<SplitterTrack> &tracks, int total, int bar) {
    int room = std::max(total, 0);
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        SplitterTrack &track = tracks[i];
        bool const isLast = i + 1 == tracks.size();
        int const wanted = isLast ? room : std::min(track.ideal, room);
        track.current = wanted < track.minimum ? 0 : wanted;
        room = std::max(room - track.current - bar, 0);
    }
}

std::optional<int> SplitTrack(SplitterTrack const &last, int at, int bar) {
    int const size = last.current - at - bar;
    if (at < last.minimum || size < std::max(last.minimum, 1))
        return std::nullopt;
    return size;
}

} // namespace zelvar
