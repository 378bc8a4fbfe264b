#pragma once

#include "zelvar/search/SearchQuery.h"

#include <optional>

namespace zelvar {

/// What somebody has filled into a search, texts right or wrong. A value.
struct SearchDraft {
    /// Two texts for the bounds of a number; empty for none.
    struct Bounds {
        DString least{};
        DString most{};
    };
    DString name{};
    SearchQuery::Kind kind = SearchQuery::Kind::Any;
    DString format{};
    int dataTypes = 0; ///< bits of `RDIDataType`, 0 for all
    Bounds width{};    ///< pixels, as the next
    Bounds height{};
    Bounds channels{};
    Bounds slices{};
    Bounds frames{};
    Bounds bytes{};    ///< as `BytesFrom` reads them
    Bounds modified{}; ///< as `MomentFrom` reads them
    bool inside = false;
    bool remote = false;

    /// What is wrong, and where.
    struct Fault {
        Bounds SearchDraft::*field = nullptr;
        bool isMost = false; ///< in the second of its texts
        DString words{};     ///< for the user, in his language
    };
    /// The query; nothing, with `fault` filled, if a text is not what it should be.
    [[nodiscard]] std::optional<SearchQuery> ToQuery(Fault &fault) const;
    /// Whether anything but the name is asked for.
    [[nodiscard]] bool HasFacts() const;
};

} // namespace zelvar
