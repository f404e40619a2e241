// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/LiveCommandLine.h"

#include "hostd/CommandLineParts.h"

#include <QFileInfo>

namespace {

using CommandLineParts::failed;
using CommandLineParts::latin1;
using LinkKind = tLiveSettings::Kind;

constexpr QLatin1String kBaud = latin1("baud");
constexpr QLatin1String kFamily = latin1("family");
constexpr QLatin1String kRaw = latin1("raw");
constexpr QLatin1String kRecord = latin1("record");
constexpr QLatin1String kAuto = latin1("auto");

constexpr int kMinBaud = 300;
constexpr int kMaxBaud = 4000000;
constexpr quint16 kNmeaPort = 10110;
constexpr quint16 kGpsdPort = 2947;

constexpr char kFamiliesHelp[] = R"(
Families and their receivers: pmtk MediaTek MT33xx; pair Airoha AG33xx (LC29H, LC76G); pqtm Quectel
LG290P; ubx u-blox; casic AT65xx (ATGM336H, L76K); allystar; unicore UM98x and UFirebird; sirf SiRF
III and IV; none for one that is not commanded. What a family cannot do is said on standard error.

Where the receiver cannot be stopped, is away, or is of a family that is not known, the viewer's
Stop holds its data back: it is read and recorded, but not handed on until Start or a hot, warm,
cold or factory start.
)";

constexpr char kSerialHelp[] = R"(
The speed and the receiver's family are found by listening, then by asking for its version, unless
they are given. Where the device is absent or vanishes, it is waited for. After a factory start the
speed is looked for again; with a given --baud the receiver has to keep it.

Examples:
  tavrin-hostd serial /dev/ttyACM0
      A USB receiver, everything found out.
  tavrin-hostd serial /dev/ttyUSB0 --baud 9600 --family casic
      A receiver at a USB adapter, nothing asked.
  tavrin-hostd serial /dev/ttyUSB0 --record drive.tlog
      Keeps every byte and every command; 'tavrin-hostd replay drive.tlog' plays it back.
)";

constexpr char kGpsdHelp[] = R"(
HOST is localhost and PORT 2947 where they are not given, DEVICE any receiver that gpsd has. gpsd
passes the sentences of an NMEA receiver on as they are; for one that sends binary data it writes
GGA, RMC, GSA and GSV itself. Commands go through gpsd to the receiver; a gpsd started with -b drops
them without a word. Not every gpsd restores a receiver that a command has reset.

Examples:
  tavrin-hostd gpsd
      The receiver of the gpsd on this machine.
  tavrin-hostd gpsd raspberrypi.local
      The receiver of another machine, whose gpsd was started with -G.
  tavrin-hostd gpsd localhost:2947:/dev/ttyACM0
      One of several receivers.
)";

constexpr char kTcpHelp[] = R"(
PORT is 10110 where it is not given; an IPv6 address stands in brackets. Without --family a server
is listened to and never asked: it may be more than a receiver, and questions could reach its other
devices.

Examples:
  tavrin-hostd tcp 192.168.4.1
      A receiver or multiplexer that sends NMEA over the network.
  tavrin-hostd tcp [fe80::1%eth0]:2000 --family ubx
      A u-blox receiver behind a serial server, which may be commanded.
)";

struct tCommandText
{
    const char *usage;
    const char *description;
    const char *help;
};

const tCommandText &textOf(LinkKind kind)
{
    static constexpr tCommandText kSerial = {
        "serial [options] DEVICE", "Serves a receiver at a serial line or USB.", kSerialHelp};
    static constexpr tCommandText kGpsd = {"gpsd [options] [HOST[:PORT[:DEVICE]]]",
                                           "Serves a receiver that a gpsd has.", kGpsdHelp};
    static constexpr tCommandText kTcp = {"tcp [options] HOST[:PORT]",
                                          "Serves a receiver that sends NMEA over the network.",
                                          kTcpHelp};
    return kind == LinkKind::Serial ? kSerial : kind == LinkKind::Gpsd ? kGpsd : kTcp;
}

QString familyNames()
{
    QStringList names{QString(kAuto)};
    const QVector<ReceiverFamily::Family> families = ReceiverFamily::all();
    for (const ReceiverFamily::Family family : families)
        names << ReceiverFamily::name(family);
    return names.join(QStringLiteral(", "));
}

