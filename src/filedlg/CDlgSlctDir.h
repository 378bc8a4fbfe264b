#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Translation.h"

class QWidget;

namespace zelvar {

/// Select directory: asks the user for a folder.
///
/// A stack object: filled with the setters, run with `DoBrowse`, then read. Only one browser that was given a folder to
/// start in is open at a time in the process. User interface thread.
class ZELVAR_API CDlgSlctDir {
public:
    /// `owner` may be null.
    explicit CDlgSlctDir(QWidget *owner = nullptr) : m_hwndOwner(owner) {}
    CDlgSlctDir(CDlgSlctDir const &) = default;
    CDlgSlctDir(CDlgSlctDir &&) = default;
    CDlgSlctDir &operator=(CDlgSlctDir const &) = default;
    CDlgSlctDir &operator=(CDlgSlctDir &&) = default;
    virtual ~CDlgSlctDir() = default;

    /// Key of protocols' folders.
    static DString const strPrtclDir;

    void SetTitle(DString title) { m_title = std::move(title); }
    /// Where the folder is remembered: an entry of the profile's "Settings", and the key of a folder history.
    void SetKey(DString key) { m_key = std::move(key); }
    /// Where to start; without one at the folder remembered under the key.
    void SetInitDir(DString folder) { m_initDir = std::move(folder); }
    /// Masks of which a folder must hold a match to be chosen, as "*.dlx".
    void SetFilter(DString masks) { m_filter = std::move(masks); }
    /// Whether there is a button for a new folder.
    void EnableNewFolder(bool enable) { m_bNoNewFolderHidden = enable; }

    /// Nonzero if a folder was chosen; 0 as well while another browser is open, which then comes to the top.
    int DoBrowse();

    [[nodiscard]] DString const &GetPath() const { return m_path; }
    [[nodiscard]] DString const &GetInitDir() const { return m_initDir; }
    /// Index of the chosen folder's picture; all folders look alike here.
    [[nodiscard]] int GetImage() const { return m_image; }

private:
    void FindInitDir();

    DString m_path;
    DString m_initDir;
    DString m_title = Translated("Open");
    DString m_key;
    DString m_filter;
    int m_image = 0;
    bool m_bNoNewFolderHidden = true;
    QWidget *m_hwndOwner; ///< not owned
};

} // namespace zelvar
