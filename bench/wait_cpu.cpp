// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// wait-cpu [SECONDS]: what the real viewer costs while it waits, as a share of a core, over SECONDS
// (30) for each state, from the processor time that the system counts for all its threads. On a
// virtual display, which is a process of its own and not counted. Ends with 0, with 1 when a TTFF
// run or a wait for the memory's store costs more than 2 % with nothing coming in or when something
// failed, with 2 when it was called wrongly.

#include "support/NmeaPipe.h"
#include "support/NmeaSentences.h"
#include "support/Pages.h"
#include "support/ProcessFigures.h"
#include "support/SettingsFile.h"
#include "support/ViewerProcess.h"

#include <QCoreApplication>
#include <QTextStream>
#include <QTime>

#include <chrono>
#include <functional>
#include <optional>
#include <thread>

namespace {

constexpr int kDefaultSeconds = 30;
constexpr int kMostSeconds = 33; // the wait for the store is 36 seconds long
constexpr double kMostPercent = 2.0;
constexpr std::chrono::seconds kPatience(30);

const QString kTestButton = QStringLiteral("pushButton_Test");
const QString kStoreBegins = QStringLiteral("nvmStoreToFlash run!");
const QString kTimeFormat = QStringLiteral("hhmmss.zzz");
const QString kStoreEnds = QStringLiteral("NVM Store now");

enum class State { Rest, Run, Store };

struct tCase
{
    const char *name;
    const char *page;
    State state;
    bool data;
    bool limited;
};

constexpr tCase kCases[] = {
    {"at rest", "satellite", State::Rest, false, false},
    {"at rest", "satellite", State::Rest, true, false},
    {"TTFF run, waiting for the fix", "TTFF test", State::Run, false, true},
    {"TTFF run, waiting for the fix", "TTFF test", State::Run, true, false},
    {"36 s before the NVM store", "satellite", State::Store, false, true},
    {"36 s before the NVM store", "satellite", State::Store, true, false},
};

bool waitUntil(const std::function<bool()> &condition)
{
    const auto start = std::chrono::steady_clock::now();
    while (!condition()) {
        if (std::chrono::steady_clock::now() - start > kPatience)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return true;
}

/// A viewer in one of the states, and the receiver's data for it.
class Measurement
{
public:
    explicit Measurement(const tCase &state)
        : wanted(state)
        , pipe(viewer.path(QStringLiteral("/tmp/agiin")))
    {
    }

    /// Brings the viewer into the state.
    bool prepare()
    {
        if (!writeLogSettings(viewer.root()) || !viewer.start())
            return false;
        switch (wanted.state) {
        case State::Rest:
            return true;
        case State::Run:
            return startRun();
        case State::Store:
            return startStore();
        }
        return false;
    }

    /// Percent of a core over `seconds` seconds.
    std::optional<double> measure(int seconds)
    {
        using Clock = std::chrono::steady_clock;
        feed(); // what only the first epoch costs is no part of waiting
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        const std::optional<double> before =
            ProcessFigures::processorTime(viewer.process().processId());
        const Clock::time_point start = Clock::now();
        for (int second = 1; second <= seconds; ++second) {
            feed();
            std::this_thread::sleep_until(start + std::chrono::seconds(second));
        }
        const std::optional<double> after =
            ProcessFigures::processorTime(viewer.process().processId());
        const std::chrono::duration<double> passed = Clock::now() - start;
        if (!before || !after || !isInState())
            return std::nullopt;
        return 100.0 * (*after - *before) / passed.count();
    }

    QString trace() const { return viewer.errorText() + viewer.standardError().right(1000); }

private:
    bool traced(const QString &text) const { return viewer.standardError().contains(text); }

    bool startRun()
    {
        return pipe.write(withoutFix(0)) && viewer.showPage(Pages::kTtffButton, Pages::kTtff) &&
               waitUntil([this] { return traced(QStringLiteral("RMC received V")); }) &&
               viewer.press(Pages::kTtff, kTestButton) && waitUntil([this] { return isInState(); });
    }

    /// By a first fix after a second without one.
    bool startStore() const
    {
        return pipe.write(withoutFix(0)) && pipe.write(NmeaSentences::epochOf31Satellites(1)) &&
               waitUntil([this] { return traced(kStoreBegins); });
    }

    bool isInState()
    {
        const bool runs = viewer.text(Pages::kTtff, kTestButton) == QStringLiteral("Stop");
        const bool stores = traced(kStoreBegins) && !traced(kStoreEnds);
        return runs == (wanted.state == State::Run) && stores == (wanted.state == State::Store);
    }

    void feed()
    {
        // A fix from the very first second on is an old one for the viewer: then it stays at rest.
        if (wanted.data && wanted.state == State::Rest)
            pipe.write(NmeaSentences::epochOf31Satellites(nextSecond - 2));
        else if (wanted.data)
            pipe.write(wanted.state == State::Run ? withoutFix(nextSecond)
                                                  : NmeaSentences::epochOf31Satellites(nextSecond));
        ++nextSecond;
    }

    static QByteArray withoutFix(int second)
    {
        const QByteArray epoch = NmeaSentences::epochOf31Satellites(second);
        const QByteArray time = QTime(0, 0).addSecs(second).toString(kTimeFormat).toLatin1();
        return epoch.left(epoch.lastIndexOf("$GNRMC")) +
               NmeaSentences::sentence("GNRMC," + time + ",V,,,,,,,050321,,,N");
    }

    const tCase wanted;
    ViewerProcess viewer;
    NmeaPipe pipe;
    int nextSecond = 2; // after those that bring the viewer into its state
};

/// Measures one state and prints its line. False when it costs too much or could not be measured.
bool report(const tCase &state, int seconds, QTextStream &out, QTextStream &err)
{
    Measurement measurement(state);
    const std::optional<double> percent =
        measurement.prepare() ? measurement.measure(seconds) : std::nullopt;
    if (!percent) {
        err << "wait-cpu: could not measure: " << state.name << '\n' << measurement.trace() << '\n';
        return false;
    }
    out << "| " << state.name << " | " << state.page << " | " << (state.data ? "1 Hz" : "none")
        << " | " << QString::number(*percent, 'f', 2) << " |\n"
        << Qt::flush;
    return !state.limited || *percent <= kMostPercent;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    QTextStream out(stdout);
    QTextStream err(stderr);
    const int seconds = arguments.isEmpty() ? kDefaultSeconds : arguments.at(0).toInt();
    if (arguments.size() > 1 || seconds < 1 || seconds > kMostSeconds) {
        err << "usage: wait-cpu [SECONDS], 1 to " << kMostSeconds << '\n';
        return 2;
    }
    out << "| state | page | data | % of a core |\n|---|---|---|---:|\n" << Qt::flush;
    bool ok = true;
    for (const tCase &state : kCases)
        ok = report(state, seconds, out, err) && ok;
    if (!ok)
        err << "wait-cpu: not every wait stays within " << kMostPercent << " %\n";
    return ok ? 0 : 1;
}
