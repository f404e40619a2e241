// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// soak [RATE SECONDS]: feeds the real viewer RATE epochs a second for SECONDS seconds, by default a
// day's worth of epochs at 400 a second, while its log page records them, and prints how much
// memory, how many file descriptors and how many threads it has. Ends with 0, with 1 when one of
// them goes on growing after the first third or when the recording lacks more than its two ends,
// with 2 when it was called wrongly.

#include "support/NmeaPipe.h"
#include "support/NmeaSentences.h"
#include "support/Pages.h"
#include "support/ProcessFigures.h"
#include "support/SettingsFile.h"
#include "support/SystemBus.h"
#include "support/ViewerProcess.h"

#include <QCoreApplication>
#include <QDir>
#include <QTextStream>

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kDefaultRate = 400;
constexpr int kDefaultSeconds = 216;
constexpr int kMostRate = 1000;
constexpr int kRows = 24;
constexpr int kWarmUpRows = kRows / 3;
/// The log page holds the text of three updates. How much of it a late update brings decides how
/// far the heap reaches, without anything growing on.
constexpr qint64 kMemoryToleranceKb = 1024;
constexpr qint64 kMemoryToleranceKbAtOneHz = 8;
/// The reader sleeps for half a second when it finds the pipe empty; this holds more than comes.
constexpr int kPipeBytes = 1024 * 1024;
constexpr int kUnrecordedSeconds = 3;
constexpr std::chrono::seconds kPatience(10);
const QString kRecordingBox = QStringLiteral("checkBox");

/// The highest values of an interval.
struct tFigures
{
    qint64 residentKb = 0;
    qint64 privateKb = 0;
    int files = 0;
    int threads = 0;
};

tFigures highest(const tFigures &a, const tFigures &b)
{
    return {std::max(a.residentKb, b.residentKb), std::max(a.privateKb, b.privateKb),
            std::max(a.files, b.files), std::max(a.threads, b.threads)};
}

tFigures highest(std::vector<tFigures>::const_iterator begin,
                 std::vector<tFigures>::const_iterator end)
{
    tFigures result;
    for (; begin != end; ++begin)
        result = highest(result, *begin);
    return result;
}

/// Whether the last third of the rows stays where the second third was.
bool isFlat(const std::vector<tFigures> &rows, qint64 toleranceKb)
{
    const auto warm = rows.begin() + kWarmUpRows;
    const tFigures before = highest(warm, warm + kWarmUpRows);
    const tFigures after = highest(warm + kWarmUpRows, rows.end());
    return after.residentKb <= before.residentKb + toleranceKb &&
           after.privateKb <= before.privateKb + toleranceKb && after.files <= before.files &&
           after.threads <= before.threads;
}

/// A viewer that records what it is fed.
class Soak
{
public:
    Soak(int rate, int seconds)
        : epochsASecond(rate)
        , duration(seconds)
        , pipe(viewer.path(QStringLiteral("/tmp/agiin")))
    {
    }

    bool prepare()
    {
        return bus.start() && pipe.enlarge(kPipeBytes) && writeLogSettings(viewer.root()) &&
               viewer.start() && viewer.showPage(Pages::kLogButton, Pages::kLog) &&
               viewer.press(Pages::kLog, kRecordingBox);
    }

    /// Feeds and samples until the time is over; prints each row. False when the viewer ended or
    /// stopped reading.
    bool run(QTextStream &out)
    {
        const Clock::time_point start = Clock::now();
        for (int second = 0; second < duration; ++second) {
            for (int i = 0; i < epochsASecond; ++i) {
                if (!feed())
                    return false;
                std::this_thread::sleep_until(
                    start + std::chrono::nanoseconds(1000000000LL * fed / epochsASecond));
            }
            if (!sample())
                return false;
            if ((second + 1) * kRows / duration > static_cast<int>(rows.size()))
                finishRow(out);
        }
        return static_cast<int>(rows.size()) == kRows;
    }

    bool isFlat() const
    {
        return ::isFlat(rows, kMemoryToleranceKb + kMemoryToleranceKbAtOneHz * epochsASecond);
    }

    /// Bytes that the viewer recorded in its log files, and bytes that it was fed.
    qint64 recordedBytes() const
    {
        qint64 bytes = 0;
        const QDir folder(viewer.path(QStringLiteral("/log/GNSS")));
        const QFileInfoList files = folder.entryInfoList(QDir::Files);
        for (const QFileInfo &file : files)
            bytes += file.size();
        return bytes;
    }
    qint64 fedBytes() const { return bytesFed; }

    /// Whether nothing is missing but what came before the first update with the box ticked and
    /// after the last one.
    bool isRecorded() const
    {
        return recordedBytes() >= bytesFed - kUnrecordedSeconds * bytesFed / duration;
    }

    QString trace() const { return viewer.errorText() + viewer.standardError().right(1000); }

private:
    bool feed()
    {
        const qint64 ms = 1000LL * fed / epochsASecond;
        const QByteArray epoch = NmeaSentences::epochOf31Satellites(static_cast<int>(ms / 1000),
                                                                    static_cast<int>(ms % 1000));
        const Clock::time_point start = Clock::now();
        while (!pipe.write(epoch)) {
            if (Clock::now() - start > kPatience)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        ++fed;
        bytesFed += epoch.size();
        return true;
    }

    bool sample()
    {
        const qint64 id = viewer.process().processId();
        const std::optional<ProcessFigures::tMemory> memory = ProcessFigures::memory(id);
        if (!memory)
            return false;
        row = highest(row, {memory->residentKb, memory->privateKb, ProcessFigures::openFiles(id),
                            ProcessFigures::threads(id)});
        return true;
    }

    void finishRow(QTextStream &out)
    {
        out << "| " << fed << " | " << row.residentKb << " | " << row.privateKb << " | "
            << row.files << " | " << row.threads << " |\n"
            << Qt::flush;
        rows.push_back(row);
        row = {};
    }

    const int epochsASecond;
    const int duration;
    SystemBus bus;
    ViewerProcess viewer;
    NmeaPipe pipe;
    qint64 fed = 0;
    qint64 bytesFed = 0;
    tFigures row;
    std::vector<tFigures> rows;
};

int run(int rate, int seconds)
{
    QTextStream out(stdout);
    QTextStream err(stderr);
    Soak soak(rate, seconds);
    if (!soak.prepare()) {
        err << "soak: the viewer does not record\n" << soak.trace() << '\n';
        return 1;
    }
    out << rate << " epochs a second for " << seconds << " s, log page recording\n\n"
        << "| epochs | RSS kB | private kB | files | threads |\n|---:|---:|---:|---:|---:|\n"
        << Qt::flush;
    if (!soak.run(out)) {
        err << "soak: the viewer ended, or reads no more\n" << soak.trace() << '\n';
        return 1;
    }
    out << "\nrecorded " << soak.recordedBytes() << " of " << soak.fedBytes() << " bytes\n";
    if (!soak.isFlat())
        err << "soak: not everything stays flat after the first third\n";
    if (!soak.isRecorded())
        err << "soak: the recording is not complete\n";
    return soak.isFlat() && soak.isRecorded() ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    const int rate = arguments.isEmpty() ? kDefaultRate : arguments.at(0).toInt();
    const int seconds = arguments.isEmpty() ? kDefaultSeconds : arguments.value(1).toInt();
    if (arguments.size() > 2 || rate < 1 || rate > kMostRate || seconds < kRows) {
        QTextStream(stderr) << "usage: soak [RATE SECONDS], 1 to " << kMostRate << ", at least "
                            << kRows << '\n';
        return 2;
    }
    return run(rate, seconds);
}
