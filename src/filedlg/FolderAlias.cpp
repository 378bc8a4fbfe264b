#include "zelvar/filedlg/FolderAlias.h"

#include "zelvar/filedlg/NameBytes.h"
#include "zelvar/platform/ui/Text.h"

#include <fcntl.h>

namespace zelvar {

FolderAlias::FolderAlias(DString folder)
    : m_folder(std::move(folder)),
      m_opened(IsUtf8(m_folder) ? -1 : open(m_folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)),
      m_path(m_opened.IsOpen() ? QStringLiteral("/proc/self/fd/%1").arg(m_opened.Get())
                               : platform::ToQString(m_folder)) {}

} // namespace zelvar
