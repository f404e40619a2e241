// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDir>
#include <QFile>
#include <QString>

#include <memory>
#include <vector>

/// The log directory and the log files in it. Everything that goes wrong stays silent: a test that
/// runs over a weekend goes on without its log. User-interface thread.
///
/// Files live in the subdirectory "GNSS" of the configured directory, which is made once per run,
/// in the directory configured at that time. Names are made anew at every call from the directory
/// then configured and the clock.
class LogFiles
{
public:
    /// The files that can be open, one of each kind.
    enum class File {
        Nmea,
        Osp,
        Nav,
        Sll,
        Ttff,
    };

    /// Use instance(); there is one set of log files for the program.
    LogFiles() = default;

    /// The one instance, made on first use and never destroyed.
    static LogFiles *instance();

    /// Makes the subdirectory at the first call; later calls do nothing. To be called before a
    /// name is built.
    void prepareDirectory();

    /// Names for files that begin now: subdirectory, local time to the second, and the kind.
    QString nmeaFileName() const;
    QString ttffFileName() const;
    QString ospFileName() const;
    QString navFileName() const;
    QString sllFileName() const;

    /// Opens an NMEA log with a new name, unless one is open already.
    void openNmeaLog();
    void closeNmeaLog();

    /// Opens a TTFF log with a new name. The one before stays open; the same name, within one
    /// second, cuts it.
    void openTtffLog();

    /// Writes `text`, NUL-terminated Latin-1, after the time of day when `stamp` is set, and
    /// flushes. No line end is added. False when there is no such file.
    bool writeLine(File slot, const char *text, bool stamp);

    /// Opens `name` for the slot at the first call, then writes `length` bytes as they are and
    /// flushes. False when there is no such file and `name` is empty.
    bool writeBinary(File slot, const QString &name, const char *data, qint64 length);

    /// NMEA text, with its own line ends and never with the time.
    bool writeNmea(const char *text);
    /// As it is, with the time when configured. Nothing opens this file yet.
    bool writeNav(const char *text);
    /// A line, with the time when configured. Nothing opens this file yet.
    bool writeSll(const char *text);
    /// A line, with the time when configured.
    bool writeTtff(const char *text);
    /// Bytes of the receiver's own stream; the file is opened at the first call.
    bool writeOsp(const char *data, qint64 length);

private:
    std::unique_ptr<QFile> &file(File slot);
    QString pathInSubDir(const QString &fileName) const;
    void retire(std::unique_ptr<QFile> &slot);

    std::unique_ptr<QDir> dir; ///< null until prepareDirectory()
    std::unique_ptr<QFile> nmeaFile;
    std::unique_ptr<QFile> ospFile;
    std::unique_ptr<QFile> navFile;
    std::unique_ptr<QFile> sllFile;
    std::unique_ptr<QFile> ttffFile;
    QString subDir;                              ///< empty until prepareDirectory()
    std::vector<std::unique_ptr<QFile>> retired; ///< replaced files: kept, TTFF logs still open
};