void addOptions(QCommandLineParser &parser, LinkKind kind)
{
    parser.setApplicationDescription(QString::fromLatin1(textOf(kind).description));
    parser.addOption(CommandLineParts::helpOption());
    if (kind == LinkKind::Serial)
        parser.addOption(
            {kBaud,
             QStringLiteral("Speed of the line in bits a second, or auto to find it by "
                            "trying. Default: auto."),
             QStringLiteral("N")});
    parser.addOptions({
        {kFamily,
         QStringLiteral("How the receiver is commanded: %1. Default: auto.").arg(familyNames()),
         QStringLiteral("NAME")},
        {kRaw, QStringLiteral("Gives the viewer the receiver's bytes as they come.")},
        {kRecord,
         QStringLiteral("Keeps every byte that comes and every command that goes, with their "
                        "times."),
         QStringLiteral("FILE")},
        CommandLineParts::verboseOption(),
    });
}

bool readBaud(const QString &text, std::optional<int> *baud, QString *error)
{
    if (text == kAuto)
        return true;
    bool ok = false;
    const int value = text.toInt(&ok);
    if (!ok || value < kMinBaud || value > kMaxBaud) {
        *error = QStringLiteral("--baud takes a number from %1 to %2, or auto; not '%3'")
                     .arg(kMinBaud)
                     .arg(kMaxBaud)
                     .arg(text);
        return false;
    }
    *baud = value;
    return true;
}

bool readFamily(const QString &text, std::optional<ReceiverFamily::Family> *family, QString *error)
{
    *family = ReceiverFamily::parse(text);
    if (*family || text == kAuto)
        return true;
    *error = QStringLiteral("--family takes %1; not '%2'").arg(familyNames(), text);
    return false;
}

bool readDevice(const QString &text, QString *device, QString *error)
{
    // "ttyUSB0" is what most people mean by /dev/ttyUSB0.
    const bool isPath = text.contains(QLatin1Char('/')) || QFileInfo::exists(text);
    *device = isPath ? QFileInfo(text).absoluteFilePath() : QStringLiteral("/dev/") + text;
    if (text.isEmpty())
        *error = QStringLiteral("serial needs a DEVICE, for example /dev/ttyUSB0");
    else if (QFileInfo(*device).isDir())
        *error = QStringLiteral("%1 is a folder, not a device").arg(*device);
    else if (QFileInfo(*device).isFile())
        *error =
            QStringLiteral("%1 is a file, not a device; 'tavrin-hostd replay' plays recordings")
                .arg(*device);
    return error->isEmpty();
}

bool readAddress(const QString &text, LinkKind kind, tNetAddress *address, QString *error)
{
    const bool isGpsd = kind == LinkKind::Gpsd;
    const std::optional<tNetAddress> read =
        parseNetAddress(isGpsd && text.isEmpty() ? QStringLiteral("localhost") : text,
                        isGpsd ? kGpsdPort : kNmeaPort);
    if (!read || (!isGpsd && !read->rest.isEmpty())) {
        *error = QStringLiteral("%1; not '%2'")
                     .arg(isGpsd ? QStringLiteral("gpsd takes HOST, HOST:PORT or HOST:PORT:DEVICE, "
                                                  "for example localhost:2947:/dev/ttyACM0")
                                 : QStringLiteral("tcp takes HOST or HOST:PORT, for example "
                                                  "192.168.4.1:10110 or [::1]:10110"),
                          text);
        return false;
    }
    *address = *read;
    return true;
}

} // namespace

tCommandLine parseLive(LinkKind kind, const QStringList &arguments)
{
    QCommandLineParser parser;
    addOptions(parser, kind);
    if (!parser.parse(arguments))
        return failed(parser.errorText());
    if (parser.isSet(CommandLineParts::kHelp))
        return CommandLineParts::shown(
            CommandLineParts::helpOf(parser, textOf(kind).usage, textOf(kind).help) +
            QString::fromLatin1(kFamiliesHelp));
    const QStringList places = parser.positionalArguments();
    if (places.size() > 1)
        return failed(QStringLiteral("one receiver at a time, not also '%1'").arg(places[1]));

    tCommandLine result;
    tLiveSettings &live = result.live;
    result.action = tCommandLine::Action::Live;
    result.verbose = parser.isSet(CommandLineParts::kVerbose);
    result.raw = parser.isSet(kRaw);
    live.kind = kind;
    live.recordFile = parser.value(kRecord);
    QString error;
    const bool fine =
        (kind == LinkKind::Serial ? readDevice(places.value(0), &live.device, &error)
                                  : readAddress(places.value(0), kind, &live.address, &error)) &&
        (kind != LinkKind::Serial || !parser.isSet(kBaud) ||
         readBaud(parser.value(kBaud), &live.baud, &error)) &&
        (!parser.isSet(kFamily) || readFamily(parser.value(kFamily), &live.family, &error));
    if (fine && parser.isSet(kRecord) && live.recordFile.isEmpty())
        error = QStringLiteral("--record needs the name of a FILE");
    return error.isEmpty() ? result : failed(error);
}
