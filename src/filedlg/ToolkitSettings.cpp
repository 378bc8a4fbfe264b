#include "zelvar/filedlg/ToolkitSettings.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSettings>

namespace zelvar {

namespace {

void KeepSettingsIn(QString const &folder) {
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder);
}

} // namespace

ToolkitSettings::ToolkitSettings()
    : m_folder(QFileInfo(QSettings(QSettings::UserScope, QStringLiteral("QtProject")).fileName()).path()),
      m_hadNoNativeDialogs(QCoreApplication::testAttribute(Qt::AA_DontUseNativeDialogs)) {
    KeepSettingsIn(QStringLiteral("/dev/null")); // no folder: nothing is found there, nothing can be written
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
}

ToolkitSettings::~ToolkitSettings() {
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, m_hadNoNativeDialogs);
    KeepSettingsIn(m_folder);
}

} // namespace zelvar
