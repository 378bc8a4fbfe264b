#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/FileState.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace zelvar {

/// What is known of a file or node once somebody has opened it. A value.
struct ItemFacts {
    enum class Kind { Nothing, Image }; ///< `Nothing`: no driver reads it as an image
    Kind kind = Kind::Nothing;
    int width = 0;  ///< of one slice at one time, pixels
    int height = 0; ///< the same
    int channels = 0;
    int slices = 0;
    int frames = 0;
    int dataType = 0; ///< a bit of `RDIDataType`
    DString format{}; ///< the driver's description
    friend bool operator==(ItemFacts const &, ItemFacts const &) = default;
};

/// Bounds of a number, both included.
struct SearchRange {
    std::optional<std::int64_t> least{};
    std::optional<std::int64_t> most{};
    [[nodiscard]] bool IsSet() const { return least || most; }
    [[nodiscard]] bool Holds(std::int64_t value) const {
        return (!least || value >= *least) && (!most || value <= *most);
    }
};

/// What is searched for. What is left out holds for everything. A value.
struct ZELVAR_API SearchQuery {
    enum class Kind { Any, Folder, File, DataSet, Container, Image };

    /// Part of a name, or a mask with "*" or "?"; several between ";". Case is not regarded.
    DString name{};
    /// Masks that plain files match, too, as "*.tif;*.img"; empty for all of them.
    DString files{};
    Kind kind = Kind::Any;
    DString format{}; ///< part of the driver's description, as "tiff"; case is not regarded
    SearchRange width{};
    SearchRange height{};
    SearchRange channels{};
    SearchRange slices{};
    SearchRange frames{};
    int dataTypes = 0;      ///< bits of `RDIDataType`, any of them; 0 for all
    SearchRange bytes{};    ///< of the file
    SearchRange modified{}; ///< nanoseconds since 1970 UTC
    bool inside = false;    ///< what lies in containers, too
    bool remote = false;    ///< places below that lie on a network are entered, too

    /// Whether files have to be opened to tell: an image is searched for then.
    [[nodiscard]] bool NeedsFacts() const;
    /// Whether files have to be asked for size and time.
    [[nodiscard]] bool NeedsState() const { return bytes.IsSet() || modified.IsSet(); }
    [[nodiscard]] bool MatchesName(std::string_view itsName) const;
    /// The name of a plain file, by `files`.
    [[nodiscard]] bool MatchesFile(std::string_view itsName) const;
    /// Size and time; what is not known is within no bounds.
    [[nodiscard]] bool MatchesState(FileState const &state) const;
    [[nodiscard]] bool MatchesFacts(ItemFacts const &facts) const;
    /// Whether folders can be found.
    [[nodiscard]] bool FindsFolders() const;
};

/// The masks that a text of `SearchQuery::name` stands for: "*part*" for a part without "*" and "?".
[[nodiscard]] ZELVAR_API DString MasksOf(std::string_view name);

} // namespace zelvar
