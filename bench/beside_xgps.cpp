// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// beside-xgps [SECONDS [WIDTH HEIGHT [PICTURES]]]: the whole viewer beside xgps with gpsd, each
// program on a virtual display of its own and both at the same time on the same stream of epochs
// with four constellations, 1 and then 10 a second, for SECONDS (60) each. Prints the time from the
// start to the window's being mapped, memory, and the processor time of the programs and of their X
// servers, and saves what both show in the folder PICTURES. Ends with 0, with 1 when a figure is
// missed or could not be taken, with 2 when it was called wrongly.

#include "support/Gpsd.h"
#include "support/NmeaPipe.h"
#include "support/NmeaSentences.h"
#include "support/ProcessFigures.h"
#include "support/Pty.h"
#include "support/SettingsFile.h"
#include "support/SystemBus.h"
#include "support/VirtualDisplay.h"
#include "WindowWatch.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

namespace {

constexpr int kDefaultSeconds = 60;
constexpr int kStartRounds = 15;
constexpr int kStartMs = 60000;
constexpr int kEndMs = 10000;
constexpr int kSettleSeconds = 6;
constexpr int kSatellites = 31;
constexpr QSize kDefaultScreen(800, 480); // the device's

constexpr double kMostCpuAt1Hz = 0.25;
constexpr double kMostCpuAt10Hz = 0.03;
constexpr double kMostMemory = 0.85;
constexpr double kMostStart = 0.35;

/// A program on a display of its own.
class Program
{
public:
    Program(const QString &file, const QStringList &arguments, QSize screen)
        : display(screen)
        , watch(display.name())
    {
        process.setProgram(file);
        process.setArguments(arguments);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DISPLAY"), display.name());
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        environment.insert(QStringLiteral("GDK_BACKEND"), QStringLiteral("x11"));
        // Neither waits for the services of a desktop that are not there.
        environment.insert(QStringLiteral("NO_AT_BRIDGE"), QStringLiteral("1"));
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                           QStringLiteral("unix:path=/nonexistent/bus"));
        process.setProcessEnvironment(environment);
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setStandardErrorFile(folder.filePath(QStringLiteral("stderr")));
    }
    ~Program() { stop(); }

    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    /// Milliseconds until the window is mapped, negative when it does not come.
    double start()
    {
        QElapsedTimer timer;
        timer.start();
        process.start();
        if (!watch.waitForWindow(kStartMs))
            return -1.0;
        const auto elapsed = static_cast<double>(timer.nsecsElapsed()) / 1e6;
        process.waitForStarted(kStartMs);
        return elapsed;
    }

    void stop()
    {
        process.terminate();
        if (process.state() == QProcess::NotRunning || process.waitForFinished(kEndMs))
            return;
        process.kill();
        process.waitForFinished(kEndMs);
    }

    bool isRunning() const { return process.state() == QProcess::Running; }
    qint64 processId() const { return process.processId(); }
    qint64 serverId() const { return display.processId(); }
    bool savePicture(const QString &file) const { return watch.picture().save(file); }

private:
    QTemporaryDir folder;
    VirtualDisplay display;
    WindowWatch watch;
    QProcess process;
};

/// Seconds of processor time.
struct tCpu
{
    double viewer = 0.0;
    double viewerServer = 0.0;
    double peer = 0.0;
    double gpsd = 0.0;
    double peerServer = 0.0;
};

tCpu operator-(const tCpu &a, const tCpu &b)
{
    return {a.viewer - b.viewer, a.viewerServer - b.viewerServer, a.peer - b.peer, a.gpsd - b.gpsd,
            a.peerServer - b.peerServer};
}

double cpuOf(qint64 processId)
{
    return ProcessFigures::processorTime(processId).value_or(0.0);
}

/// The folders and the pipe of the device that the viewer runs on.
class Device
{
public:
    Device()
        : ready(makeFolders() && writeLogSettings(root.path()))
        , input(root.filePath(QStringLiteral("tmp/agiin")))
    {
        qputenv("TAVRIN_ROOT", QFile::encodeName(root.path()));
    }

    bool isReady() const { return ready && input.isOpen(); }
    const NmeaPipe &pipe() const { return input; }

private:
    bool makeFolders() const
    {
        const QDir folder(root.path());
        return folder.mkpath(QStringLiteral("tmp")) && folder.mkpath(QStringLiteral("log"));
    }

    QTemporaryDir root;
    bool ready;
    NmeaPipe input;
};

/// Both programs and what feeds them.
class Comparison
{
public:
    Comparison(QSize size, const QString &pictureFolder)
        : screen(size)
        , pictures(pictureFolder)
        , out(stdout)
        , err(stderr)
    {
    }

    bool run(int seconds)
    {
        if (!bus.start() || !device.isReady() || !startGpsd())
            return failed("gpsd or the system bus did not start");
        peer = std::make_unique<Program>(
            QStringLiteral("xgps"), QStringList{QStringLiteral("127.0.0.1:%1").arg(port)}, screen);
        viewer = std::make_unique<Program>(QStringLiteral(VIEWER_BINARY), QStringList(), screen);
        if (!compareStart())
            return failed("a window did not come up");
        return compareAt(1, seconds, kMostCpuAt1Hz) && compareMemory() &&
               compareAt(10, seconds, kMostCpuAt10Hz);
    }

    bool isReached() const { return reached; }

private:
    bool failed(const char *what)
    {
        err << "beside-xgps: " << what << '\n';
        return false;
    }

