#include "zelvar/filedlg/FilePictures.h"

#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QFileInfo>

namespace zelvar {

FilePictures::FilePictures()
    : m_folder(platform::ResourceIcon(QStringLiteral("folder"))),
      m_drive(platform::ResourceIcon(QStringLiteral("drive"))), m_file(platform::ResourceIcon(QStringLiteral("file"))) {
}

QIcon FilePictures::icon(IconType type) const {
    switch (type) {
    case Folder:
    case Desktop:
    case Trashcan:
        return m_folder;
    case File:
        return m_file;
    case Computer:
    case Network:
    case Drive:
        break;
    }
    return m_drive;
}

QIcon FilePictures::icon(QFileInfo const &info) const { return info.isDir() ? m_folder : m_file; }

QString FilePictures::type(QFileInfo const &info) const {
    if (info.isDir())
        return platform::Shown("Folder");
    QString const extension = info.suffix().toUpper();
    return extension.isEmpty() ? platform::Shown("File") : platform::Shown("%1 File").arg(extension);
}

} // namespace zelvar
