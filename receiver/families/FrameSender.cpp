// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/families/FrameSender.h"

#include "base/SystemHooks.h"

FrameSender::FrameSender(QObject *parent)
    : QObject(parent)
{
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, this, &FrameSender::next);
}

bool FrameSender::send(const QVector<ReceiverFamily::tFrame> &frames)
{
    if (waiting.size() + frames.size() > kMostWaiting)
        return false;
    for (const ReceiverFamily::tFrame &frame : frames)
        waiting.enqueue(frame);
    if (!timer.isActive() && !frames.isEmpty())
        next();
    return true;
}

void FrameSender::clear()
{
    waiting.clear();
    timer.stop();
}

void FrameSender::next()
{
    if (waiting.isEmpty()) {
        emit done();
        return;
    }
    const ReceiverFamily::tFrame frame = waiting.dequeue();
    // First the timer: whoever sends may find that nothing can be sent, and clear.
    timer.start(SystemHooks::waitLength(frame.pauseMs));
    emit due(frame.bytes);
}
