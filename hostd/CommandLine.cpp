// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/CommandLine.h"

#include "hostd/CommandLineParts.h"
#include "hostd/LiveCommandLine.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <cmath>

namespace {

using Action = tCommandLine::Action;
using CommandLineParts::failed;
using CommandLineParts::helpOf;
using CommandLineParts::helpOption;
using CommandLineParts::kHelp;
using CommandLineParts::latin1;
using CommandLineParts::shown;

constexpr double kMaxRateHz = 100.0;
constexpr double kMaxScale = 1000.0;
constexpr double kMaxEpochsPerSecond = 2000.0;
constexpr double kMaxTtffS = 86400.0;
constexpr double kMinAltitudeM = -1000.0;
constexpr double kMaxAltitudeM = 50000.0;
constexpr double kMaxStartS = 1e9;
constexpr int kFirstYear = 2000;
constexpr int kLastYear = 2098;

namespace Simulate {
constexpr QLatin1String kPosition = latin1("position");
constexpr QLatin1String kRate = latin1("rate");
constexpr QLatin1String kSeed = latin1("seed");
constexpr QLatin1String kTtff = latin1("ttff");
constexpr QLatin1String kTimeScale = latin1("time-scale");
constexpr QLatin1String kStartTime = latin1("start-time");
} // namespace Simulate
namespace Replay {
constexpr QLatin1String kSpeed = latin1("speed");
constexpr QLatin1String kLoop = latin1("loop");
constexpr QLatin1String kStart = latin1("start");
} // namespace Replay

constexpr QLatin1String kCommands = latin1("simulate, serial, gpsd, tcp or replay");

constexpr char kMainHelp[] = R"(Usage: tavrin-hostd COMMAND [options]

Gives TavrinViewer a receiver: writes the receiver's NMEA sentences into the named pipe
/tmp/agiin and obeys the commands that the viewer writes into /tmp/agiout.

Commands:
  simulate   a simulated receiver under a sky of moving satellites
  serial     a receiver at a serial line or USB
  gpsd       a receiver that a gpsd has
  tcp        a receiver that sends NMEA over the network
  replay     a recording of a real receiver, at its own pace
  tavrin-hostd COMMAND --help tells the options of each, with examples.

Options:
  -h, --help     Displays this help.
  -v, --version  Displays the version.

Pipes that are absent are made, and removed again at the end; pipes that were there stay.
An ordinary file at /tmp/agiout (a viewer makes one when it commands and nobody is there) is
replaced by a pipe. Only one daemon at a time serves a pair of pipes. Every user may read and
write the pipes that are made. Interrupt (Ctrl+C), SIGTERM or the end of the terminal ends the
daemon; started with nohup it outlives the terminal. The viewer may come and go as it likes.

Environment:
  TAVRIN_ROOT    Put before both paths. With TAVRIN_ROOT=/run/left the pipes are
                 /run/left/tmp/agiin and /run/left/tmp/agiout; start the viewer with the same
                 value. So two receivers can be watched side by side.

On a terminal the last line shows once a second how the receiver does: epochs a second, epochs,
checksum errors, satellites in use and in view, fix, last command. It begins with "held back" or
"paused" after a stop that the receiver itself does not obey.

Exit code: 0 after an end that was asked for or the end of the recording, 1 after a failure,
2 after wrong usage.

Example:
  tavrin-hostd simulate &
  tavrin-viewer
)";

constexpr char kSimulateExamples[] = R"(
The receiver powers up with a cold start: satellites are found, tracked, and after the time to
first fix there is a position. It obeys start, stop, hot, warm, cold and factory start, choice of
constellations and store of the non-volatile memory; each is reported on standard error. Choosing
constellations, also the same ones again, is a hot start with the time of one; a stopped receiver
takes the choice and stays stopped. The chosen constellations outlive every start but the factory
start: that one clears the non-volatile memory and returns to GPS, GLONASS, Galileo and BeiDou. The
memory is forgotten when the daemon ends. There are no simulated SBAS satellites.

