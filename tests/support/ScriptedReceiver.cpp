// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/ScriptedReceiver.h"

#include "support/NmeaSentences.h"

#include <QTime>

#include <utility>

namespace {

constexpr int kLookMs = 2;

QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

// A version message of u-blox and Allystar receivers.
QByteArray version(const char *start, const QByteArray &payload)
{
    QByteArray body = hex("0a04");
    body += static_cast<char>(payload.size() & 0xff);
    body += static_cast<char>(payload.size() >> 8);
    body += payload;
    unsigned char a = 0;
    unsigned char b = 0;
    for (const char byte : qAsConst(body)) {
        a = static_cast<unsigned char>(a + static_cast<unsigned char>(byte));
        b = static_cast<unsigned char>(b + a);
    }
    return hex(start) + body + static_cast<char>(a) + static_cast<char>(b);
}

QByteArray field(const char *text, int size)
{
    return QByteArray(text).leftJustified(size, '\0');
}

QVector<tReceiverScript> makeScripts()
{
    using NmeaSentences::sentence;
    return {
        {"pmtk", "$PMTK605*31\r\n", sentence("PMTK705,AXN_2.31_3339_13101700,5632,PA6H,1.0"),
         "$PMTK101*32\r\n", "$PMTK102*31\r\n", "$PMTK103*30\r\n", "$PMTK104*37\r\n"},
        {"pair", "$PAIR021*39\r\n",
         sentence("PAIR021,AG3335M_V2.5.0.AG3335_20220401,S,N,8fbdc77c3f6b"), "$PAIR004*3E\r\n",
         "$PAIR005*3F\r\n", "$PAIR006*3C\r\n", "$PAIR007*3D\r\n"},
        {"pqtm", "$PQTMVERNO*58\r\n", sentence("PQTMVERNO,LG290P03AANR01A03S,2024/04/30,10:47:29"),
         "$PQTMHOT*4B\r\n", "$PQTMWARM*11\r\n", "$PQTMCOLD*1C\r\n",
         "$PQTMRESTOREPAR*13\r\n$PQTMSRR*4B\r\n"},
        {"ubx", hex("b5620a0400000e34"),
         version("b562", field("ROM CORE 3.01 (107888)", 30) + field("00080000", 10) +
                             field("PROTVER=18.00", 30) + field("GPS;GLO;GAL;BDS", 30)),
         hex("b56206040400000002001068"), hex("b562060404000100 0200116c"),
         hex("b5620604 0400ffff02000e61"),
         hex("b5620609 0d001f1f0000000000001f1f0000079fde b5620604 0400ffff02000e61")},
        {"casic", "$PCAS06,0*1B\r\n", sentence("GPTXT,01,01,02,SW=URANUS5,V5.3.0.0"),
         "$PCAS10,0*1C\r\n", "$PCAS10,1*1D\r\n", "$PCAS10,2*1E\r\n", "$PCAS10,3*1F\r\n"},
        {"allystar", hex("f1d90a0400000e34"),
         version("f1d9", field("3.018.b3d2b6a", 16) + field("HD8040.1c84a6", 16)),
         hex("f1d9064001000 34a24"), hex("f1d90640010002 4923"), hex("f1d906400100014822"),
         hex("f1d90609080002000000ffffffff1501 f1d906400100004721")},
        {"unicore", "VERSION\r\n",
         "$command,VERSION,response: OK*04\r\n"
         "#VERSION,92,GPS,FINE,2289,167126600,0,0,18,155;UM980,R4.10Build7923,HRPT00-S10C-P,"
         "2310415000001-MD22B1224961040,ff3bd496fd7ca68b,2022/09/28*45d62771\r\n",
         "RESET\r\n", "RESET EPHEM\r\n", "", "FRESET\r\n"},
        {"sirf", "$PSRF125*21\r\n", sentence("PSRFTXT,Version:GSW3.2.4_3.1.00.12-SDK003P1.00a"),
         "$PSRF101,0,0,0,0,0,0,12,1*15\r\n", "$PSRF101,0,0,0,0,0,0,12,2*16\r\n",
         "$PSRF101,0,0,0,0,0,0,12,4*10\r\n", "$PSRF101,0,0,0,0,0,0,12,8*1C\r\n"},
    };
}

} // namespace

ScriptedReceiver::ScriptedReceiver(const tReceiverScript &script, QObject *parent)
    : QObject(parent)
    , lines(script)
{
    epochTimer.setInterval(1000);
    epochTimer.setTimerType(Qt::PreciseTimer);
    lookTimer.setInterval(kLookMs);
    connect(&epochTimer, &QTimer::timeout, this, &ScriptedReceiver::sendEpoch);
    connect(&lookTimer, &QTimer::timeout, this, &ScriptedReceiver::look);
}

