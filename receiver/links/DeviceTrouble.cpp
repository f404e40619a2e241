// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/links/DeviceTrouble.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <algorithm>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

bool hasOpen(const QString &process, const struct stat &device)
{
    const QString folder = QStringLiteral("/proc/%1/fd").arg(process);
    const QStringList descriptors =
        QDir(folder).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System);
    return std::any_of(
        descriptors.cbegin(), descriptors.cend(), [&folder, &device](const QString &descriptor) {
            const QByteArray path = QFile::encodeName(folder + QLatin1Char('/') + descriptor);
            struct stat opened = {};
            return ::stat(path.constData(), &opened) == 0 && opened.st_dev == device.st_dev &&
                   opened.st_ino == device.st_ino;
        });
}

QString nameOf(const QString &process)
{
    QFile file(QStringLiteral("/proc/%1/comm").arg(process));
    return file.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(file.readAll()).trimmed()
                                          : QStringLiteral("process");
}

bool isMember(gid_t group)
{
    if (::getegid() == group)
        return true;
    const int count = ::getgroups(0, nullptr);
    std::vector<gid_t> groups(static_cast<size_t>(std::max(count, 0)));
    const int got = ::getgroups(count, groups.data());
    return got > 0 &&
           std::find(groups.cbegin(), groups.cbegin() + got, group) != groups.cbegin() + got;
}

} // namespace

namespace DeviceTrouble {

QString holders(const QString &device)
{
    struct stat status = {};
    if (::stat(QFile::encodeName(device).constData(), &status) != 0)
        return {};
    const QString own = QString::number(QCoreApplication::applicationPid());
    const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    QStringList found;
    for (const QString &entry : entries) {
        if (entry[0].isDigit() && entry != own && hasOpen(entry, status))
            found << QStringLiteral("%1 (%2)").arg(nameOf(entry), entry);
    }
    return found.join(QStringLiteral(", "));
}

QString missingPermission(const QString &device)
{
    const QByteArray path = QFile::encodeName(device);
    struct stat status = {};
    if (::stat(path.constData(), &status) != 0 || ::access(path.constData(), R_OK | W_OK) == 0)
        return {};
    const QString group = QFileInfo(device).group();
    constexpr mode_t kReadAndWrite = S_IRGRP | S_IWGRP;
    return permissionText(device, group, (status.st_mode & kReadAndWrite) == kReadAndWrite,
                          isMember(status.st_gid));
}

QString permissionText(const QString &device, const QString &group, bool groupMay, bool inGroup)
{
    const QString start = QStringLiteral("no permission to read and write %1").arg(device);
    // Joining root's group is no advice.
    if (!groupMay || inGroup || group.isEmpty() || group == QLatin1String("root"))
        return start + QStringLiteral("; only its owner or root may");
    return start + QStringLiteral("; its group is %1: join it with 'sudo adduser $USER %1', then "
                                  "log out and in again")
                       .arg(group);
}

} // namespace DeviceTrouble
