// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/epoch/Epoch.h"
#include "receiver/sources/ReceiverSource.h"

#include <QElapsedTimer>
#include <QQueue>
#include <QString>

/// Counts what goes through the daemon and says it in one line. One thread.
class StatusLine
{
public:
    StatusLine();

    void noteEpoch(const tEpoch &epoch);
    void noteCommand(const QString &sentence, bool obeyed);
    /// What keeps the epochs from the viewer; empty for nothing.
    void noteHold(const QString &text) { hold = text; }

    /// The line for now, to be asked for about once a second: what keeps the epochs back, epochs a
    /// second over the latest seconds, epochs, checksum errors, satellites in use and in view, fix,
    /// last command.
    QString text(const tSourceCounters &counters);

    /// Kind of fix of an epoch, "3D fix" say.
    static QString fixText(const tEpoch &epoch);

private:
    double rateHz();

    struct tSample
    {
        qint64 atMs;
        qint64 epochs;
    };

    QElapsedTimer clock;
    QQueue<tSample> samples; // one a call of text(), the latest last
    qint64 epochs = 0;
    int used = 0;
    int inView = 0;
    QString fix;
    QString lastCommand;
    QString hold;
};
