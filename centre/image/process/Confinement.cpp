#include "centre/image/process/Confinement.h"

#include "centre/base/Error.h"
#include "components/bulkhaul/files/Folder.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/landlock.h>
#include <memory>
#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace centre {

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
#else
constexpr bool kSanitized = false;
#endif

void limit(__rlimit_resource resource, rlim_t value)
{
    const rlimit both = {value, value};
    if (::setrlimit(resource, &both) != 0)
        throw refusal(std::string("a resource limit can't be set: ") + std::strerror(errno));
}

/// Every right to files of the first version of Landlock, whose numbers have no gap.
constexpr std::uint64_t kAllRights = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1;

/// Leaves the files of the folders readable and nothing else. Returns false if the kernel lacks Landlock.
bool restrictFiles(const std::vector<std::string>& readable)
{
    landlock_ruleset_attr attributes = {};
    attributes.handled_access_fs = kAllRights;
    const bulkhaul::FileHandle rules(
        static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0)));
    if (!rules)
        return false;
    for (const std::string& path : readable) {
        const bulkhaul::FileHandle folder(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        landlock_path_beneath_attr rule = {};
        rule.allowed_access = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
        rule.parent_fd = folder.get();
        if (folder)
            ::syscall(SYS_landlock_add_rule, rules.get(), LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
    }
    return ::syscall(SYS_landlock_restrict_self, rules.get(), 0) == 0;
}

/// System calls by which a process reads what it has open, looks for names, keeps memory and ends.
constexpr int kAllowed[] = {
    SCMP_SYS(read),
    SCMP_SYS(pread64),
    SCMP_SYS(readv),
    SCMP_SYS(lseek),
    SCMP_SYS(fstat),
    SCMP_SYS(newfstatat),
    SCMP_SYS(statx),
    SCMP_SYS(stat),
    SCMP_SYS(lstat),
    SCMP_SYS(access),
    SCMP_SYS(faccessat),
    SCMP_SYS(faccessat2),
    SCMP_SYS(readlink),
    SCMP_SYS(readlinkat),
    SCMP_SYS(getcwd),
    SCMP_SYS(fcntl),
    SCMP_SYS(dup),
    SCMP_SYS(close),
    SCMP_SYS(fadvise64),
    SCMP_SYS(recvmsg),
    SCMP_SYS(sendmsg),
    SCMP_SYS(write),
    SCMP_SYS(writev),
    SCMP_SYS(munmap),
    SCMP_SYS(mremap),
    SCMP_SYS(madvise),
    SCMP_SYS(brk),
    SCMP_SYS(futex),
    SCMP_SYS(sched_yield),
    SCMP_SYS(sched_getaffinity),
    SCMP_SYS(sysinfo),
    SCMP_SYS(uname),
    SCMP_SYS(getpid),
    SCMP_SYS(gettid),
    SCMP_SYS(getuid),
    SCMP_SYS(geteuid),
    SCMP_SYS(getgid),
    SCMP_SYS(getegid),
    SCMP_SYS(getrandom),
    SCMP_SYS(clock_gettime),
    SCMP_SYS(gettimeofday),
    SCMP_SYS(clock_nanosleep),
    SCMP_SYS(nanosleep),
    SCMP_SYS(getrusage),
    SCMP_SYS(times),
    SCMP_SYS(rt_sigaction),
    SCMP_SYS(rt_sigprocmask),
    SCMP_SYS(rt_sigreturn),
    SCMP_SYS(sigaltstack),
    SCMP_SYS(tgkill),
    SCMP_SYS(restart_syscall),
    SCMP_SYS(set_robust_list),
    SCMP_SYS(rseq),
    SCMP_SYS(exit),
    SCMP_SYS(exit_group),
};

/// Allows a system call whose third argument has none of these bits.
bool allowWithout(scmp_filter_ctx filter, int call, scmp_datum_t bits)
{
    const scmp_arg_cmp third = {2, SCMP_CMP_MASKED_EQ, bits, 0};
    return seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, call, 1, &third) == 0;
}

/// All other system calls fail with EPERM.
void filterSystemCalls(bool mayOpen)
{
    const std::unique_ptr<void, decltype(&seccomp_release)> filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)),
                                                                   &seccomp_release);
    bool good = filter != nullptr;
    for (const int call : kAllowed)
        good = good && seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, 0) == 0;
    if (kSanitized) // by writing to a pipe they see whether memory can be read
        for (const int call : {SCMP_SYS(pipe), SCMP_SYS(pipe2)})
            good = good && seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, 0) == 0;
    // Memory that can be executed is never made.
    for (const int call : {SCMP_SYS(mmap), SCMP_SYS(mprotect)})
        good = good && allowWithout(filter.get(), call, PROT_EXEC);
    if (mayOpen)
        good = good && allowWithout(filter.get(), SCMP_SYS(openat), O_ACCMODE | O_CREAT | O_TRUNC);
    if (!good || seccomp_load(filter.get()) != 0)
        throw refusal("the kernel does not filter its system calls");
}

} // namespace

void limitResources(std::uint64_t memory)
{
    constexpr rlim_t kCpuSeconds = 300; // of all images that it reads; the centre ends a slow one before
    constexpr rlim_t kOpenFiles = 64;
    if (!kSanitized) // the sanitizers take terabytes of address space
        limit(RLIMIT_AS, memory);
    limit(RLIMIT_CPU, kCpuSeconds);
    limit(RLIMIT_NOFILE, kOpenFiles);
    limit(RLIMIT_FSIZE, 0);
    limit(RLIMIT_CORE, 0);
}

void confine(const std::vector<std::string>& readable)
{
    ::prctl(PR_SET_DUMPABLE, 0);
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
        throw refusal("it can't give up privileges");
    // A network without interfaces, where that is allowed; the filter below permits no socket anyway.
    static_cast<void>(::unshare(CLONE_NEWUSER | CLONE_NEWNET));
    filterSystemCalls(restrictFiles(readable));
}

} // namespace centre
