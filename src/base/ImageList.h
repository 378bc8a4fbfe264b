#pragma once

#include "zelvar/base/Color.h"
#include "zelvar/base/DString.h"

#include <memory>

namespace zelvar {

/// What one picture of an image list shows. The user interface turns it into pixels at the device's pixel ratio.
struct ImageDescription {
    enum class Kind {
        ThemeIcon, ///< `name` is an icon name of the desktop's theme, `fallback` the resource used without it
        File,      ///< `name` is the path of a picture file
        Strip,     ///< picture `index` of the resource strip `name`
        Shape,     ///< `shape` in the colours `fill` and `border`
    };
    enum class Shapes { SmallCircle, Circle, DottedCircle, Rectangle };
    Kind kind = Kind::ThemeIcon;
    DString name{};
    DString fallback{};
    int index = 0;
    Shapes shape = Shapes::SmallCircle;
    ColorRef fill = 0;
    ColorRef border = 0;
    bool linkOverlay = false; ///< the mark of a symbolic link is drawn over the lower left corner

    friend bool operator==(ImageDescription const &, ImageDescription const &) = default;
};

/// List of small pictures by index. Any thread may add and read; entries never change once added.
class ZELVAR_API ImageList {
public:
    ImageList();
    ImageList(ImageList const &other); ///< a copy with a number of its own
    ImageList &operator=(ImageList const &) = delete;
    ~ImageList();

    /// Index of the entry, which is added if no equal one exists.
    int Add(ImageDescription const &description);
    [[nodiscard]] int GetCount() const;
    /// A default-made description outside the list.
    [[nodiscard]] ImageDescription Get(int index) const;
    /// Differs for every list of the process: the key under which pixels are cached.
    [[nodiscard]] unsigned Id() const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

/// Handle of an image list: not owned, null for none.
using HIMAGELIST = ImageList const *;

} // namespace zelvar
