// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "control/EventWait.h"

#include "config/SystemHooks.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QMetaObject>
#include <QThread>
#include <QTimer>

#include <algorithm>

namespace {

/// One wait. It runs inside the exec() of a loop of its own, because only a loop that executes is
/// told of QCoreApplication::quit(); a bare processEvents() would never see it.
class EventWait
{
public:
    EventWait(int length, const std::function<bool()> &stopCondition)
        : stop(stopCondition)
        , lengthMs(length)
    {
        elapsed.start();
        alarm.setSingleShot(true);
        alarm.setTimerType(Qt::PreciseTimer);
    }

    bool run()
    {
        if (stop())
            return true;
        bool quitting = true;
        QMetaObject::invokeMethod(
            &loop,
            [this, &quitting] {
                processUntilOver();
                quitting = !loop.isRunning();
                loop.quit();
            },
            Qt::QueuedConnection);
        loop.exec();
        return !quitting;
    }

private:
    bool isOver() const { return elapsed.elapsed() >= lengthMs || stop(); }

    void processUntilOver()
    {
        QAbstractEventDispatcher *const dispatcher = QAbstractEventDispatcher::instance();
        const int level = QThread::currentThread()->loopLevel();
        // A dispatcher may run handlers and then go to sleep within one call. What they changed
        // must not be slept over, nor must an alarm that rang inside a nested loop. While such a
        // loop runs it sleeps undisturbed: this wait cannot end before it.
        QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, &loop,
                         [this, dispatcher, level] {
                             const bool nested = QThread::currentThread()->loopLevel() != level;
                             if (!nested && (isOver() || !alarm.isActive() || !loop.isRunning()))
                                 dispatcher->wakeUp();
                         });
        while (loop.isRunning() && !isOver()) {
            // Timers may ring early by a fraction of a millisecond.
            if (!alarm.isActive())
                alarm.start(static_cast<int>(std::max<qint64>(0, lengthMs - elapsed.elapsed())));
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }

    const std::function<bool()> &stop;
    const qint64 lengthMs;
    QElapsedTimer elapsed;
    QTimer alarm;
    QEventLoop loop;
};

} // namespace

bool waitProcessingEvents(int nominalMs, const std::function<bool()> &stop)
{
    return EventWait(SystemHooks::waitLength(nominalMs), stop).run();
}
