#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/base/DFile.h"

#include <map>

namespace zelvar {

/// Default folders: which folders a file dialog offers for a kind of document, and which of them the user took last.
///
/// The defaults come from the product's configuration; the history is kept per key in the user's settings, section
/// "DefaultFolders", newest first; that of the present project (`SetProject`) beside, and before it. User interface
/// thread.
class ZELVAR_API DfltFldrs {
public:
    /// The object of the process, made at the first call.
    static DfltFldrs *Instance();
    [[nodiscard]] static bool HasInstance();
    /// A later `Instance` starts afresh: what `Load` and `SetDfltFldrs` put in is gone.
    static void DeleteInstance();

    /// The defaults of the product. Folders are written in `style`.
    explicit DfltFldrs(PathStyle style = PathStyle::Native());
    DfltFldrs(DfltFldrs const &) = default;
    DfltFldrs(DfltFldrs &&) = default;
    DfltFldrs &operator=(DfltFldrs const &) = default;
    DfltFldrs &operator=(DfltFldrs &&) = default;
    virtual ~DfltFldrs();

    /// Numbers of special folders.
    enum SpecialFolderId : unsigned {
        CSIDL_PERSONAL = 5, ///< the user's documents
        CSIDL_DESKTOPDIRECTORY = 16,
        CSIDL_MYPICTURES = 39,
        CSIDL_COMMON_DOCUMENTS = 46,
    };
    /// The folder's path, ending in a separator. False, and `path` as it was, if the system names none.
    static bool GetSpecialFolder(unsigned int csidl, DString &path, PathStyle style = PathStyle::Native());
    /// The path that one of the words "Desktop", "My Documents" or a text beginning with "InstallDir" stands for;
    /// anything else comes back unchanged.
    [[nodiscard]] static DString TranslateSpecialPath(DString path, PathStyle style = PathStyle::Native());

    /// Sets a key for each child of the file's root: the element's name and its attribute "path". False, and nothing
    /// changed, if the file does not parse.
    bool Load(DFile const &file);
    /// Replaces the folders of a key, separated by ";". Null counts as empty.
    void SetDfltFldrs(char const *key, char const *folders);
    /// The folders to offer for `key`: the history, then those defaults that it does not hold.
    void GetDirHist(char const *key, DVectorSafe<DString> &out, bool withDefaults, bool withHistory) const;
    /// Puts `folder` at the head of the history of `key`.
    void SaveDirHist(char const *key, DString const &folder) const;

private:
    /// Destroys the singleton when the library unloads.
    class CAutoDel {
    public:
        CAutoDel() = default;
        CAutoDel(CAutoDel const &) = delete;
        CAutoDel &operator=(CAutoDel const &) = delete;
        ~CAutoDel() { DeleteInstance(); }
    };
    static DfltFldrs *m_pSingleInstance;
    static CAutoDel m_autoDelete;

    [[nodiscard]] DVectorSafe<DString> HistoryOf(DString const &key) const; ///< as it is stored
    /// Appends the defaults of `key` that are not there yet.
    void AddDefaults(DString const &key, DVectorSafe<DString> &folders) const;
    /// The history with `folder` at its head, as it is stored.
    [[nodiscard]] DString HistoryWith(DString const &key, DString const &defaultsKey, DString const &folder) const;

    PathStyle m_style;
    std::map<DString, DString> m_folders; ///< folders of each key, separated by ";"
};

} // namespace zelvar