The viewer measures the time to first fix by the epochs of a start, and passes over a fix in the
first one as a leftover from before. A fix that is due there comes after a silent period, and with
more than one epoch a second in the second epoch.

Examples:
  tavrin-hostd simulate
      Somewhere near Munich, first fix after 28 to 40 seconds.
  tavrin-hostd simulate --position -33.8568,151.2153,40
      In Sydney, where the quasi-zenith satellites can be seen once they are chosen.
  tavrin-hostd simulate --ttff hot=1,warm=5,cold=8,factory=12
      Every start finds its fix after exactly so many seconds, as the viewer measures them.
  tavrin-hostd simulate --seed 7 --start-time 2025-06-01T12:00:00Z
      The same satellites, noise and times to first fix in every run.
  tavrin-hostd simulate --time-scale 10
      Ten simulated seconds a second, with ten epochs a second.
)";

constexpr char kReplayExamples[] = R"(
The recording is an ordinary file and may come from any NMEA 0183 receiver; its sentences are put
into the order, the digits and the satellite numbers that the viewer's receiver uses. Sentences
without a checksum are played as well. Comments, binary data and broken sentences (a wrong checksum,
or cut off without one) are passed over; how many sentences is said at the end. Playing starts when
a reader has opened /tmp/agiin. Gaps in the recording are shortened to ten seconds; what is faster
than the computer is played as fast as it can. The viewer's Stop pauses the recording; Start goes on
from there, and so does a hot, warm, cold or factory start. Other commands are reported and nothing
else happens. A file that --record made keeps its own times, gaps included, and the commands of then
are shown; older parts come first: replay drive.tlog.1 drive.tlog.

Examples:
  tavrin-hostd replay drive.log
      Plays a recording once at the pace of its own times.
  tavrin-hostd replay --speed 10 monday.log tuesday.log
      Two recordings one after the other, ten times as fast.
  tavrin-hostd replay --start 1:30:00 drive.log
      From an hour and a half into the recording on.
  tavrin-hostd replay --loop drive.log
      Over and over, until interrupted.
)";

