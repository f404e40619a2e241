// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/NamedPipe.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString errorText(int error)
{
    return QString::fromLocal8Bit(strerror(error)); // NOLINT(concurrency-mt-unsafe): one thread
}

} // namespace

NamedPipe::NamedPipe(const QByteArray &path)
    : pipePath(path)
{
}

NamedPipe::~NamedPipe()
{
    struct stat now = {};
    if (madeHere && ::lstat(pipePath.constData(), &now) == 0 && now.st_dev == device &&
        now.st_ino == inode)
        ::unlink(pipePath.constData());
}

bool NamedPipe::make(OrdinaryFile ordinaryFile, QString *error, QString *notice)
{
    const QString name = QFile::decodeName(pipePath);
    struct stat found = {};
    if (::lstat(pipePath.constData(), &found) == 0 && S_ISREG(found.st_mode) &&
        ordinaryFile == OrdinaryFile::Replace) {
        if (::unlink(pipePath.constData()) != 0) {
            *error = QStringLiteral("cannot replace the ordinary file %1 by a pipe: %2")
                         .arg(name, errorText(errno));
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
        *error = QStringLiteral("cannot look at %1: %2").arg(name, errorText(reason));
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
    // Readable and writable by all, less what the umask takes: the viewer may be another user.
    if (::mkfifo(pipePath.constData(), 0666) != 0) {
        const int reason = errno;
        *error = QStringLiteral("cannot make the pipe %1: %2").arg(name, errorText(reason));
        return false;
    }
    struct stat made = {};
    madeHere = ::lstat(pipePath.constData(), &made) == 0;
    device = made.st_dev;
    inode = made.st_ino;
    return true;
}

bool NamedPipe::isOpenOn(int descriptor) const
{
    struct stat named = {};
    struct stat opened = {};
    return ::stat(pipePath.constData(), &named) == 0 && ::fstat(descriptor, &opened) == 0 &&
           S_ISFIFO(opened.st_mode) && named.st_dev == opened.st_dev &&
           named.st_ino == opened.st_ino;
}
