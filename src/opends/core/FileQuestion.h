#pragma once

#include "zelvar/base/DString.h"

#include <functional>
#include <optional>

class QWidget;

namespace zelvar {

/// What a file is asked for. Texts as they were marked for translation.
struct FileQuestion {
    char const *title = "";
    char const *kind = "";      ///< of files, as "Connections (*.xml)"
    char const *extension = ""; ///< without its dot
    char const *name = "";      ///< that is proposed for saving
    bool saves = false;         ///< else a file that is there
};

/// The path of a file to write or to read, or nothing if the user cancels. Modal over `parent`. What asks stands above
/// the open dialog, so `library/` brings it in.
using FileQuestionProvider = std::function<std::optional<DString>(QWidget *parent, FileQuestion const &question)>;
/// Null for nobody: then every answer is nothing. User-interface thread.
ZELVAR_API void SetFileQuestionProvider(FileQuestionProvider provider);
[[nodiscard]] ZELVAR_API std::optional<DString> AskForFile(QWidget *parent, FileQuestion const &question);

} // namespace zelvar