// A plain decimal number: QString's own reading also takes "inf" and "nan".
std::optional<double> numberOf(const QString &text)
{
    bool ok = false;
    const double value = text.toDouble(&ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

bool readPositive(const QString &option, const QString &text, double most, double *value,
                  QString *error)
{
    const std::optional<double> number = numberOf(text);
    if (!number || *number < 0.001 || *number > most) {
        *error = QStringLiteral("--%1 takes a number from 0.001 to %2, not '%3'")
                     .arg(option)
                     .arg(most)
                     .arg(text);
        return false;
    }
    *value = *number;
    return true;
}

// Seconds, minutes and seconds, or hours, minutes and seconds.
bool readOffset(const QString &text, double *seconds, QString *error)
{
    const QStringList parts = text.split(QLatin1Char(':'));
    double sum = 0.0;
    bool fine = parts.size() <= 3;
    for (int i = 0; i < parts.size(); ++i) {
        const std::optional<double> number = numberOf(parts[i]);
        // Only the first part may be beyond 59, only the last one have decimals.
        const bool isInRange = number && *number >= 0.0 && (i == 0 || *number < 60.0);
        const bool isWhole = i + 1 == parts.size() || (number && std::floor(*number) == *number);
        fine = fine && isInRange && isWhole;
        sum = 60.0 * sum + number.value_or(0.0);
    }
    if (!fine || sum > kMaxStartS) {
        *error = QStringLiteral("--start takes seconds, MM:SS or HH:MM:SS, for example 90 or "
                                "1:30:00; not '%1'")
                     .arg(text);
        return false;
    }
    *seconds = sum;
    return true;
}

bool readPosition(const QString &text, tPlace *place, QString *error)
{
    const QStringList parts = text.split(QLatin1Char(','));
    const std::optional<double> latitude = numberOf(parts.value(0));
    const std::optional<double> longitude = numberOf(parts.value(1));
    const std::optional<double> altitude = numberOf(parts.value(2));
    if (parts.size() != 3 || !latitude || !longitude || !altitude) {
        *error = QStringLiteral("--position takes LAT,LON,ALT in degrees, degrees and metres, "
                                "for example 48.1173,11.5167,545; not '%1'")
                     .arg(text);
        return false;
    }
    if (std::fabs(*latitude) > 90.0 || std::fabs(*longitude) > 180.0) {
        *error =
            QStringLiteral("--position: latitude is -90 to 90, longitude -180 to 180; not '%1'")
                .arg(text);
        return false;
    }
    if (*altitude < kMinAltitudeM || *altitude > kMaxAltitudeM) {
        *error = QStringLiteral("--position: altitude is %1 to %2 metres; not '%3'")
                     .arg(kMinAltitudeM)
                     .arg(kMaxAltitudeM)
                     .arg(text);
        return false;
    }
    *place = {*latitude, *longitude, *altitude};
    return true;
}

bool readTtff(const QString &text, std::array<std::optional<double>, 4> *ttffS, QString *error)
{
    const QStringList kKeys = {QStringLiteral("hot"), QStringLiteral("warm"),
                               QStringLiteral("cold"), QStringLiteral("factory")};
    const QStringList entries = text.split(QLatin1Char(','));
    for (const QString &entry : entries) {
        const int equals = entry.indexOf(QLatin1Char('='));
        const int key = kKeys.indexOf(entry.left(equals));
        if (equals < 0 || key < 0) {
            *error =
                QStringLiteral("--ttff takes hot=, warm=, cold= and factory= with seconds, for "
                               "example cold=8,factory=12; not '%1'")
                    .arg(entry);
            return false;
        }
        std::optional<double> &slot = (*ttffS)[static_cast<size_t>(key)];
        const std::optional<double> seconds = numberOf(entry.mid(equals + 1));
        if (slot || !seconds || *seconds <= 0.0 || *seconds > kMaxTtffS) {
            *error = slot ? QStringLiteral("--ttff names '%1' twice").arg(kKeys[key])
                          : QStringLiteral("--ttff takes seconds above 0 and up to %1, not '%2'")
                                .arg(kMaxTtffS)
                                .arg(entry);
            return false;
        }
        slot = seconds;
    }
    return true;
}

bool readStartTime(const QString &text, QDateTime *time, QString *error)
{
    QDateTime read = QDateTime::fromString(text, Qt::ISODateWithMs);
    // A time without a zone is UTC, as everything a receiver says is.
    if (read.isValid() && read.timeSpec() == Qt::LocalTime)
        read.setTimeSpec(Qt::UTC);
    read = read.toUTC();
    if (!read.isValid() || read.date().year() < kFirstYear || read.date().year() > kLastYear) {
        *error = QStringLiteral("--start-time takes a UTC time of the years %1 to %2, for example "
                                "2025-06-01T12:00:00Z; not '%3'")
                     .arg(kFirstYear)
                     .arg(kLastYear)
                     .arg(text);
        return false;
    }
    *time = read;
    return true;
}

bool readSeed(const QString &text, quint64 *seed, QString *error)
{
    static const QRegularExpression digits(QStringLiteral("^[0-9]+$"));
    bool ok = false;
    const quint64 value = text.toULongLong(&ok);
    if (!ok || !digits.match(text).hasMatch()) {
        *error =
            QStringLiteral("--seed takes a whole number from 0 to 18446744073709551615, not '%1'")
                .arg(text);
        return false;
    }
    *seed = value;
    return true;
}

void addSimulateOptions(QCommandLineParser &parser)
{
    parser.setApplicationDescription(
        QStringLiteral("Plays a receiver that stands still under a simulated sky."));
    parser.addOptions({
        helpOption(),
        {Simulate::kPosition,
         QStringLiteral("Where the receiver stands: degrees north, degrees east, metres. South and "
                        "west are negative. Default: 48.1173,11.5167,545.4."),
         QStringLiteral("LAT,LON,ALT")},
        {Simulate::kRate, QStringLiteral("Epochs a second, 0.001 to 100. Default: 1."),
         QStringLiteral("HZ")},
        {Simulate::kSeed,
         QStringLiteral("Seed of everything that is random; without it every run differs. The seed "
                        "of a run is reported."),
         QStringLiteral("N")},
        {Simulate::kTtff,
         QStringLiteral("Seconds to the first fix by kind of start, rounded up to whole epochs; "
                        "kinds that are not named keep their typical times."),
         QStringLiteral("hot=S,warm=S,cold=S,factory=S")},
        {Simulate::kTimeScale,
         QStringLiteral("Simulated seconds in a real one, 0.001 to 1000. Default: 1."),
         QStringLiteral("F")},
        {Simulate::kStartTime,
         QStringLiteral("Simulated UTC time of the first epoch, ISO 8601. Default: now."),
         QStringLiteral("TIME")},
        CommandLineParts::verboseOption(),
    });
}

bool readSimulateOptions(const QCommandLineParser &parser, tCommandLine *line, QString *error)
{
    // Whether the option is absent or its value is right.
    const auto fine = [&parser](const QString &option, const auto &read) {
        return !parser.isSet(option) || read(parser.value(option));
    };
    tSimulationSettings &simulation = line->simulation;
    return fine(
               Simulate::kPosition,
               [&](const QString &text) { return readPosition(text, &simulation.place, error); }) &&
           fine(Simulate::kRate,
                [&](const QString &text) {
                    return readPositive(Simulate::kRate, text, kMaxRateHz, &simulation.rateHz,
                                        error);
                }) &&
           fine(Simulate::kSeed,
                [&](const QString &text) { return readSeed(text, &simulation.seed, error); }) &&
           fine(Simulate::kTtff,
                [&](const QString &text) { return readTtff(text, &simulation.ttffS, error); }) &&
           fine(Simulate::kTimeScale,
                [&](const QString &text) {
                    return readPositive(Simulate::kTimeScale, text, kMaxScale, &line->timeScale,
                                        error);
                }) &&
           fine(Simulate::kStartTime, [&](const QString &text) {
               return readStartTime(text, &simulation.startTime, error);
           });
}

tCommandLine parseSimulate(const QStringList &arguments)
{
    QCommandLineParser parser;
    addSimulateOptions(parser);
    if (!parser.parse(arguments))
        return failed(parser.errorText());
    if (parser.isSet(kHelp))
        return shown(helpOf(parser, "simulate [options]", kSimulateExamples));
    const QStringList surplus = parser.positionalArguments();
    if (!surplus.isEmpty())
        return failed(QStringLiteral("simulate takes no argument '%1'").arg(surplus.first()));

    tCommandLine result;
    result.action = Action::Simulate;
    result.verbose = parser.isSet(CommandLineParts::kVerbose);
    result.simulation.seed = QRandomGenerator::global()->generate();
    QString error;
    if (!readSimulateOptions(parser, &result, &error))
        return failed(error);
    const double epochsPerSecond = result.simulation.rateHz * result.timeScale;
    if (epochsPerSecond > kMaxEpochsPerSecond)
        return failed(QStringLiteral("--rate times --time-scale is %1 epochs a second; at most %2")
                          .arg(epochsPerSecond)
                          .arg(kMaxEpochsPerSecond));
    return result;
}

QString unreadable(const QString &name)
{
    const QFileInfo info(name);
    if (!info.exists())
        return QStringLiteral("there is no file %1").arg(name);
    if (info.isDir())
        return QStringLiteral("%1 is a folder, not a recording").arg(name);
    if (!info.isFile())
        return QStringLiteral("%1 is no ordinary file; save a recording to one first").arg(name);
    if (!info.isReadable())
        return QStringLiteral("cannot read %1: no permission").arg(name);
    return {};
}

void addReplayOptions(QCommandLineParser &parser)
{
    parser.setApplicationDescription(
        QStringLiteral("Plays recorded NMEA data at the pace of its own times."));
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("Recordings, in order."),
                                 QStringLiteral("FILE..."));
    parser.addOptions({
        helpOption(),
        {Replay::kSpeed,
         QStringLiteral("Recorded seconds in a real one, 0.001 to 1000. Default: 1."),
         QStringLiteral("F")},
        {Replay::kStart,
         QStringLiteral("Where to begin: seconds, or hours, minutes and seconds, of recorded time "
                        "after the first epoch. Default: 0."),
         QStringLiteral("S|[HH:]MM:SS")},
        {Replay::kLoop, QStringLiteral("Begins again after the last recording.")},
        CommandLineParts::verboseOption(),
    });
}

tCommandLine parseReplay(const QStringList &arguments)
{
    QCommandLineParser parser;
    addReplayOptions(parser);
    if (!parser.parse(arguments))
        return failed(parser.errorText());
    if (parser.isSet(kHelp))
        return shown(helpOf(parser, "replay [options] FILE...", kReplayExamples));

    tCommandLine result;
    result.action = Action::Replay;
    result.verbose = parser.isSet(CommandLineParts::kVerbose);
    result.files = parser.positionalArguments();
    result.loop = parser.isSet(Replay::kLoop);
    QString error;
    if (parser.isSet(Replay::kSpeed) && !readPositive(Replay::kSpeed, parser.value(Replay::kSpeed),
                                                      kMaxScale, &result.speed, &error))
        return failed(error);
    if (parser.isSet(Replay::kStart) &&
        !readOffset(parser.value(Replay::kStart), &result.startS, &error))
        return failed(error);
    if (result.files.isEmpty())
        return failed(QStringLiteral("replay needs at least one FILE"));
    for (const QString &name : qAsConst(result.files)) {
        const QString why = unreadable(name);
        if (!why.isEmpty())
            return failed(why);
    }
    return result;
}

// What the command's own reader makes of the rest; nothing for what is no command.
std::optional<tCommandLine> parseCommand(const QString &command, const QStringList &rest)
{
    if (command == QLatin1String("simulate"))
        return parseSimulate(rest);
    if (command == QLatin1String("replay"))
        return parseReplay(rest);
    if (command == QLatin1String("serial"))
        return parseLive(tLiveSettings::Kind::Serial, rest);
    if (command == QLatin1String("gpsd"))
        return parseLive(tLiveSettings::Kind::Gpsd, rest);
    if (command == QLatin1String("tcp"))
        return parseLive(tLiveSettings::Kind::Tcp, rest);
    return std::nullopt;
}

} // namespace

tCommandLine parseCommandLine(const QStringList &arguments)
{
    const QString command = arguments.value(1);
    QStringList rest = arguments;
    if (rest.size() > 1)
        rest.removeAt(1);
    if (std::optional<tCommandLine> line = parseCommand(command, rest)) {
        line->helpCommand = command;
        return *line;
    }
    if (command == QLatin1String("-h") || command == QLatin1String("--help"))
        return shown(QString::fromLatin1(kMainHelp));
    if (command == QLatin1String("-v") || command == QLatin1String("--version"))
        return shown(
            QStringLiteral("tavrin-hostd %1\n").arg(QCoreApplication::applicationVersion()));
    if (command.isEmpty())
        return failed(QStringLiteral("name a command: %1").arg(QString(kCommands)));
    return failed(QStringLiteral("'%1' is no command; name %2").arg(command, QString(kCommands)));
}
