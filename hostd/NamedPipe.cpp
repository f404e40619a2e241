// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/NamedPipe.h"

#include "base/SystemError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool isSameFile(const struct stat &one, const struct stat &other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

} // namespace

NamedPipe::NamedPipe(const QByteArray &path)
    : pipePath(path)
{
}

NamedPipe::~NamedPipe()
{
    if (namesThePipeMadeHere())
        ::unlink(pipePath.constData());
    letGo();
}

bool NamedPipe::make(OrdinaryFile ordinaryFile, QString *error, QString *notice)
{
    const QString name = QFile::decodeName(pipePath);
    struct stat found = {};
    if (::lstat(pipePath.constData(), &found) == 0 && S_ISREG(found.st_mode) &&
        ordinaryFile == OrdinaryFile::Replace) {
        if (::unlink(pipePath.constData()) != 0) {
            const int reason = errno;
            *error = QStringLiteral("cannot replace the ordinary file %1 by a pipe: %2")
                         .arg(name, systemErrorText(reason));
            return false;
        }
        *notice = QStringLiteral("replaced the ordinary file %1 (%2 bytes) by a pipe")
                      .arg(name)
                      .arg(found.st_size);
    }
    if (::stat(pipePath.constData(), &found) != 0) {
        const int reason = errno;
        if (reason == ENOENT)
            return makeNew(error);
        *error = QStringLiteral("cannot look at %1: %2").arg(name, systemErrorText(reason));
        return false;
    }
    if (!S_ISFIFO(found.st_mode)) {
        *error = QStringLiteral("%1 is there and is no named pipe; remove it or set TAVRIN_ROOT")
                     .arg(name);
        return false;
    }
    return true;
}

bool NamedPipe::makeNew(QString *error)
{
    const QString name = QFile::decodeName(pipePath);
    const QString folder = QFileInfo(name).path();
    if (!QDir().mkpath(folder)) {
        *error = QStringLiteral("cannot make the folder %1 for %2").arg(folder, name);
        return false;
    }
    // For everybody, whatever the umask: the viewer may be another user. Changing the mode only
    // afterwards could change that of a file that somebody put at the path in between.
    const mode_t mask = ::umask(0);
    const int result = ::mkfifo(pipePath.constData(), 0666);
    const int reason = errno;
    ::umask(mask);
    if (result != 0) {
        *error = QStringLiteral("cannot make the pipe %1: %2").arg(name, systemErrorText(reason));
        return false;
    }
    holdMade();
    return true;
}

void NamedPipe::holdMade()
{
    letGo();
    made = ::open(pipePath.constData(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
}

void NamedPipe::letGo()
{
    if (made >= 0)
        ::close(made);
    made = -1;
}

bool NamedPipe::namesThePipeMadeHere() const
{
    struct stat named = {};
    struct stat held = {};
    return made >= 0 && ::fstat(made, &held) == 0 && S_ISFIFO(held.st_mode) &&
           ::lstat(pipePath.constData(), &named) == 0 && S_ISFIFO(named.st_mode) &&
           isSameFile(named, held);
}

bool NamedPipe::isOpenOn(int descriptor) const
{
    struct stat named = {};
    struct stat opened = {};
    return ::stat(pipePath.constData(), &named) == 0 && ::fstat(descriptor, &opened) == 0 &&
           S_ISFIFO(opened.st_mode) && isSameFile(named, opened);
}
