// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// For tests that the emulator of a cross-build runs. QProcess asks by a wait whether the system has
// process descriptors. The emulator passes the question on to a kernel that has them, but cannot
// make a process with one; Qt 5.15 does not notice, takes the child's number to be -1, and a test
// that ends its child then ends every process that it may. Answering no makes QProcess fork in the
// old way.

#include <atomic>
#include <cerrno>
#include <cstdarg>

#include <dlfcn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using SystemCall = long (*)(long, ...);

std::atomic<SystemCall> nextSyscall = nullptr;

} // namespace

extern "C" long syscall(long number, ...) noexcept
{
    // No static of a function: waiting for one to be made is itself a system call.
    SystemCall next = nextSyscall;
    if (!next) {
        next = reinterpret_cast<SystemCall>(dlsym(RTLD_NEXT, "syscall"));
        nextSyscall = next;
    }
    va_list list;
    va_start(list, number);
    long arguments[6];
    for (long &argument : arguments)
        argument = va_arg(list, long);
    va_end(list);
    if (number == SYS_waitid && arguments[0] == P_PIDFD) {
        errno = EINVAL;
        return -1;
    }
    return next(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4],
                arguments[5]);
}
