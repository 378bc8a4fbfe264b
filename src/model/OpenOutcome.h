#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/ImageReader.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace zelvar {

/// What items are picked for. Without any of it nobody can tell what an item must be: a document.
struct OpenWish {
    bool image = false;
    bool table = false;
    [[nodiscard]] bool IsTold() const { return image || table; }
};

/// What the properties of a table tell.
struct TableInfo {
    DString driver{}; ///< the driver's description
    std::uint64_t columns = 0;
};

/// What opening an item has shown. A plain value.
struct OpenFacts {
    DString name{};             ///< as it is listed
    DString members{};          ///< of a series of files, in the user's language, see `SeriesItem::ShownSummary`
    std::int64_t fileSize = -1; ///< bytes on disk; below 0 for unknown
    std::optional<ImageInfo> image{};
    std::optional<TableInfo> table{};
    DError error{};  ///< why it is neither
    DError damage{}; ///< what a look at its pixels said: it opens, and not all of it can be read
    int rowsRead = 0;
    int rows = 0;                   ///< that were to be read; 0 for a damage that was not measured
    bool isOneImage = false;        ///< a series is given as one image
    std::vector<DString> drivers{}; ///< ids of those that open it as an image, the first one does if none is named

    /// It is what is wished for.
    [[nodiscard]] bool Opens(OpenWish const &wish) const {
        return (wish.image && image.has_value()) || (wish.table && table.has_value());
    }
};

/// What OK will do with what is selected, in words.
struct OpenOutcome {
    bool isUsable = true; ///< false: whoever picks it is to be asked
    DString text{};       ///< one line in the user's language, without a full stop; may be empty
    DString reason{};     ///< what drivers and the system said against it, in English; empty if that is in the text
};

/// What the samples of all channels, slices and time frames take in memory, bytes; at most 2^64 - 1. 0 for a map of any
/// resolution: who opens it says how much of it is read.
[[nodiscard]] ZELVAR_API std::uint64_t MemoryOf(ImageInfo const &image);
/// "512 B", "1.5 MB", "24 GB".
[[nodiscard]] ZELVAR_API DString BytesInWords(std::uint64_t bytes);
/// Why data cannot be opened, and what to do about it.
[[nodiscard]] ZELVAR_API DString CauseInWords(DError const &error);
[[nodiscard]] ZELVAR_API DString RemedyInWords(DError const &error);

/// `memory`: that of the computer, bytes; 0 if it is not known.
[[nodiscard]] ZELVAR_API OpenOutcome OutcomeOf(OpenFacts const &item, OpenWish const &wish, std::uint64_t memory);
/// The same for several items, of which the first few were looked at: their sum and what differs. While
/// none was, their number.
[[nodiscard]] ZELVAR_API OpenOutcome OutcomeOf(std::span<OpenFacts const> looked, std::uint64_t selected,
                                               OpenWish const &wish, std::uint64_t memory);

} // namespace zelvar
