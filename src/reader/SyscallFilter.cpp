#include "zelvar/reader/SyscallFilter.h"

#include <bit>
#include <cerrno>
#include <cstddef>

#include <linux/audit.h>
#include <linux/fs.h>
#include <linux/seccomp.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace zelvar::reader {

namespace {

static_assert(std::endian::native == std::endian::little, "arguments are looked at by their lower halves");

#if defined(__x86_64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_X86_64;
constexpr std::uint32_t kOtherCalls = 0x40000000; // those of the x32 form begin here
#elif defined(__aarch64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_AARCH64;
constexpr std::uint32_t kOtherCalls = 0;
#else
constexpr std::uint32_t kArchitecture = 0;
constexpr std::uint32_t kOtherCalls = 0;
#endif

// Younger than the system's headers; the numbers are the same on all processors.
constexpr long kFchmodat2 = 452;
constexpr long kSetxattrat = 463;
constexpr long kRemovexattrat = 466;
constexpr long kFileSetattr = 469;

constexpr long kNotPermitted[] = {
#ifdef __x86_64__ // Others have the younger forms alone.
    SYS_fork, SYS_vfork, SYS_chmod, SYS_chown, SYS_lchown, SYS_utime, SYS_utimes, SYS_futimesat, SYS_ioperm, SYS_iopl,
#endif
    // other programs, others' processes
    SYS_execve, SYS_execveat, SYS_ptrace, SYS_process_vm_readv, SYS_process_vm_writev, SYS_process_madvise, SYS_tkill,
    SYS_pidfd_open, SYS_pidfd_getfd, SYS_pidfd_send_signal, SYS_kcmp,
    // what is changed about files that are not opened for writing
    SYS_truncate, SYS_fchmod, SYS_fchmodat, kFchmodat2, SYS_fchown, SYS_fchownat, SYS_utimensat, SYS_setxattr,
    SYS_lsetxattr, SYS_fsetxattr, kSetxattrat, SYS_removexattr, SYS_lremovexattr, SYS_fremovexattr, kRemovexattrat,
    kFileSetattr,
    // what outlives a process
    SYS_shmget, SYS_msgget, SYS_semget, SYS_mq_open, SYS_mq_unlink, SYS_add_key, SYS_request_key, SYS_keyctl,
    // ways round the filter
    SYS_io_uring_setup, SYS_bpf, SYS_perf_event_open,
    // what a reader started by the superuser could do
    SYS_unshare, SYS_setns, SYS_chroot, SYS_pivot_root, SYS_mount, SYS_umount2, SYS_move_mount, SYS_open_tree,
    SYS_fsopen, SYS_fsmount, SYS_fspick, SYS_mount_setattr, SYS_swapon, SYS_swapoff, SYS_reboot, SYS_kexec_load,
    SYS_init_module, SYS_finit_module, SYS_delete_module, SYS_acct, SYS_quotactl, SYS_settimeofday, SYS_clock_settime,
    SYS_adjtimex, SYS_clock_adjtime, SYS_sethostname, SYS_setdomainname};

constexpr std::uint32_t kAllow = SECCOMP_RET_ALLOW;
constexpr std::uint32_t ErrorOf(int error) {
    return SECCOMP_RET_ERRNO | (static_cast<std::uint32_t>(error) & SECCOMP_RET_DATA);
}

sock_filter Statement(unsigned code, std::uint32_t value) {
    return {.code = static_cast<std::uint16_t>(code), .jt = 0, .jf = 0, .k = value};
}
/// Steps over the next `yes` or `no` statements.
sock_filter Jump(unsigned test, std::uint32_t value, std::uint8_t yes, std::uint8_t no) {
    return {.code = static_cast<std::uint16_t>(BPF_JMP | test | BPF_K), .jt = yes, .jf = no, .k = value};
}
sock_filter Load(std::size_t offset) { return Statement(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset)); }
sock_filter Return(std::uint32_t action) { return Statement(BPF_RET | BPF_K, action); }
sock_filter LoadArgument(unsigned argument) {
    return Load(offsetof(seccomp_data, args) + argument * sizeof(std::uint64_t));
}

} // namespace

SyscallFilter::SyscallFilter(Reach reach) {
    auto const self = static_cast<std::uint32_t>(getpid());
    CheckArchitecture();
    for (long const call : kNotPermitted)
        Refuse(call, EPERM);
    RefuseWithout(SYS_clone, 0, CLONE_THREAD, EPERM);
    Refuse(SYS_clone3, ENOSYS); // its flags cannot be looked at; who finds it missing takes the former one
    for (long const call : {SYS_kill, SYS_tgkill, SYS_rt_sigqueueinfo, SYS_rt_tgsigqueueinfo})
        RefuseUnless(call, 0, self, self, EPERM);
    RefuseUnless(SYS_prlimit64, 0, 0, self, EPERM);
    for (std::uint32_t const request :
         {static_cast<std::uint32_t>(FS_IOC_SETFLAGS), static_cast<std::uint32_t>(FS_IOC_FSSETXATTR)})
        RefuseIf(SYS_ioctl, 1, request, EPERM);
    if (reach == Reach::Local)
        for (long const call : {SYS_socket, SYS_socketpair})
            Refuse(call, EACCES);
    if (reach == Reach::Connection)
        AllowHandedSocketsAlone();
    m_program.push_back(Return(kAllow));
}

