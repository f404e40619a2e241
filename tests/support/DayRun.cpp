// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/DayRun.h"

#include "support/ProcessFigures.h"

#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

constexpr int kSilenceMs = 20000;
constexpr int kDaySeconds = 86400;
constexpr int kLooksADay = 200; // at the daemon's memory, over the whole run

/// Counts the epochs of a stream and finds the first that is not a second after the one before.
class EpochCounter
{
public:
    explicit EpochCounter(tDayRun &result)
        : run(result)
    {
    }

    void read(const QByteArray &bytes)
    {
        run.bytes += bytes.size();
        open += bytes;
        int start = 0;
        for (int end = open.indexOf('\n'); end >= 0; end = open.indexOf('\n', start)) {
            take(open.mid(start, end - start));
            start = end + 1;
        }
        open.remove(0, start);
    }

private:
    void take(const QByteArray &line)
    {
        if (!line.startsWith("$GNRMC,"))
            return;
        ++run.epochs;
        const QByteArray time = line.mid(7, 10);
        const int second =
            time.left(2).toInt() * 3600 + time.mid(2, 2).toInt() * 60 + time.mid(4, 2).toInt();
        const bool follows = last < 0 || second == (last + 1) % kDaySeconds;
        if ((!follows || !time.endsWith(".000")) && run.fault.isEmpty())
            run.fault = QStringLiteral("epoch %1 at %2 comes after second %3 of the day")
                            .arg(run.epochs)
                            .arg(QString::fromLatin1(time))
                            .arg(last);
        last = second;
    }

    tDayRun &run;
    QByteArray open;
    int last = -1;
};

} // namespace

QString tDayRun::text() const
{
    return QStringLiteral("%1 epochs, %2 bytes, memory %3 kB in the first tenth, %4 kB later%5")
        .arg(epochs)
        .arg(bytes)
        .arg(earlyKb)
        .arg(lateKb)
        .arg(fault.isEmpty() ? QString() : QStringLiteral(": ") + fault);
}

bool tDayRun::isMemoryFlat() const
{
    constexpr qint64 kSlackKb = 512;
    return earlyKb > 0 && lateKb <= earlyKb + kSlackKb;
}

namespace DayRun {

tDayRun watch(const QString &root, const QStringList &arguments, qint64 epochs, QFile *copy)
{
    tDayRun run;
    HostdProcess hostd(root);
    if (!hostd.start(arguments)) {
        run.fault = QStringLiteral("the daemon does not start");
        return run;
    }
    const QByteArray path = QFile::encodeName(root) + "/tmp/agiin";
    QElapsedTimer silence;
    silence.start();
    int pipe = -1;
    while (pipe < 0 && silence.elapsed() < kSilenceMs) {
        pipe = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        if (pipe < 0)
            QThread::msleep(10);
    }
    EpochCounter counter(run);
    QByteArray buffer(65536, '\0');
    qint64 nextLook = 0;
    while (pipe >= 0 && run.epochs < epochs && silence.elapsed() < kSilenceMs) {
        pollfd waiting = {pipe, POLLIN, 0};
        static_cast<void>(::poll(&waiting, 1, 100));
        const ssize_t size = ::read(pipe, buffer.data(), static_cast<size_t>(buffer.size()));
        if (size <= 0) {
            // Before the daemon opens its end, poll() reports an end of file all the time.
            QThread::msleep(1);
            continue;
        }
        silence.start();
        counter.read(buffer.left(static_cast<int>(size)));
        if (copy)
            copy->write(buffer.constData(), size);
        if (run.epochs < nextLook)
            continue;
        nextLook = run.epochs + std::max<qint64>(epochs / kLooksADay, 1);
        qint64 &most = run.epochs <= epochs / 10 ? run.earlyKb : run.lateKb;
        if (const auto memory = ProcessFigures::memory(hostd.processId()))
            most = std::max(most, memory->residentKb);
    }
    if (pipe >= 0)
        ::close(pipe);
    if (run.fault.isEmpty() && run.epochs < epochs)
        run.fault = QStringLiteral("only %1 of %2 epochs").arg(run.epochs).arg(epochs);
    return run;
}

} // namespace DayRun
