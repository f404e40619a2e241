// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFile>
#include <QString>

/// Writes the settings of a viewer that keeps its log files below its device root `root`, of which
/// the folder etc is there. False when that fails.
inline bool writeLogSettings(const QString &root)
{
    QFile file(root + QStringLiteral("/etc/config.xml"));
    const QString text =
        QStringLiteral("<configuration><log><directory>%1/log</directory></log></configuration>")
            .arg(root);
    return file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) > 0;
}