    bool startGpsd()
    {
        const QString serial = folder.filePath(QStringLiteral("serial"));
        return line.plugIn(serial) && gpsd.start(port, {QStringLiteral("-b"), serial});
    }

    /// In turns, so that a busy moment hits both; the best counts. Leaves both running.
    bool compareStart()
    {
        double best = kStartMs;
        double peerBest = kStartMs;
        for (int round = 0; round < kStartRounds; ++round) {
            peer->stop();
            viewer->stop();
            const double peerMs = peer->start();
            const double ms = viewer->start();
            if (ms < 0.0 || peerMs < 0.0)
                return false;
            best = std::min(best, ms);
            peerBest = std::min(peerBest, peerMs);
        }
        out << screen.width() << 'x' << screen.height() << ", best start of " << kStartRounds
            << "\n\n| | viewer | xgps with gpsd | ratio | to reach |\n|---|---:|---:|---:|---:|\n";
        printRow(QStringLiteral("start until the window is mapped, ms"), best, peerBest, 0,
                 kMostStart);
        return true;
    }

    bool compareMemory()
    {
        const auto memory = ProcessFigures::memory(viewer->processId());
        const auto peerMemory = ProcessFigures::memory(peer->processId());
        if (!memory || !peerMemory)
            return failed("a program ended");
        printRow(QStringLiteral("RSS, kB, without gpsd"), double(memory->residentKb),
                 double(peerMemory->residentKb), 0, kMostMemory);
        printRow(QStringLiteral("private memory, kB, without gpsd"), double(memory->privateKb),
                 double(peerMemory->privateKb), 0);
        return true;
    }

    bool compareAt(int rate, int seconds, double most)
    {
        feed(rate, kSettleSeconds);
        const tCpu before = takeCpu();
        feed(rate, seconds);
        const tCpu spent = takeCpu() - before;
        if (!viewer->isRunning() || !peer->isRunning())
            return failed("a program ended");
        if (!everythingTaken || gpsd.satellitesInView() != kSatellites)
            return failed("gpsd or the viewer did not take everything");
        const double toPercent = 100.0 / seconds;
        const QString at = QStringLiteral(" at %1 Hz, % of a core").arg(rate);
        printRow(QStringLiteral("processor time") + at, spent.viewer * toPercent,
                 (spent.peer + spent.gpsd) * toPercent, 2, most);
        printRow(QStringLiteral("X server's processor time") + at, spent.viewerServer * toPercent,
                 spent.peerServer * toPercent, 2);
        return savePictures(QStringLiteral("-%1hz.png").arg(rate));
    }

    bool savePictures(const QString &ending)
    {
        if (pictures.isEmpty() ||
            (viewer->savePicture(pictures + QStringLiteral("/viewer") + ending) &&
             peer->savePicture(pictures + QStringLiteral("/xgps") + ending)))
            return true;
        return failed("the pictures cannot be saved");
    }

    tCpu takeCpu() const
    {
        return {cpuOf(viewer->processId()), cpuOf(viewer->serverId()), cpuOf(peer->processId()),
                cpuOf(gpsd.processId()), cpuOf(peer->serverId())};
    }

    void feed(int rate, int seconds)
    {
        using Clock = std::chrono::steady_clock;
        const Clock::time_point start = Clock::now();
        for (int i = 0; i < rate * seconds; ++i) {
            fedMs += 1000 / rate;
            const QByteArray epoch = NmeaSentences::epochOf31Satellites(fedMs / 1000, fedMs % 1000);
            const bool taken = device.pipe().write(epoch);
            everythingTaken = line.write(epoch) && taken && everythingTaken;
            std::this_thread::sleep_until(start + std::chrono::milliseconds(1000 / rate) * (i + 1));
        }
    }

    /// `most` 0: whatever the ratio is.
    void printRow(const QString &name, double value, double peerValue, int decimals,
                  double most = 0.0)
    {
        // In a short run an X server may have had nothing to count.
        const double ratio = peerValue > 0.0 ? value / peerValue : 0.0;
        reached = reached && (most == 0.0 || (peerValue > 0.0 && ratio <= most));
        out << "| " << name << " | " << QString::number(value, 'f', decimals) << " | "
            << QString::number(peerValue, 'f', decimals) << " | " << QString::number(ratio, 'f', 3)
            << " | " << (most == 0.0 ? QString() : QString::number(most, 'f', 2)) << " |\n"
            << Qt::flush;
    }

    const QSize screen;
    const QString pictures;
    QTextStream out;
    QTextStream err;
    SystemBus bus;
    Device device;
    QTemporaryDir folder;
    Pty line;
    const quint16 port = Gpsd::freePort();
    Gpsd gpsd;
    std::unique_ptr<Program> peer;
    std::unique_ptr<Program> viewer;
    int fedMs = 43200000;
    bool everythingTaken = true;
    bool reached = true;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    const int seconds = arguments.isEmpty() ? kDefaultSeconds : arguments.at(0).toInt();
    const QSize screen = arguments.size() > 1
                             ? QSize(arguments.at(1).toInt(), arguments.value(2).toInt())
                             : kDefaultScreen;
    if (arguments.size() > 4 || seconds < 1 || screen.isEmpty()) {
        QTextStream(stderr) << "usage: beside-xgps [SECONDS [WIDTH HEIGHT [PICTURES]]]\n";
        return 2;
    }
    Comparison comparison(screen, arguments.value(3));
    if (!comparison.run(seconds))
        return 1;
    if (!comparison.isReached())
        QTextStream(stderr) << "beside-xgps: not every figure is reached\n";
    return comparison.isReached() ? 0 : 1;
}
