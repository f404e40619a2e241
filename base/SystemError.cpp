// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "base/SystemError.h"

#include <cstring>

QString systemErrorText(int error)
{
    // Since glibc 2.32 each thread has a text of its own.
    return QString::fromLocal8Bit(strerror(error));
}
