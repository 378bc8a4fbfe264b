#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/ImageList.h"

#include <memory>

class QWidget;

namespace zelvar {

/// Image list of a control: its small pictures, made and cleared with it.
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

    /// The control that shows the pictures; it is painted anew when one is added.
    void Bind(QWidget *window) { m_window = window; }
    void Create();
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

private:
    std::unique_ptr<ImageList> m_list;
    QWidget *m_window = nullptr; ///< not owned
};

} // namespace zelvar
