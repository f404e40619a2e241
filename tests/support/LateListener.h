// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/sources/ReceiverSource.h"

#include <QElapsedTimer>
#include <QObject>
#include <QThread>
#include <QVector>

/// Notes when a source's epochs come, and at the sixth holds up the source's thread for 2.5 s, as a
/// suspended computer would.
class LateListener
{
public:
    explicit LateListener(const ReceiverSource *source)
    {
        clock.start();
        QObject::connect(source, &ReceiverSource::epochReady, &context, [this] {
            if (timesMs.size() == kLateIndex)
                QThread::msleep(2500);
            timesMs.append(clock.elapsed());
        });
    }

    LateListener(const LateListener &) = delete;
    LateListener &operator=(const LateListener &) = delete;

    int epochs() const { return timesMs.size(); }
    /// From the end of the late turn to the epoch of that index, counted from 0.
    qint64 sinceLagMs(int index) const { return timesMs.at(index) - timesMs.at(kLateIndex); }

private:
    static constexpr int kLateIndex = 5;

    QObject context;
    QElapsedTimer clock;
    QVector<qint64> timesMs;
};
