#pragma once

#include "zelvar/data/gdal/FolderTree.h"

namespace zelvar::gdal {

/// Whether an address is one of an object store.
[[nodiscard]] bool IsOfStore(std::string_view url);
/// GDAL's name of what an address of an object store ("s3://profile@bucket/key") names; empty for another address. The
/// account, which tells connections apart, is none of it.
[[nodiscard]] DString StoreNameOf(std::string_view url);
/// The address of what is called `name` in `folder`, which may be that of all buckets: "s3://", "s3://profile@".
[[nodiscard]] DString ObjectIn(DString const &folder, DString const &name);

/// How all names that a mask lets through begin: "run7" of "run7*.tif". Empty where that cannot be told, as for several
/// masks. A store tells capitals from small letters, and so does a beginning.
[[nodiscard]] DString PrefixOf(DString const &mask);

/// Begins to list what lies in a folder of an object store, or all buckets, in parts of a thousand keys at most: what a
/// store sends for one request. `prefix`: how the names begin; empty for all. Nothing is asked before the first part.
[[nodiscard]] std::unique_ptr<FolderListing> ListStore(DString const &folder, DString const &prefix);

} // namespace zelvar::gdal
