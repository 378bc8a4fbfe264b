#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/Report.h"

#include <functional>

namespace zelvar::platform {

/// Shows what `Report` has for the user in message boxes over the active window, from whatever thread it comes: on
/// another one than the windows' the caller does not wait. Called once at the start.
ZELVAR_API void InstallUserMessages();
/// Gives the words to the user back to `Report`'s default.
ZELVAR_API void RemoveUserMessages();

/// Sees each message before its box; true means that no box is wanted. An empty hook takes it away.
using UserMessageHook = std::function<bool(Report::Severity severity, DString const &text)>;
ZELVAR_API void SetUserMessageHook(UserMessageHook hook);

} // namespace zelvar::platform
