// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>

/// The settings file as the viewer writes it, byte for byte.
inline QByteArray settingsFile(const QByteArray &directory, const QByteArray &displayTime = "No",
                               const QByteArray &textDebug = "No",
                               const QByteArray &navDebug = "No")
{
    return "<configuration>\n"
           "    <common/>\n"
           "    <control/>\n"
           "    <map/>\n"
           "    <satellite/>\n"
           "    <ttff/>\n"
           "    <test/>\n"
           "    <log>\n"
           "        <directory>" +
           directory +
           "</directory>\n"
           "        <displayTime>" +
           displayTime +
           "</displayTime>\n"
           "        <textDebug>" +
           textDebug +
           "</textDebug>\n"
           "        <navDebug>" +
           navDebug +
           "</navDebug>\n"
           "    </log>\n"
           "</configuration>\n";
}

/// Stores the settings file `text` below the device root `root`. False when that fails.
inline bool writeSettings(const QString &root, const QByteArray &text)
{
    QFile file(root + QStringLiteral("/etc/config.xml"));
    return QDir(root).mkpath(QStringLiteral("etc")) && file.open(QIODevice::WriteOnly) &&
           file.write(text) == text.size();
}

/// Settings of a viewer that keeps its log files in the folder log below its device root `root`.
inline bool writeLogSettings(const QString &root, const QByteArray &displayTime = "No")
{
    return writeSettings(
        root, settingsFile(QFile::encodeName(root + QStringLiteral("/log")), displayTime));
}
