#pragma once

#include <cstdlib>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

/// Included by the sources that tools/mutants.sh has changed: each change stands in the program beside what it
/// replaces.
namespace zelvar_mutant {

/// Which change holds in this process. Read before main() begins: a reader may open no file later.
struct __attribute__((visibility("default"))) State {
    State() {
        if (char const *const number = std::getenv("ZELVAR_MUTANT"))
            change = std::atoi(number);
        char const *const trace = std::getenv("ZELVAR_MUTANT_TRACE");
        int const file = trace != nullptr ? open(trace, O_RDWR | O_CLOEXEC) : -1;
        struct stat status = {};
        if (file >= 0 && fstat(file, &status) == 0) {
            void *const bytes =
                mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
            reached = bytes != MAP_FAILED ? static_cast<char *>(bytes) : nullptr;
        }
        if (file >= 0)
            close(file);
    }

    int change = 0;          ///< 0: none
    char *reached = nullptr; ///< a byte a change, in a file that a test's processes share; null without a trace
};
__attribute__((visibility("default"))) inline State const state;

inline bool On(int change) {
    if (state.reached != nullptr)
        state.reached[change] = 1;
    return state.change == change;
}

} // namespace zelvar_mutant
