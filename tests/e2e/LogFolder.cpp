// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "e2e/LogFolder.h"

#include <QDir>

#include <utility>

#include <sys/mount.h>
#include <unistd.h>

namespace {

constexpr QFile::Permissions kAll = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
constexpr QFile::Permissions kReadOnly = QFile::ReadOwner | QFile::ExeOwner;

bool isSuperuser()
{
    return ::geteuid() == 0;
}

} // namespace

LogFolder::LogFolder(QString path)
    : folder(std::move(path))
{
}

LogFolder::~LogFolder()
{
    allowWriting();
    if (mounted)
        ::umount2(QFile::encodeName(folder).constData(), MNT_DETACH);
}

QStringList LogFolder::names() const
{
    return QDir(logs()).entryList(QDir::Files, QDir::Time | QDir::Reversed);
}

QByteArray LogFolder::content(int index) const
{
    QFile file(logs() + QLatin1Char('/') + names().value(index));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such log");
}

bool LogFolder::make() const
{
    return QDir().mkpath(logs());
}

bool LogFolder::remove() const
{
    return QDir(folder).removeRecursively();
}

bool LogFolder::mountSmall(int bytes)
{
    const QByteArray options = "size=" + QByteArray::number(bytes);
    mounted = QDir().mkpath(folder) && ::mount("tmpfs", QFile::encodeName(folder).constData(),
                                               "tmpfs", 0, options.constData()) == 0;
    return mounted;
}

bool LogFolder::fill() const
{
    QFile filler(fillerName());
    if (!filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return false;
    while (filler.write(QByteArray(4096, 'x')) > 0) {
    }
    return true;
}

bool LogFolder::empty() const
{
    return QFile::remove(fillerName());
}

bool LogFolder::forbidWriting()
{
    if (!isSuperuser())
        return QFile::setPermissions(folder, kReadOnly);
    return mountSmall(1 << 20) && ::mount(nullptr, QFile::encodeName(folder).constData(), nullptr,
                                          MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

bool LogFolder::allowWriting()
{
    if (!isSuperuser())
        return QFile::setPermissions(folder, kAll);
    return mounted && ::mount(nullptr, QFile::encodeName(folder).constData(), nullptr, MS_REMOUNT,
                              nullptr) == 0;
}
