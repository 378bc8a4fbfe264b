#pragma once

#include "zelvar/data/reader/ReaderSettings.h"

namespace zelvar {

/// Makes the installed drivers the provider of drivers, working in processes of their own: the program `zelvar-reader`
/// is started at the first question to a driver manager, or by `WarmReaders`. GDAL is not loaded into this process.
/// Without the program there are no drivers, with a line in the log.
ZELVAR_API void UseReaderDrivers(ReaderSettings const &settings = {});
/// The same drivers in this process: the module is loaded, with GDAL, at the first question and stays loaded. What a
/// damaged file does to a driver it then does to the application.
ZELVAR_API void UseOwnProcessDrivers();

/// Starts the first readers, where they are used, and does not wait: whoever asks soon finds them ready. Any thread.
ZELVAR_API void WarmReaders();

/// What became of the last request for a moniker that ended its reader; empty if none did.
[[nodiscard]] ZELVAR_API DString ReaderFailureOf(DString const &moniker);

/// Figures for tests and reports.
struct ReaderCounts {
    int alive = 0;
    int started = 0;
    int killed = 0;     ///< by this side: late, stopped without an answer, too large
    int crashed = 0;    ///< by themselves
    int leftBehind = 0; ///< killed and not gone yet: blocked in the kernel
};
[[nodiscard]] ZELVAR_API ReaderCounts CountReaders();
/// Ends the readers of one connection, whose sockets close with them; `id` is that of its terms. Requests under way
/// fail as if they had been stopped, the next one starts new readers. Does not wait. Any thread.
ZELVAR_API void EndReadersOf(DString const &id);
/// Ends all readers and forgets what they told of files; counts begin anew. Requests under way fail; the next one
/// starts new readers.
ZELVAR_API void EndReaders();

} // namespace zelvar
