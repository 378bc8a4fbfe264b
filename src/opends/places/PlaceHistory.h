#pragma once

#include "zelvar/model/DataSourceItem.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace zelvar {

/// How a list of items was left. A value.
struct PlaceView {
    std::vector<DString> selected{}; ///< paths of the selected rows, from top to bottom; the first `kMostSelected`
    DString top{};                   ///< path of the uppermost row; empty for an empty list
    int topRow = 0;                  ///< where that stood, if nothing has come or gone since
    static constexpr std::size_t kMostSelected = 1000;
    friend bool operator==(PlaceView const &, PlaceView const &) = default;
};

/// The places that a dialog has shown, one behind the other as in a browser: a step back and forth, and what was
/// forward is forgotten when another place is entered. One thread.
class PlaceHistory {
public:
    struct Visit {
        RefItemPtr<DataSourceItem> place;
        DString path{}; ///< of `place` when it was entered
        PlaceView view{};
    };
    static constexpr std::size_t kMost = 100; ///< visits; the oldest goes first

    /// A place is shown. The same as the present one only takes its item's place. With `replaces` the present one was
    /// only passed through and is forgotten.
    void Enter(RefItemPtr<DataSourceItem> place, bool replaces = false);
    /// How the present place is left, or stands now.
    void Keep(PlaceView view);

    [[nodiscard]] bool CanGo(int step) const; ///< -1 is back, 1 forward
    /// Makes another visit the present one; only where `CanGo`.
    Visit const &Go(int step);
    [[nodiscard]] Visit const *Present() const; ///< null before the first
    /// Every place once, the one seen last first, the present one included.
    [[nodiscard]] std::vector<Visit const *> Latest() const;

private:
    std::vector<Visit> m_visits;
    std::size_t m_at = 0;         ///< the present one
    std::vector<DString> m_order; ///< paths, the one entered last at the end
};

} // namespace zelvar
