#include "base/Confinement.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/landlock.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace orloview {

namespace {

/// What the kernel's interface has grown to, whatever the headers know of it.
struct Ruleset {
    std::uint64_t files = 0;
    std::uint64_t network = 0;
    std::uint64_t scope = 0;
};

/// 0 where the kernel has no Landlock.
long landlockVersion() {
    const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    return version > 0 ? version : 0;
}

/// All that a kernel of that version can deny.
Ruleset everything(long version) {
    const int fileRights = version >= 5 ? 16 : version >= 3 ? 15 : version == 2 ? 14 : 13;
    Ruleset all;
    all.files = (std::uint64_t{1} << fileRights) - 1;
    all.network = version >= 4 ? 3 : 0; // binding and connecting
    all.scope = version >= 6 ? 3 : 0;   // sockets without a file, signals
    return all;
}

void allowReading(int ruleset, const std::filesystem::path& path) {
    const int place = open(path.c_str(), O_PATH | O_CLOEXEC);
    struct stat status = {};
    if (place >= 0 && fstat(place, &status) == 0) {
        landlock_path_beneath_attr rule = {};
        rule.allowed_access = LANDLOCK_ACCESS_FS_READ_FILE;
        if (S_ISDIR(status.st_mode))
            rule.allowed_access |= LANDLOCK_ACCESS_FS_READ_DIR;
        rule.parent_fd = place;
        syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
    }
    if (place >= 0)
        close(place);
}

void confineFiles(const std::vector<std::filesystem::path>& readable) {
    const long version = landlockVersion();
    if (version == 0)
        return;
    const Ruleset denied = everything(version);
    const auto ruleset = static_cast<int>(syscall(SYS_landlock_create_ruleset, &denied, sizeof denied, 0));
    if (ruleset < 0)
        return;
    for (const char* libraries : {"/usr/lib", "/lib", "/lib64", "/etc/ld.so.cache"})
        allowReading(ruleset, libraries);
    for (const std::filesystem::path& path : readable)
        allowReading(ruleset, path);
    syscall(SYS_landlock_restrict_self, ruleset, 0);
    close(ruleset);
}

// io_uring opens sockets without a system call for each.
// clang-format off
constexpr std::array kDeniedCalls = {
    SYS_socket, SYS_socketpair, SYS_connect, SYS_bind, SYS_listen, SYS_accept, SYS_accept4,
    SYS_io_uring_setup, SYS_io_uring_enter, SYS_io_uring_register,
    SYS_execve, SYS_execveat, SYS_unshare, SYS_setns, SYS_bpf, SYS_perf_event_open, SYS_userfaultfd,
    SYS_kill, SYS_rt_sigqueueinfo, SYS_pidfd_open, SYS_pidfd_getfd, SYS_pidfd_send_signal,
    SYS_ptrace, SYS_process_vm_readv, SYS_process_vm_writev, SYS_process_madvise, SYS_kcmp,
    SYS_add_key, SYS_request_key, SYS_keyctl, SYS_open_by_handle_at,
};
// clang-format on

void confineCalls() {
    constexpr std::uint32_t kFirstOfOtherTable = 0x40000000; // the same calls by other numbers
    const auto load = [](size_t offset) {
        return sock_filter{BPF_LD | BPF_W | BPF_ABS, 0, 0, static_cast<std::uint32_t>(offset)};
    };
    const auto answer = [](std::uint32_t what) { return sock_filter{BPF_RET | BPF_K, 0, 0, what}; };
    const sock_filter refuse = answer(SECCOMP_RET_ERRNO | EPERM);
    // A comparison goes on with the next step where it holds, else with the one behind that.
    std::vector<sock_filter> steps = {load(offsetof(seccomp_data, arch)),
                                      {BPF_JMP | BPF_JEQ | BPF_K, 1, 0, AUDIT_ARCH_X86_64},
                                      answer(SECCOMP_RET_KILL_PROCESS),
                                      load(offsetof(seccomp_data, nr)),
                                      {BPF_JMP | BPF_JGE | BPF_K, 0, 1, kFirstOfOtherTable},
                                      refuse};
    for (const long call : kDeniedCalls) {
        steps.push_back({BPF_JMP | BPF_JEQ | BPF_K, 0, 1, static_cast<std::uint32_t>(call)});
        steps.push_back(refuse);
    }
    const std::array last = {sock_filter{BPF_JMP | BPF_JEQ | BPF_K, 0, 3, SYS_prlimit64},
                             load(offsetof(seccomp_data, args)), // 0: its own limits
                             sock_filter{BPF_JMP | BPF_JEQ | BPF_K, 1, 0, 0}, refuse,
                             answer(SECCOMP_RET_ALLOW)};
    steps.insert(steps.end(), last.begin(), last.end());
    const sock_fprog program{static_cast<unsigned short>(steps.size()), steps.data()};
    prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
}

} // namespace

void confine(const std::vector<std::filesystem::path>& readable) {
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    confineFiles(readable);
    confineCalls();
}

std::string whatIsNotConfined() {
    // Without a filter, a kernel that has them complains about that.
    const bool hasFilters = prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, nullptr) == 0 || errno == EFAULT;
    const std::string files = landlockVersion() == 0 ? "which files it opens (Landlock)" : "";
    const std::string calls = hasFilters ? "" : "what it asks of the system (seccomp)";
    return files + (files.empty() || calls.empty() ? "" : " and ") + calls;
}

} // namespace orloview
