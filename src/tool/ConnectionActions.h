#pragma once

#include "zelvar/tool/CommandLine.h"

namespace zelvar::tool {

// What "zelvar sources" does with connections; the words are the action and what it is about. Each answers with the
// exit code.
int AddSource(Arguments const &arguments);
int RemoveSource(Arguments const &arguments);
/// Step by step, a line each on stdout, until one fails or the user stops it: `kNothing` then.
int TestSource(Arguments const &arguments);
int ExportSource(Arguments const &arguments);
int ImportSources(Arguments const &arguments);

} // namespace zelvar::tool
