#include "sandbox/SystemCallFilter.h"

#include <memory>

#include <cerrno>
#include <sched.h>
#include <seccomp.h>

namespace tnconvert {

namespace {

constexpr int refused[] = {
    // The network, and whatever else answers at a socket.
    SCMP_SYS(socket),
    SCMP_SYS(socketpair),
    SCMP_SYS(connect),
    SCMP_SYS(bind),
    SCMP_SYS(listen),
    SCMP_SYS(accept),
    SCMP_SYS(accept4),
    SCMP_SYS(sendto),
    SCMP_SYS(sendmsg),
    SCMP_SYS(sendmmsg),
    // Does most of what stands in this list, past any filter.
    SCMP_SYS(io_uring_setup),
    SCMP_SYS(io_uring_enter),
    SCMP_SYS(io_uring_register),
    // Other programs.
    SCMP_SYS(execve),
    SCMP_SYS(execveat),
    SCMP_SYS(uselib),
// Other processes: their memory, files and place.
#ifndef __SANITIZE_ADDRESS__ // looks for leaks that way
    SCMP_SYS(ptrace),
#endif
    SCMP_SYS(process_vm_readv),
    SCMP_SYS(process_vm_writev),
    SCMP_SYS(process_madvise),
    SCMP_SYS(pidfd_getfd),
    SCMP_SYS(kcmp),
    SCMP_SYS(setns),
    SCMP_SYS(unshare),
    SCMP_SYS(move_pages),
    SCMP_SYS(migrate_pages),
    // Files past their paths.
    SCMP_SYS(open_by_handle_at),
    SCMP_SYS(name_to_handle_at),
    // The tree of files.
    SCMP_SYS(mount),
    SCMP_SYS(umount2),
    SCMP_SYS(move_mount),
    SCMP_SYS(open_tree),
    SCMP_SYS(fsopen),
    SCMP_SYS(fsconfig),
    SCMP_SYS(fsmount),
    SCMP_SYS(fspick),
    SCMP_SYS(mount_setattr),
    SCMP_SYS(pivot_root),
    SCMP_SYS(chroot),
    SCMP_SYS(quotactl),
    SCMP_SYS(swapon),
    SCMP_SYS(swapoff),
    // The kernel: its code, its inside and its keys.
    SCMP_SYS(init_module),
    SCMP_SYS(finit_module),
    SCMP_SYS(delete_module),
    SCMP_SYS(kexec_load),
    SCMP_SYS(kexec_file_load),
    SCMP_SYS(bpf),
    SCMP_SYS(perf_event_open),
    SCMP_SYS(userfaultfd),
    SCMP_SYS(syslog),
    SCMP_SYS(add_key),
    SCMP_SYS(request_key),
    SCMP_SYS(keyctl),
    SCMP_SYS(fanotify_init),
    SCMP_SYS(lookup_dcookie),
    // The machine.
    SCMP_SYS(reboot),
    SCMP_SYS(acct),
    SCMP_SYS(settimeofday),
    SCMP_SYS(clock_settime),
    SCMP_SYS(clock_adjtime),
    SCMP_SYS(adjtimex),
    SCMP_SYS(sethostname),
    SCMP_SYS(setdomainname),
    SCMP_SYS(iopl),
    SCMP_SYS(ioperm),
    SCMP_SYS(vhangup),
};

// Where the flags of clone() stand.
#if defined(__s390__)
constexpr unsigned cloneFlags = 1;
#else
constexpr unsigned cloneFlags = 0;
#endif

/// A process in namespaces of its own would be its own administrator there.
constexpr int namespaces[] = {CLONE_NEWUSER, CLONE_NEWNS,  CLONE_NEWNET,   CLONE_NEWPID,
                              CLONE_NEWIPC,  CLONE_NEWUTS, CLONE_NEWCGROUP};

bool fill(scmp_filter_ctx filter)
{
    const auto add = [filter](int error, int call, auto... conditions) {
        return seccomp_rule_add(filter, SCMP_ACT_ERRNO(unsigned(error)), call,
                                sizeof...(conditions), conditions...)
            == 0;
    };
    bool isFull = true;
    for (const int call : refused)
        isFull = add(EPERM, call) && isFull;
    for (const int flag : namespaces) {
        const auto mask = scmp_datum_t(unsigned(flag));
        isFull =
            add(EPERM, SCMP_SYS(clone), scmp_arg_cmp{cloneFlags, SCMP_CMP_MASKED_EQ, mask, mask})
            && isFull;
    }
    // Its flags lie in memory, where no filter sees them; the library does without it then.
    return add(ENOSYS, SCMP_SYS(clone3)) && isFull;
}

} // namespace

bool SystemCallFilter::install()
{
    const std::unique_ptr<void, void (*)(scmp_filter_ctx)> filter(seccomp_init(SCMP_ACT_ALLOW),
                                                                  &seccomp_release);
    return filter && fill(filter.get()) && seccomp_load(filter.get()) == 0;
}

} // namespace tnconvert
