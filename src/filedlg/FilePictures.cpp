#include "zelvar/filedlg/FilePictures.h"

#include "zelvar/platform/ui/Pictures.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>

namespace zelvar {

namespace {

/// Pixels, so that the thread that lists never draws.
QIcon DrawnIcon(QString const &name) {
    QIcon drawn;
    for (qreal const ratio : {1.0, 2.0})
        drawn.addPixmap(platform::ResourcePicture(name, ratio));
    return drawn;
}

} // namespace

FilePictures::FilePictures()
    : m_folder(DrawnIcon(QStringLiteral("folder"))), m_drive(DrawnIcon(QStringLiteral("drive"))),
      m_file(DrawnIcon(QStringLiteral("file"))) {}

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
        return QCoreApplication::translate("FilePictures", "Folder");
    QString const extension = info.suffix().toUpper();
    return extension.isEmpty() ? QCoreApplication::translate("FilePictures", "File")
                               : QCoreApplication::translate("FilePictures", "%1 File").arg(extension);
}

} // namespace zelvar