void SyscallFilter::AllowHandedSocketsAlone() {
    for (long const call : {SYS_connect, SYS_bind, SYS_listen, SYS_accept, SYS_accept4})
        Refuse(call, EACCES);
    constexpr std::uint32_t type = 0xF; // beside it stand flags
    constexpr std::uint32_t all = ~0U;
    // One protocol: another of streams connects by an option of its own.
    Demands(SYS_socket,
            {{.argument = 0, .mask = all, .values = {AF_INET, AF_INET6}},
             {.argument = 1, .mask = type, .values = {SOCK_STREAM}},
             {.argument = 2, .mask = all, .values = {0, IPPROTO_TCP}}},
            EACCES);
    // Pairs that wake threads; those of datagrams could speak to any name.
    Demands(SYS_socketpair,
            {{.argument = 0, .mask = all, .values = {AF_UNIX}}, {.argument = 1, .mask = type, .values = {SOCK_STREAM}}},
            EACCES);
    Demands(SYS_sendto,
            {{.argument = 3, .mask = MSG_FASTOPEN, .values = {0}},
             {.argument = 4, .mask = all, .values = {0}},
             {.argument = 4, .mask = all, .values = {0}, .ofUpperHalf = true}},
            EACCES);
    Demands(SYS_sendmsg, {{.argument = 2, .mask = MSG_FASTOPEN, .values = {0}}}, EACCES);
    Demands(SYS_sendmmsg, {{.argument = 3, .mask = MSG_FASTOPEN, .values = {0}}}, EACCES);
}

void SyscallFilter::CheckArchitecture() {
    m_program.push_back(Load(offsetof(seccomp_data, arch)));
    m_program.push_back(Jump(BPF_JEQ, kArchitecture, 1, 0));
    m_program.push_back(Return(ErrorOf(ENOSYS)));
    m_program.push_back(Load(offsetof(seccomp_data, nr)));
    if constexpr (kOtherCalls != 0) {
        m_program.push_back(Jump(BPF_JGE, kOtherCalls, 0, 1));
        m_program.push_back(Return(ErrorOf(ENOSYS)));
    }
}

void SyscallFilter::Refuse(long call, int error) {
    m_program.push_back(Jump(BPF_JEQ, static_cast<std::uint32_t>(call), 0, 1));
    m_program.push_back(Return(ErrorOf(error)));
}

void SyscallFilter::RefuseWithout(long call, unsigned argument, std::uint32_t bits, int error) {
    m_program.push_back(Jump(BPF_JEQ, static_cast<std::uint32_t>(call), 0, 4));
    m_program.push_back(LoadArgument(argument));
    m_program.push_back(Jump(BPF_JSET, bits, 1, 0));
    m_program.push_back(Return(ErrorOf(error)));
    m_program.push_back(Return(kAllow));
}

void SyscallFilter::RefuseUnless(long call, unsigned argument, std::uint32_t value, std::uint32_t other, int error) {
    m_program.push_back(Jump(BPF_JEQ, static_cast<std::uint32_t>(call), 0, 5));
    m_program.push_back(LoadArgument(argument));
    m_program.push_back(Jump(BPF_JEQ, value, 2, 0));
    m_program.push_back(Jump(BPF_JEQ, other, 1, 0));
    m_program.push_back(Return(ErrorOf(error)));
    m_program.push_back(Return(kAllow));
}

void SyscallFilter::RefuseIf(long call, unsigned argument, std::uint32_t value, int error) {
    m_program.push_back(Jump(BPF_JEQ, static_cast<std::uint32_t>(call), 0, 4));
    m_program.push_back(LoadArgument(argument));
    m_program.push_back(Jump(BPF_JEQ, value, 0, 1));
    m_program.push_back(Return(ErrorOf(error)));
    m_program.push_back(Load(offsetof(seccomp_data, nr))); // others may look at the same call
}

void SyscallFilter::Demands(long call, std::vector<Demand> const &demands, int error) {
    std::vector<sock_filter> body;
    for (Demand const &demand : demands) {
        constexpr std::size_t half = sizeof(std::uint32_t);
        body.push_back(Load(offsetof(seccomp_data, args) + demand.argument * sizeof(std::uint64_t) +
                            (demand.ofUpperHalf ? half : 0)));
        body.push_back(Statement(BPF_ALU | BPF_AND | BPF_K, demand.mask));
        for (std::size_t left = demand.values.size(); left > 0; --left) // a match steps over the rest and the refusal
            body.push_back(
                Jump(BPF_JEQ, demand.values[demand.values.size() - left], static_cast<std::uint8_t>(left), 0));
        body.push_back(Return(ErrorOf(error)));
    }
    body.push_back(Return(kAllow));
    m_program.push_back(Jump(BPF_JEQ, static_cast<std::uint32_t>(call), 0, static_cast<std::uint8_t>(body.size())));
    m_program.insert(m_program.end(), body.begin(), body.end());
}

bool SyscallFilter::Apply() const {
    if constexpr (kArchitecture == 0)
        return false;
    sock_fprog const program{.len = static_cast<unsigned short>(m_program.size()),
                             .filter = const_cast<sock_filter *>(m_program.data())};
    return syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_TSYNC, &program) == 0;
}

} // namespace zelvar::reader
