#pragma once

namespace zelvar {

/// What the open dialog offers beyond its panes: bits for `DlgOpenDS::SetFeatures`. The list of items has a context
/// menu where data sets, the search, the basket or favourites have something to say in it.
enum OpenFeatures : unsigned {
    kOpenPlain = 0,        ///< its panes alone
    kOpenDataSets = 1,     ///< files that belong together have one row
    kOpenLine = 2,         ///< a line that says what OK will do
    kOpenOptions = 4,      ///< an option page made from what the driver says, where none is installed
    kOpenPreviewBar = 8,   ///< which channel, slice and frame the preview shows
    kOpenSeries = 16,      ///< with data sets: numbered files have one row, unless the user unfolds them
    kOpenConnections = 32, ///< connections can be made and changed in the list of data sources; pictures of nodes
    kOpenSearch = 64,      ///< a search below the place that is shown, by name and by what images hold
    kOpenThumbnails = 128, ///< the list of items can show thumbnails in place of rows
    kOpenBasket = 256,     ///< where several items can be picked: a basket that gathers them across folders
    kOpenHistory = 512,    ///< back and forward, and recent places
    kOpenFavorites = 1024, ///< favourites of anything, with names, groups and an order
    kOpenAll = 63 | kOpenSearch | kOpenThumbnails | kOpenBasket | kOpenHistory | kOpenFavorites,
};

} // namespace zelvar
