// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QString>

/// The persistent settings. Pages and log files read and write the fields directly.
struct ConfigSettings
{
    char directory[512] = {}; ///< log directory, local 8-bit encoding, NUL-terminated
    bool displayTime = false; ///< put the system time before log lines
    bool textDebug = false;   ///< the "Text" debug switch
    bool navDebug = false;    ///< the "NAV" debug switch

    /// The log directory as text.
    QString directoryText() const;
};

/// The settings file: an XML document with the root "configuration", whose "log" element holds the
/// settings. Read once at start-up and rewritten whole on every save. User-interface thread.
class ConfigFile
{
public:
    /// The one instance, made on first use and never destroyed.
    static ConfigFile *instance();

    /// The settings held in memory.
    ConfigSettings *settings();

    /// Remembers `path` (local 8-bit encoding) for write(), then reads the file into the settings.
    /// Settings that the file lacks keep their values. On failure an "Error: ..." line goes to
    /// standard error, nothing is changed, and false is returned.
    bool read(const char *path);

    /// Writes all settings to the path last given to read(). False, with an "Error: ..." line on
    /// standard error, when the file cannot be opened.
    bool write();

    /// Sets the log directory. A text that does not fit with its NUL ends the process: a
    /// shortened path would put the logs somewhere else.
    void setDirectory(const char *text);

    /// Sets whether log lines begin with the system time.
    void setDisplayTime(bool on);

private:
    ConfigFile() = default;

    QByteArray fileName;
    ConfigSettings record;
};
