// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "control/EventWait.h"

#include "base/SystemHooks.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>

namespace {

/// One wait. It calls processEvents() through the exec() of a loop of its own, because only a loop
/// that executes is told of QCoreApplication::quit().
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

    /// False when something else than the end of this wait ended the loop.
    bool run()
    {
        if (stop())
            return true;
        // A loop that begins drops a quit that is still under way.
        QCoreApplication::sendPostedEvents(QCoreApplication::instance(), QEvent::Quit);

        const auto check = [this] {
            checkEnd();
        };
        const auto *const dispatcher = QAbstractEventDispatcher::instance();
        // Between them these two come before and after each processEvents(). A dispatcher may run
        // handlers and then go to sleep within one call: what they changed must not be slept over.
        QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, &loop, check);
        QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, &loop, check);
        QObject::connect(&alarm, &QTimer::timeout, &loop, check);
        setAlarm();
        loop.exec();
        return ended;
    }

private:
    bool isOver() const { return elapsed.elapsed() >= lengthMs || stop(); }

    void setAlarm()
    {
        alarm.start(static_cast<int>(std::max<qint64>(0, lengthMs - elapsed.elapsed())));
    }

    /// May run inside a nested loop as well: then this loop ends as soon as that one has.
    void checkEnd()
    {
        if (!loop.isRunning())
            return;
        if (isOver()) {
            ended = true;
            loop.exit();
        } else if (!alarm.isActive()) {
            setAlarm(); // it rang early, by a fraction of a millisecond
        }
    }

    const std::function<bool()> &stop;
    const qint64 lengthMs;
    bool ended = false;
    QElapsedTimer elapsed;
    QTimer alarm;
    QEventLoop loop;
};

} // namespace

bool waitProcessingEvents(int nominalMs, const std::function<bool()> &stop)
{
    return EventWait(SystemHooks::waitLength(nominalMs), stop).run();
}
