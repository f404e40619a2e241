// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "hostd/Dialect.h"
#include "receiver/recordings/Recording.h"

#include <QByteArray>
#include <QString>

/// All that the daemon makes of a recording, as one stream.
inline QByteArray throughDialect(const QString &file)
{
    Recording recording({file});
    QByteArray bytes;
    while (!recording.atEnd()) {
        const std::optional<tPlayed> played = recording.next();
        if (!played || !played->event.isEmpty())
            continue;
        const QVector<QByteArray> sentences = Dialect::sentences(played->epoch);
        for (const QByteArray &sentence : sentences)
            bytes += sentence;
    }
    return bytes;
}
