#pragma once

#include "zelvar/base/DString.h"

namespace zelvar {

/// Where the installation lies. ZELVAR_INSTALL_DIR wins; else it is found from where this library was loaded.
[[nodiscard]] ZELVAR_API DString GetInstallDir();
/// Its directory of programs, with a separator at the end.
[[nodiscard]] ZELVAR_API DString GetInstallBinDir();
/// Directory of the connection definitions; may be empty for none. ZELVAR_DEFINITIONS_DIR wins (an empty value means
/// none), else "zelvar/definitions" below the user's configuration directory.
[[nodiscard]] ZELVAR_API DString GetDataSourceDefinitionsDir();
/// Directory of templates, icons and option pages. ZELVAR_TEMPLATES_DIR wins (an empty value means none), else
/// "templates" below the installed shared data.
[[nodiscard]] ZELVAR_API DString GetDataSourceTemplatesDir();
/// The settings store's file. ZELVAR_SETTINGS wins, else "zelvar/settings.db" below the user's configuration directory.
[[nodiscard]] ZELVAR_API DString GetSettingsFile();
/// The file of the settings that hold for all users. ZELVAR_MACHINE_SETTINGS wins, else "/etc/xdg/zelvar/settings.db".
[[nodiscard]] ZELVAR_API DString GetMachineSettingsFile();

} // namespace zelvar
