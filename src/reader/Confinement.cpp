#include "zelvar/reader/Confinement.h"

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/base/Report.h"
#include "zelvar/reader/Sanitizers.h"
#include "zelvar/reader/WriteBarrier.h"

#include <algorithm>
#include <climits>
#include <csignal>
#include <utility>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>

namespace zelvar::reader {

namespace {

void CloseBetween(unsigned first, unsigned last) {
    if (first > last || syscall(SYS_close_range, first, last, 0) == 0)
        return;
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit); // before Linux 5.9, one by one
    for (unsigned file = first; file <= last && file < limit.rlim_cur; ++file)
        close(static_cast<int>(file));
}

void CloseAllBut(std::vector<int> keep) {
    std::ranges::sort(keep);
    unsigned first = STDERR_FILENO + 1;
    for (int const file : keep) {
        CloseBetween(first, static_cast<unsigned>(file) - 1);
        first = static_cast<unsigned>(file) + 1;
    }
    CloseBetween(first, UINT_MAX);
}

void SilenceStandardFiles() {
    FileDescriptor const null(open("/dev/null", O_RDWR | O_CLOEXEC));
    for (int const file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (file != STDERR_FILENO || !kIsSanitized)
            dup2(null.Get(), file);
}

/// Signals arrive as in a fresh program; those of a terminal are the application's affair.
void ResetSignals() {
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    for (int const number : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE})
        std::signal(number, SIG_IGN);
}

void LeaveNoCore() {
    rlimit const none{.rlim_cur = 0, .rlim_max = 0};
    setrlimit(RLIMIT_CORE, &none);
    prctl(PR_SET_DUMPABLE, 0); // a program that collects cores gets none either
}

} // namespace

void Confine(Reach reach, std::vector<int> keep, std::vector<DString> const &readable) {
    ResetSignals();
    CloseAllBut(std::move(keep));
    SilenceStandardFiles();
    LeaveNoCore();
    bool const isBound = prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0;
    bool const hasBarrier = isBound && RaiseWriteBarrier(reach, readable);
    bool const hasFilter = isBound && SyscallFilter(reach).Apply();
    if (!hasBarrier)
        Report::TraceMessage(Report::kTraceOpen, "reader: the kernel does not bar writing");
    if (!hasFilter)
        Report::TraceMessage(Report::kTraceOpen, "reader: the kernel does not filter calls");
}

} // namespace zelvar::reader
