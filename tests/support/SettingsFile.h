// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>

/// The settings file as the viewer writes it, byte for byte.
inline QByteArray settingsFile(const QByteArray &directory, const QByteArray &displayTime,
                               const QByteArray &textDebug, const QByteArray &navDebug)
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
