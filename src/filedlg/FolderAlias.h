#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/FileDescriptor.h"

#include <QtCore/QString>

namespace zelvar {

/// A folder and a path to it that the toolkit can hold. For a folder whose path is not UTF-8 this is the kernel's name
/// for it as an open file of this process, which lasts as long as the object.
class FolderAlias {
public:
    explicit FolderAlias(DString folder);

    [[nodiscard]] DString const &Folder() const { return m_folder; } ///< bytes, as the file system has it
    [[nodiscard]] QString const &Path() const { return m_path; }

private:
    DString m_folder;
    FileDescriptor m_opened;
    QString m_path;
};

} // namespace zelvar
