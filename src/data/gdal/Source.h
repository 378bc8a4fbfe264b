#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/gdal/Formats.h"
#include "zelvar/data/gdal/GdalScope.h"
#include "zelvar/data/gdal/services/ServiceAddress.h"
#include "zelvar/model/datasets/DataFolder.h"

#include <optional>

namespace zelvar::gdal {

/// Names of options that choose a part of a source and are not the driver's. Their values are percent-encoded.
///
/// Monikers of things that GDAL has no name for are "<source>?LAYER=<name>" (one layer of vectors or a table) and
/// "<source>?RASTER=1" (the picture of a source that holds layers as well); a thing whose name would not come through
/// as the text of a moniker is "<source>?NODE=<GDAL's name>". A group of a file's members, which is a container without
/// a name of its own, is "<source>?GROUP=<outer/inner>".
///
/// An address on the web may have a query of its own, such as a signature: "https://host/a.tif?sig=1&LAYER=b". What
/// stands there behind "?" and is no option of any format, in capital letters, belongs to the address.
inline constexpr char const *kLayerOption = "LAYER";
inline constexpr char const *kRasterOption = "RASTER";
inline constexpr char const *kNodeOption = "NODE";
inline constexpr char const *kGroupOption = "GROUP";

/// What a moniker asks to open, in GDAL's terms.
struct Source {
    DString text;     ///< the moniker without options; an address keeps its own query
    DString name;     ///< what GDAL is given
    DString diskPath; ///< the file or folder that it lies in; empty on the network
    Reach reach = Reach::Local;
    std::optional<DataFolder> folder; ///< what the folder at `diskPath` is, if it is one
    DString layer;                    ///< the one layer meant; empty for all
    DString group;                    ///< the one group of members meant; empty for the whole
    std::vector<std::pair<DString, DString>> options;
    std::optional<services::ServiceAddress> service; ///< of a thing in a map service, which has no other name
};

/// Nothing, with the reason in `*error` (may be null), unless the moniker names a plain file that is there, a folder
/// that is a data set, something inside one of these, or an address on the network.
[[nodiscard]] std::optional<Source> Resolve(BDIMoniker const &moniker, DError *error);

/// An open data set and the format that read it.
struct OpenedSource {
    DatasetPtr dataset;
    Format const *format = nullptr;
    explicit operator bool() const { return dataset != nullptr && format != nullptr; }
};
/// Opens read-only, with `only` or, if it is null, with whichever allowed format reads it. `flags` are GDAL_OF_RASTER
/// and GDAL_OF_VECTOR. Options that the format does not know are left out with a line in the log.
/// Where `error` is not null it says why nothing opens, which may take another look at the file.
[[nodiscard]] OpenedSource Open(Source const &source, unsigned flags, Format const *only, DError *error);
/// The format that GDAL would read it with, told by its first bytes; null if none.
[[nodiscard]] Format const *Identify(Source const &source, unsigned flags, Format const *only);
/// All formats that take it for theirs, in GDAL's order.
[[nodiscard]] std::vector<Format const *> IdentifyAll(Source const &source, unsigned flags);

/// GDAL's name of an address ("http://...", "s3://...", "smb://..."): its virtual file system's, with the password that
/// was typed for it. Empty for a scheme that is not supported.
[[nodiscard]] DString VirtualNameOf(DString const &url);
/// The address without bytes that must not stand in one as they are.
[[nodiscard]] DString EscapedUrl(std::string_view url);

} // namespace zelvar::gdal
