// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// QMutex for the thread sanitizer. Debian's Qt is not built with it, and Qt's mutexes are futexes
// inside Qt: the sanitizer sees no lock, and would report all that they guard. These functions
// stand before Qt's for the code of this project (Qt itself keeps to its own), call them, and tell
// the sanitizer what happened. Linked into every program of a thread sanitizer build, and into no
// other.

#include <QMutex>

#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>

namespace {

template<typename Function>
Function next(const char *symbol)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, symbol));
}

} // namespace

void QMutex::lock() QT_MUTEX_LOCK_NOEXCEPT
{
    static const auto original = next<void (*)(QMutex *)>("_ZN6QMutex4lockEv");
    original(this);
    __tsan_acquire(this);
}

bool QMutex::tryLock(int timeout) QT_MUTEX_LOCK_NOEXCEPT
{
    static const auto original = next<bool (*)(QMutex *, int)>("_ZN6QMutex7tryLockEi");
    const bool locked = original(this, timeout);
    if (locked)
        __tsan_acquire(this);
    return locked;
}

void QMutex::unlock() noexcept
{
    static const auto original = next<void (*)(QMutex *)>("_ZN6QMutex6unlockEv");
    __tsan_release(this);
    original(this);
}
