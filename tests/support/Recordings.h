// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDir>
#include <QString>
#include <QtGlobal>

/// Recordings of real receivers. They are not part of this repository: the folder that
/// NMEA_CORPUS_DIR names has them, by default ../shared/corpus beside the project.
namespace Recordings {

constexpr const char *kAbsent = "no recordings: set NMEA_CORPUS_DIR to their folder";

/// Empty when it is absent.
inline QString folder()
{
    const QString given = qEnvironmentVariable("NMEA_CORPUS_DIR");
    const QString path = given.isEmpty() ? QStringLiteral(NMEA_CORPUS_DEFAULT) : given;
    return QDir(path).entryList({QStringLiteral("*.log")}).isEmpty() ? QString() : path;
}

} // namespace Recordings
