#pragma once

namespace zelvar {

/// The columns of a list of items, by their numbers.
enum ListColumn {
    kNameColumn = 0,
    kSizeColumn = 1,
    kDateColumn = 2,
    kFolderColumn = 3, ///< of the results of a search alone
};

} // namespace zelvar
