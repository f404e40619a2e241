// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/families/ReceiverFamily.h"

#include <QObject>
#include <QQueue>
#include <QTimer>

/// Sends frames one after the other with the pauses that the receiver needs between them. Lives on
/// the daemon's thread.
class FrameSender : public QObject
{
    Q_OBJECT
public:
    explicit FrameSender(QObject *parent = nullptr);

    /// Most frames that wait for their turn; a receiver that is commanded faster cannot follow.
    static constexpr int kMostWaiting = 64;

    /// Queues frames behind those that wait; the first goes out at once when nothing does. False,
    /// with nothing queued, when too many wait.
    bool send(const QVector<ReceiverFamily::tFrame> &frames);

    /// Forgets what waits.
    void clear();

signals:
    /// It is the turn of these bytes.
    void due(const QByteArray &bytes);
    /// Everything is out, and the pause after the last frame over.
    void done();

private slots:
    void next();

private:
    QQueue<ReceiverFamily::tFrame> waiting;
    QTimer timer; // runs during a pause
};
