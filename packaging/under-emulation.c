// Loaded into the emulated programs only. Qt starts a command as a child with a process descriptor wherever
// the kernel knows such descriptors, and falls back to a plain fork elsewhere. The emulator forwards the query to
// the real kernel, but refuses to create such a child: every command would fail to start. The answer here is "unknown".

#include <dlfcn.h>
#include <errno.h>
#include <stdarg.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <sys/wait.h>

// Commands are programs of this machine's architecture, which cannot load this library.
__attribute__((constructor)) static void stay_out_of_children(void)
{
    unsetenv("LD_PRELOAD");
}

long syscall(long number, ...)
{
    long a[6];
    va_list list;
    va_start(list, number);
    for (int i = 0; i < 6; ++i)
        a[i] = va_arg(list, long);
    va_end(list);
    if (number == SYS_waitid && a[0] == P_PIDFD) {
        errno = EINVAL;
        return -1;
    }
    long (*next)(long, ...) = (long (*)(long, ...))dlsym(RTLD_NEXT, "syscall");
    return next(number, a[0], a[1], a[2], a[3], a[4], a[5]);
}
