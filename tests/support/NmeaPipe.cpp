// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/NmeaPipe.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

NmeaPipe::NmeaPipe(const QString &pipePath)
    : path(QFile::encodeName(pipePath))
{
    make();
}

NmeaPipe::~NmeaPipe()
{
    close();
}

bool NmeaPipe::enlarge(int bytes) const
{
    return ::fcntl(descriptor, F_SETPIPE_SZ, bytes) >= bytes;
}

bool NmeaPipe::write(const QByteArray &bytes) const
{
    return ::write(descriptor, bytes.constData(), static_cast<size_t>(bytes.size())) ==
           bytes.size();
}

void NmeaPipe::close()
{
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
}

void NmeaPipe::replace()
{
    ::unlink(path.constData());
    const int old = descriptor;
    make();
    ::close(old);
}

void NmeaPipe::make()
{
    // For reading as well: so the open does not wait for a reader, and what is written early stays.
    if (::mkfifo(path.constData(), 0600) == 0)
        descriptor = ::open(path.constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
}
