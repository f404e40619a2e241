// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/fsuid.h>
#include <unistd.h>

/// While it lives, this thread meets the permissions of files as everybody but root does.
class NotRoot
{
public:
    NotRoot() { ::setfsuid(kNobody); }
    ~NotRoot() { ::setfsuid(::geteuid()); }

    NotRoot(const NotRoot &) = delete;
    NotRoot &operator=(const NotRoot &) = delete;

private:
    static constexpr uid_t kNobody = 65534;
};
