#pragma once

namespace zelvar {

class DataSourceItem;
class ImageList;

/// The picture of what an item is, for one that brings none along: a node on a server, a connection.
struct KindPicture {
    ImageList const *list = nullptr; ///< not owned; null for no picture
    int index = -1;
};
/// Of a local item, and of one with a picture of its own, there is none. User-interface thread.
[[nodiscard]] KindPicture PictureOfKind(DataSourceItem const &item);

} // namespace zelvar
