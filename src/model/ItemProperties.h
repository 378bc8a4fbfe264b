#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/RDIDriver.h"
#include "zelvar/model/DLGTemplate.h"
#include "zelvar/pixels/DCanvas.h"

#include <map>
#include <span>

namespace zelvar {

/// Property texts by the number of their row.
using PropertyMap = std::map<int, DString>;

/// A row of the property pane.
struct PropertyRow {
    int id = 0;
    char const *group = ""; ///< "File" or "Image"
    char const *name = "";
};
/// All rows, in the order in which they are shown.
[[nodiscard]] ZELVAR_API std::span<PropertyRow const> PropertyRows();
/// Further ones that some images have. Of a numbered series of files: its members, and how they differ; of a map: where
/// it lies. The pane has no rows for them.
[[nodiscard]] ZELVAR_API std::span<PropertyRow const> MorePropertyRows();

/// How many parts of an image there are to look at; zeros without an image.
struct ImageExtent {
    int channels = 0;
    int slices = 0;
    int frames = 0;
    [[nodiscard]] bool operator==(ImageExtent const &) const = default;
};
/// As the rows tell it.
[[nodiscard]] ZELVAR_API ImageExtent ExtentOf(PropertyMap const &props);

/// Reads what is known of an item: of the file behind it, and, unless a document is picked, of the image in it.
/// `options` is what stands behind "?". True if the item could be opened as an image, or if a document is picked; a
/// file that cannot be asked leaves its rows out and is no failure. Any thread; `stop` may be null, and so may `error`,
/// which else says why no image was opened, and `image`, which else tells the same as the rows.
ZELVAR_API bool ReadItemProperties(DString const &path, DString const &driverId, DString const &options,
                                   DLGTemplate dlgTemplate, StopSignal const *stop, PropertyMap &props,
                                   DError *error = nullptr, ImageInfo *image = nullptr);

/// Reads a picture of the item, its longer side 1024 pixels, or without enlarging at most that. False, and `canvas`
/// cleared, if there is none: no image, too large without a pyramid, or stopped. `error` and `read` as `ReadPreview`.
ZELVAR_API bool ReadItemPreview(DString const &path, DString const &driverId, DString const &options,
                                StopSignal const *stop, DCanvas &canvas, Enlarge enlarge = Enlarge::Yes,
                                DError *error = nullptr, RDIRowsRead *read = nullptr, PreviewChoice const &choice = {});
/// The values that the picture shows, see `ReadPreviewValues`.
ZELVAR_API bool ReadItemValues(DString const &path, DString const &driverId, DString const &options,
                               StopSignal const *stop, PreviewChoice const &choice, PreviewValues &values);

} // namespace zelvar
