#pragma once

#include <QtCore/QCoreApplication>
#include <QtCore/QString>

namespace zelvar {

/// While it lives, the toolkit's file dialog neither reads nor writes what all programs of the user share: a folder
/// that another program visited last may lie on a server that has gone, and our few places must not replace the user's.
/// Nor is a dialog of the desktop made. Lives while such a dialog is made or destroyed, no longer: it holds for all of
/// the process.
class ToolkitSettings {
public:
    ToolkitSettings();
    ToolkitSettings(ToolkitSettings const &) = delete;
    ToolkitSettings &operator=(ToolkitSettings const &) = delete;
    ~ToolkitSettings();

private:
    QString m_folder;
    bool m_hadNoNativeDialogs;
};

} // namespace zelvar