const QVector<tReceiverScript> &ScriptedReceiver::scripts()
{
    static const QVector<tReceiverScript> all = makeScripts();
    return all;
}

const tReceiverScript &ScriptedReceiver::script(const QByteArray &family)
{
    for (const tReceiverScript &one : scripts()) {
        if (one.family == family)
            return one;
    }
    qFatal("no script of %s", family.constData());
}

bool ScriptedReceiver::plugIn(const QString &devicePath)
{
    path = devicePath;
    epochTimer.start();
    lookTimer.start();
    return pty.plugIn(path);
}

void ScriptedReceiver::unplug()
{
    epochTimer.stop();
    lookTimer.stop();
    toSend.clear();
    pty.unplug();
}

void ScriptedReceiver::sendEpoch()
{
    // What is sent before the device is open and set up is lost, and would be missing in counts.
    const bool wasOpened = std::exchange(opened, pty.isOpened());
    if (!wasOpened || !opened)
        return;
    ++epochCount;
    ++epochsSinceStart;
    if (!silent)
        send(epochText());
}

void ScriptedReceiver::send(const QByteArray &bytes)
{
    QByteArray onLine = bytes;
    if (baud != 0 && pty.baud() != baud) {
        for (char &byte : onLine)
            byte = static_cast<char>(byte ^ 0x95);
    }
    toSend += onLine;
    if (pieceSize == 0 && pty.write(toSend)) {
        allSent += toSend;
        toSend.clear();
    }
}

void ScriptedReceiver::look()
{
    if (pieceSize > 0 && !toSend.isEmpty() && pty.write(toSend.left(pieceSize))) {
        allSent += toSend.left(pieceSize);
        toSend.remove(0, pieceSize);
    }
    const QByteArray bytes = pty.read();
    if (bytes.isEmpty() || (baud != 0 && pty.baud() != baud))
        return;
    told += bytes;
    recent += bytes;
    while (obeyFirst()) {
    }
}

// On a busy machine several are read at once.
bool ScriptedReceiver::obeyFirst()
{
    const struct
    {
        const char *restart; // none: a question
        const QByteArray &bytes;
    } kinds[] = {{nullptr, lines.question},
                 {"factory", lines.factory},
                 {"hot", lines.hot},
                 {"warm", lines.warm},
                 {"cold", lines.cold}};
    int first = recent.size();
    const auto *found = std::end(kinds);
    for (const auto *kind = std::begin(kinds); kind != std::end(kinds); ++kind) {
        const int at = kind->bytes.isEmpty() ? -1 : recent.indexOf(kind->bytes);
        if (at >= 0 && at < first) {
            first = at;
            found = kind;
        }
    }
    if (found == std::end(kinds))
        return false;
    recent.remove(0, first + found->bytes.size());
    if (found->restart)
        restart(QString::fromLatin1(found->restart));
    else
        send(lines.answer);
    return true;
}

void ScriptedReceiver::restart(const QString &kind)
{
    starts << kind;
    epochsSinceStart = 0;
    toSend.clear();
    if (factoryBaud != 0 && kind == QLatin1String("factory"))
        baud = factoryBaud;
    if (vanishMs > 0) {
        unplug();
        QTimer::singleShot(vanishMs, this, [this] { plugIn(path); });
    }
}

// Ten seconds a second would do as well: the time only has to go on.
QByteArray ScriptedReceiver::epochText() const
{
    using NmeaSentences::sentence;
    const bool fix = epochsSinceStart > epochsToFix;
    const QByteArray time = QTime(12, 0).addSecs(epochCount).toString("hhmmss.00").toLatin1();
    const QByteArray place = fix ? "4807.03812,N,01131.00056,E" : ",,,";
    QByteArray text;
    text += sentence("GNRMC," + time + (fix ? ",A," : ",V,") + place +
                     (fix ? ",0.020,84.40,050321,,,A" : ",,,050321,,,N"));
    text += sentence("GNGGA," + time + ',' + place +
                     (fix ? ",1,05,0.90,545.4,M,46.9,M,," : ",0,00,99.99,,,,,,"));
    text += sentence(fix ? "GPGSA,A,3,01,02,03,04,05,,,,,,,,1.50,0.90,1.20"
                         : "GPGSA,A,1,,,,,,,,,,,,,99.99,99.99,99.99");
    text += NmeaSentences::gsvSet(
        "GP",
        {{1, 10, 5, 30}, {2, 20, 45, 32}, {3, 30, 85, 34}, {4, 40, 125, 36}, {5, 50, 165, 38}});
    text += sentence("GNGLL," + place + ',' + time + (fix ? ",A,A" : ",V,N"));
    return text;
}
