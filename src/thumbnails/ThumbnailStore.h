#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Export.h"
#include "zelvar/pixels/DCanvas.h"

#include <cstdint>
#include <optional>

namespace zelvar {

/// What a thumbnail is kept under, and what it must be in keeping with.
struct ThumbnailKey {
    DString uri{};             ///< of the item
    std::int64_t modified = 0; ///< of the file that it lies in, seconds since 1970 UTC
    std::int64_t size = -1;    ///< bytes of that file; -1 if unknown
    bool isShared = false;     ///< a whole file: file managers know it by the same URI
    bool takesForeign = false; ///< what other programs made of it serves
};

/// The thumbnails of the user, on disk, as desktops keep them: "thumbnails/normal", "large", "x-large" and "xx-large"
/// in the folder for caches, of 128, 256, 512 and 1024 pixels, shared with file managers. What these cannot name, nodes
/// inside containers, items with options and folders that are data sets, is kept the same way in
/// "zelvar/thumbnails" beside. That a file has none is noted in "fail/zelvar-VERSION" of either.
///
/// What another program made is used, but not of formats that may hold wide samples, as TIFF and PNG: there others show
/// the upper eight bits, or what their decoder makes of them, which is black for most of such images. Ours takes its
/// place, for all. Of formats that no other program shows what is there was made by our command.
///
/// What cannot be read or written, as on a full disk, is silently not there. Any thread.
class ZELVAR_API ThumbnailStore {
public:
    /// `folder` is the one for caches; empty for none, which keeps nothing.
    explicit ThumbnailStore(DString folder = UsualFolder());

    /// XDG_CACHE_HOME, else ".cache" in the user's home; empty without either.
    [[nodiscard]] static DString UsualFolder();
    /// The side of the smallest kept size that is not smaller than `side` pixels; 1024 at most.
    [[nodiscard]] static int KeptSide(int side);
    /// "file:///a%20b": as file managers write the URI of a file.
    [[nodiscard]] static DString FileUri(std::string_view path);

    /// What a path or moniker is kept under: looks at the file behind it. Nothing for what is no file on this machine,
    /// has no time, or lies in the folders of thumbnails itself.
    [[nodiscard]] std::optional<ThumbnailKey> KeyOf(DString const &moniker) const;

    /// A thumbnail of at least the kept size for `side` that is in keeping with its file.
    [[nodiscard]] std::optional<DCanvas> Find(ThumbnailKey const &key, int side) const;
    /// Whether the file had none when it was as it is.
    [[nodiscard]] bool HasFailed(ThumbnailKey const &key) const;
    /// `picture` should have the kept size for `side` as its longer side, or less where the item is smaller.
    void Keep(ThumbnailKey const &key, int side, DCanvas const &picture) const;
    void KeepFailure(ThumbnailKey const &key) const;

    /// Where those lie that no other program knows; nobody else keeps that folder within bounds. Empty for nowhere.
    [[nodiscard]] DString OwnFolder() const;

private:
    /// Where the thumbnail of that name of a folder lies; empty for nowhere.
    [[nodiscard]] DString PathOf(ThumbnailKey const &key, DString const &sizeFolder) const;
    void Write(ThumbnailKey const &key, DString const &sizeFolder, DCanvas const &picture) const;

    DString m_folder;
};

} // namespace zelvar
