// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// The folder that the viewer is configured to log to, and what may happen to it.
class LogFolder
{
public:
    /// `path` need not exist.
    explicit LogFolder(QString path);
    ~LogFolder();

    LogFolder(const LogFolder &) = delete;
    LogFolder &operator=(const LogFolder &) = delete;

    const QString &path() const { return folder; }
    /// The subdirectory of the log files.
    QString logs() const { return folder + QStringLiteral("/GNSS"); }
    /// Names of the log files, the oldest first.
    QStringList names() const;
    /// Content of the log that is at this place in names().
    QByteArray content(int index) const;

    bool make() const;
    bool remove() const;

    /// Puts a file system of its own there, of `bytes`. False where this process may not.
    bool mountSmall(int bytes);
    /// Takes all room that the small file system still has, and gives it back.
    bool fill() const;
    bool empty() const;
    /// Keeps everybody from writing there, the superuser by a read-only mount.
    bool forbidWriting();
    bool allowWriting();

private:
    QString fillerName() const { return folder + QStringLiteral("/filler"); }

    QString folder;
    bool mounted = false;
};
