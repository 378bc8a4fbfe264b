#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Export.h"
#include "zelvar/pixels/DCanvas.h"

#include <QtGui/QPixmap>

#include <list>
#include <unordered_map>

namespace zelvar {

/// Thumbnails as they are drawn, by name, those used last: what was seen before is there at once. User-interface
/// thread.
class ZELVAR_API ThumbnailPictures {
public:
    struct Picture {
        QPixmap pixmap{}; ///< null where there is none
        int side = 0;     ///< that it was fitted into, device pixels
    };
    static constexpr qsizetype kMostBytes = qsizetype{128} << 20U;

    /// `most`: bytes of pixels; the picture that was not used for longest makes room for another.
    explicit ThumbnailPictures(qsizetype most = kMostBytes) : m_most(most) {}

    /// Null if it is not known. Valid until the next `Keep`.
    [[nodiscard]] Picture const *Find(DString const &name);
    void Keep(DString const &name, int side, DCanvas const &canvas, qreal devicePixelRatio);
    void Clear();
    [[nodiscard]] qsizetype Bytes() const { return m_bytes; }

private:
    struct Entry {
        DString name;
        Picture picture;
    };
    using Entries = std::list<Entry>;
    void Drop(Entries::iterator entry);

    qsizetype m_most;
    qsizetype m_bytes = 0;
    Entries m_entries; ///< used last first
    std::unordered_map<DString, Entries::iterator> m_places;
};

} // namespace zelvar
