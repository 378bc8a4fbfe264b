#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/Geometry.h"
#include "zelvar/base/ImageList.h"

#include <memory>
#include <vector>

class QIcon;
class QPainter;
class QWidget;

namespace zelvar {

/// Image list of a control: its small pictures, made and cleared with it.
///
/// To a core `ImageList` it adds pictures by registered numbers, coloured shapes, the side of the pictures, and drawing
/// them. An index once given stays what it is: pictures are never replaced or removed one by one.
///
/// Icons are asked for by the numbers under which the application has registered their names.
class ZELVAR_API CZelImageList {
public:
    CZelImageList();
    ~CZelImageList();
    CZelImageList(CZelImageList const &) = delete;
    CZelImageList &operator=(CZelImageList const &) = delete;

    /// The picture that stands for a number everywhere: an icon of the desktop's theme and, where that has none, one of
    /// our own by name or resource path. User-interface thread.
    static void RegisterIcon(unsigned iconId, DString const &themeName, DString const &fallback);
    /// What is registered under a number; null for none. Valid until that number is registered again.
    [[nodiscard]] static ImageDescription const *FindIcon(unsigned iconId);

    /// The numbers that icons are registered under, in order.
    [[nodiscard]] static std::vector<unsigned> RegisteredIcons();

    /// The strip of pictures that stands for a bitmap's number everywhere: a name as `ImageDescription` takes it.
    static void RegisterBitmap(unsigned bitmapId, DString const &strip);

    /// The control that shows the pictures; it is painted anew when one is added.
    void Bind(QWidget *window) { m_window = window; }
    void Create();
    /// With the pictures of a registered bitmap, `cx` pixels wide each. Does nothing if there is a list. The strips are
    /// transparent by themselves, whatever colour `mask` is, and the list grows as it must.
    void Create(unsigned bitmapId, int cx, int grow, unsigned long mask);
    /// Back to no list; its handle is void.
    void Clear();
    [[nodiscard]] bool IsCreated() const { return m_list != nullptr; }
    /// Null before `Create`.
    [[nodiscard]] HIMAGELIST GetHandle() const { return m_list.get(); }
    [[nodiscard]] int GetCount() const { return m_list == nullptr ? 0 : m_list->GetCount(); }

    /// Index of a picture, added when it is new; -1 before `Create`.
    int Add(ImageDescription const &description);
    /// Index of the picture in `file` or, for a null or empty one, of the registered icon; -1 if there is neither.
    int GetIcon(unsigned iconId, char const *file);
    // Indexes of small shapes; -1 before `Create`.
    int GetCircleSmall(ColorRef fill, ColorRef border);
    int GetRect(ColorRef fill, ColorRef border); ///< in the box (2, 2, 14, 14)
    /// In the box (1, 1, 16, 15); `flag` marks its middle with a dot.
    int GetCircle(ColorRef fill, ColorRef border, bool flag);
    [[nodiscard]] int GetPictureSide() const { return m_side; } ///< pixels
    /// For pictures drawn from now on; a side below 1 is none.
    void SetPictureSide(int side);

    /// Takes over the pictures of `other` at the same indexes, and their side. The handle is a new one.
    void Copy(CZelImageList const &other);
    /// What a picture shows; false outside.
    bool GetImageInfo(int index, ImageDescription &description) const;
    /// Draws a picture with its upper left corner at `at`, washed out if not `enabled`. False outside.
    bool Draw(QPainter &painter, Point at, int index, bool enabled = true) const;
    /// A picture for buttons and actions, sharp at any size, washed out while disabled; empty outside. It does not need
    /// the list any more.
    [[nodiscard]] QIcon ExtractIcon(int index) const;

private:
    std::unique_ptr<ImageList> m_list;
    int m_side = 16;
    QWidget *m_window = nullptr; ///< not owned
};

} // namespace zelvar
