// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/families/ReceiverFamily.h"

#include "base/NmeaFraming.h"
#include "receiver/nmea/BinaryFrame.h"

#include <QStringList>

#include <algorithm>

namespace ReceiverFamily {
namespace {

using Kind = tReceiverCommand::Kind;
using Maker = tBinaryFrame::Maker;

struct tName
{
    Family family;
    const char *name;
};

constexpr tName kNames[] = {
    {Family::Pmtk, "pmtk"},       {Family::Pair, "pair"},   {Family::Pqtm, "pqtm"},
    {Family::Ubx, "ubx"},         {Family::Casic, "casic"}, {Family::Allystar, "allystar"},
    {Family::Unicore, "unicore"}, {Family::Sirf, "sirf"},   {Family::None, "none"},
};

// What a sentence may bring about besides obedience.
enum class Effect { None, ChangesBaud };

// How the text of a table becomes bytes.
enum class Form {
    Sentence, // with `$` and checksum
    Line,     // as it stands, with CR LF
};

// One text of a command; a command of several has several rows, sent in their order.
struct tRow
{
    Kind kind;
    const char *text;
    int pauseMs = 0;
    Effect effect = Effect::None;
};

constexpr int kSettleMs = 500; // between two texts of one command

// Sources of the texts: u-blox UBX-13003181 and the GlobalTop and Quectel manuals for PMTK, the
// Quectel LC29H and LG290P protocol manuals for PAIR and PQTM, the CASIC protocol manual (AT6558)
// for PCAS, the Linx R4 guide for PSRF101, the Unicore reference manuals as quoted by open drivers.
// PMTK104 also clears the configuration and with it the baud rate. In standby any byte wakes a
// MediaTek receiver; a line end alone is no command to one that is awake.
constexpr tRow kPmtk[] = {
    {Kind::HotStart, "PMTK101"},  {Kind::WarmStart, "PMTK102"},
    {Kind::ColdStart, "PMTK103"}, {Kind::FactoryStart, "PMTK104", 0, Effect::ChangesBaud},
    {Kind::Stop, "PMTK161,0"},
};
constexpr tRow kPmtkLines[] = {{Kind::Start, ""}};

// PAIR003 is a cold start in one list only; three others, and the maker's, have it as power off.
constexpr tRow kPair[] = {
    {Kind::HotStart, "PAIR004"},  {Kind::WarmStart, "PAIR005"},
    {Kind::ColdStart, "PAIR006"}, {Kind::FactoryStart, "PAIR007", 0, Effect::ChangesBaud},
    {Kind::Start, "PAIR002"},     {Kind::Stop, "PAIR003"},
    {Kind::StoreNvm, "PAIR513"},
};

constexpr tRow kPqtm[] = {
    {Kind::HotStart, "PQTMHOT"},
    {Kind::WarmStart, "PQTMWARM"},
    {Kind::ColdStart, "PQTMCOLD"},
    {Kind::FactoryStart, "PQTMRESTOREPAR", kSettleMs},
    {Kind::FactoryStart, "PQTMSRR", 0, Effect::ChangesBaud},
    {Kind::Start, "PQTMGNSSSTART"},
    {Kind::Stop, "PQTMGNSSSTOP"},
    {Kind::StoreNvm, "PQTMSAVEPAR"},
};

// PCAS12 puts the receiver to sleep for a number of seconds and nothing is known to wake it
// earlier, so there is no stop.
constexpr tRow kCasic[] = {
    {Kind::HotStart, "PCAS10,0"},  {Kind::WarmStart, "PCAS10,1"},
    {Kind::ColdStart, "PCAS10,2"}, {Kind::FactoryStart, "PCAS10,3", 0, Effect::ChangesBaud},
    {Kind::StoreNvm, "PCAS00"},
};

constexpr tRow kSirf[] = {
    {Kind::HotStart, "PSRF101,0,0,0,0,0,0,12,1"},
    {Kind::WarmStart, "PSRF101,0,0,0,0,0,0,12,2"},
    {Kind::ColdStart, "PSRF101,0,0,0,0,0,0,12,4"},
    {Kind::FactoryStart, "PSRF101,0,0,0,0,0,0,12,8", 0, Effect::ChangesBaud},
};

// What a bare RESET forgets is told differently: a restart that keeps everything in one source, a
// cold start in another. It is sent as the hot start, with a word of warning, and never as the
// cold one, which would not be one if the first source is right.
constexpr tRow kUnicoreLines[] = {
    {Kind::HotStart, "RESET"},
    {Kind::WarmStart, "RESET EPHEM"},
    {Kind::FactoryStart, "FRESET", 0, Effect::ChangesBaud},
    {Kind::StoreNvm, "SAVECONFIG"},
};
constexpr tRow kFirebirdLines[] = {
    {Kind::HotStart, "$RESET,0,H00"},  {Kind::WarmStart, "$RESET,0,H01"},
    {Kind::ColdStart, "$RESET,0,H85"}, {Kind::Start, "$RESET,0,H00"},
    {Kind::Stop, "$RESET,3,H00"},      {Kind::StoreNvm, "$CFGSAVE"},
};

QString kindName(Kind kind)
{
    switch (kind) {
    case Kind::Start:
        return QStringLiteral("start");
    case Kind::Stop:
        return QStringLiteral("stop");
    case Kind::HotStart:
        return QStringLiteral("hot start");
    case Kind::WarmStart:
        return QStringLiteral("warm start");
    case Kind::ColdStart:
        return QStringLiteral("cold start");
    case Kind::FactoryStart:
        return QStringLiteral("factory start");
    case Kind::SelectConstellations:
        return QStringLiteral("choice of constellations");
    case Kind::StoreNvm:
        return QStringLiteral("store of the memory");
    }
    return {};
}

tFamilyCommand notSupported(Family family, const QString &what)
{
    tFamilyCommand result;
    result.text = name(family) + QStringLiteral(": ") + what;
    return result;
}

tFamilyCommand notSupported(Family family, Kind kind)
{
    return notSupported(family, kindName(kind) + QStringLiteral(" is not supported"));
}

void append(tFamilyCommand &command, const QByteArray &bytes, int pauseMs = 0,
            Effect effect = Effect::None)
{
    command.supported = true;
    command.frames.append({bytes, pauseMs});
    command.mayChangeBaud = command.mayChangeBaud || effect == Effect::ChangesBaud;
}

QByteArray line(const QByteArray &text)
{
    return text + "\r\n";
}

template<std::size_t count>
void appendRows(tFamilyCommand &command, const tRow (&rows)[count], Form form, Kind kind)
{
    for (const tRow &row : rows) {
        if (row.kind == kind)
            append(command,
                   form == Form::Sentence ? NmeaFraming::sentence(row.text) : line(row.text),
                   row.pauseMs, row.effect);
    }
}

// A choice of constellations as far as the family can make it.
struct tChoice
{
    unsigned mask = 0; // what is chosen
    QString left;      // what is not, ready for the report; empty when all is
};

tChoice choiceOf(unsigned wanted, unsigned able)
{
    tChoice choice{wanted & able, {}};
    const QStringList names = constellationNames(wanted & ~able);
    if (!names.isEmpty())
        choice.left = names.size() == 1
                          ? QStringLiteral("constellation %1 is not supported").arg(names.first())
                          : QStringLiteral("constellations %1 are not supported")
                                .arg(names.join(QStringLiteral(", ")));
    return choice;
}

// The digit of a constellation in sentences with one field for each.
QByteArray digit(unsigned mask, unsigned bit)
{
    return (mask & bit) != 0 ? QByteArrayLiteral("1") : QByteArrayLiteral("0");
}

QByteArray digits(unsigned mask, std::initializer_list<unsigned> bits)
{
    QByteArray text;
    for (const unsigned bit : bits)
        text += ',' + digit(mask, bit);
    return text;
}

QByteArray u2(unsigned value)
{
    return QByteArray(1, static_cast<char>(value & 0xff)) + static_cast<char>((value >> 8) & 0xff);
}

QByteArray u4(unsigned value)
{
    return u2(value & 0xffff) + u2(value >> 16);
}

QByteArray ubx(int messageId, const QByteArray &payload)
{
    constexpr unsigned char kCfg = 0x06;
    return binaryFrameBytes({Maker::Ublox, kCfg, static_cast<unsigned char>(messageId), payload});
}

QByteArray allystar(int messageId, const QByteArray &payload)
{
    constexpr unsigned char kCfg = 0x06;
    return binaryFrameBytes(
        {Maker::Allystar, kCfg, static_cast<unsigned char>(messageId), payload});
}

// UBX-CFG-RST. A reset of the navigation only: one of the hardware would make USB vanish.
QByteArray ubxReset(unsigned clearedSections, int mode)
{
    return ubx(0x04, u2(clearedSections) + static_cast<char>(mode) + '\0');
}

// UBX-CFG-CFG: sections to clear, to save and to load, and the memories. The generations that
// keep their configuration in keys still take it; any bit stands for everything there.
QByteArray ubxConfiguration(unsigned clear, unsigned save, unsigned load, int devices)
{
    return ubx(0x09, u4(clear) + u4(save) + u4(load) + static_cast<char>(devices));
}

tFamilyCommand encodeUbxCommand(Kind kind)
{
    constexpr int kNavigationOnly = 2;
    constexpr int kStop = 8;
    constexpr int kStart = 9;
    constexpr unsigned kWarm = 0x0001;
    constexpr unsigned kCold = 0xffff;
    constexpr unsigned kAllSections = 0x1f1f;
    constexpr int kBatteryFlashEeprom = 0x07;
    tFamilyCommand command;
    switch (kind) {
    case Kind::HotStart:
        append(command, ubxReset(0, kNavigationOnly));
        break;
    case Kind::WarmStart:
        append(command, ubxReset(kWarm, kNavigationOnly));
        break;
    case Kind::ColdStart:
        append(command, ubxReset(kCold, kNavigationOnly));
        break;
    case Kind::FactoryStart:
        // Without a pause: the first may set the baud rate back, and the second would be lost.
        append(command, ubxConfiguration(kAllSections, 0, kAllSections, kBatteryFlashEeprom), 0,
               Effect::ChangesBaud);
        append(command, ubxReset(kCold, kNavigationOnly));
        break;
    case Kind::Start:
        append(command, ubxReset(0, kStart));
        break;
    case Kind::Stop:
        append(command, ubxReset(0, kStop));
        break;
    case Kind::StoreNvm:
        append(command, ubxConfiguration(0, kAllSections, 0, kBatteryFlashEeprom));
        break;
    case Kind::SelectConstellations:
        break;
    }
    return command;
}

// One constellation as UBX-CFG-GNSS wants it (u-blox 8): identifier, fewest and most channels. The
// channels are those of RTKLIB's start-up commands for the M8T.
struct tGnssBlock
{
    unsigned bit;
    int id;
    int reserved;
    int most;
};

constexpr tGnssBlock kGnssBlocks[] = {
    {ConstellationMask::kGps, 0, 8, 16},    {ConstellationMask::kSbas, 1, 1, 3},
    {ConstellationMask::kGalileo, 2, 4, 8}, {ConstellationMask::kBeiDou, 3, 8, 16},
    {ConstellationMask::kQzss, 5, 0, 3},    {ConstellationMask::kGlonass, 6, 8, 14},
};

QByteArray ubxGnss(unsigned mask, unsigned present)
{
    constexpr unsigned kFirstSignal = 0x00010000;
    constexpr char kAllChannels = '\xff';
    QByteArray blocks;
    int count = 0;
    for (const tGnssBlock &block : kGnssBlocks) {
        if ((present & block.bit) == 0)
            continue;
        blocks += QByteArray(1, static_cast<char>(block.id)) + static_cast<char>(block.reserved) +
                  static_cast<char>(block.most) + '\0' +
                  u4(kFirstSignal | ((mask & block.bit) != 0 ? 1U : 0U));
        ++count;
    }
    // Version, channels of the hardware (read only), channels to use, number of blocks.
    return ubx(0x3e, QByteArray(2, '\0') + kAllChannels + static_cast<char>(count) + blocks);
}

// Keys of UBX-CFG-VALSET that switch a whole constellation, as listed for ublox_msgs/CfgVALSET.
struct tSignalKey
{
    unsigned bit;
    unsigned key;
};

constexpr tSignalKey kSignalKeys[] = {
    {ConstellationMask::kGps, 0x1031001f},     {ConstellationMask::kSbas, 0x10310020},
    {ConstellationMask::kGalileo, 0x10310021}, {ConstellationMask::kBeiDou, 0x10310022},
    {ConstellationMask::kQzss, 0x10310024},    {ConstellationMask::kGlonass, 0x10310025},
};

// All keys in one message: the receiver takes it as a whole or not at all, and a key that it does
// not have spoils the rest.
QByteArray ubxSignals(unsigned mask, unsigned present)
{
    constexpr char kRamAndBattery = 3;
    QByteArray payload = QByteArray(1, '\0') + kRamAndBattery + QByteArray(2, '\0');
    for (const tSignalKey &key : kSignalKeys) {
        if ((present & key.bit) != 0)
            payload += u4(key.key) + static_cast<char>((mask & key.bit) != 0 ? 1 : 0);
    }
    return ubx(0x8a, payload);
}

// A u-blox 8 receives two of three bands: that of GPS and Galileo, GLONASS, BeiDou.
bool fitsUblox8(unsigned mask)
{
    const bool upper = (mask & (ConstellationMask::kGps | ConstellationMask::kGalileo)) != 0;
    const bool glonass = (mask & ConstellationMask::kGlonass) != 0;
    const bool beiDou = (mask & ConstellationMask::kBeiDou) != 0;
    return !(upper && glonass && beiDou);
}

tFamilyCommand encodeUbxConstellations(unsigned mask, const tDetails &details)
{
    constexpr int kFirstGnss = 1500; // protocol versions of the two ways
    constexpr int kLastGnss = 2399;
    constexpr int kFirstValset = 2700;
    constexpr int kRestartMs = 500; // the receiver is deaf for that long after a change
    const unsigned present =
        details.constellations != 0 ? details.constellations : unsigned(ConstellationMask::kAll);
    tFamilyCommand command;
    if (details.ubxProtocol >= kFirstValset) {
        append(command, ubxSignals(mask, present), kRestartMs);
    } else if (details.ubxProtocol >= kFirstGnss && details.ubxProtocol <= kLastGnss) {
        if (!fitsUblox8(mask))
            return notSupported(Family::Ubx, QStringLiteral("GLONASS and BeiDou together with GPS "
                                                            "or Galileo are not supported by this "
                                                            "u-blox 8"));
        append(command, ubxGnss(mask, present), kRestartMs);
    } else {
        return notSupported(
            Family::Ubx,
            details.ubxProtocol == 0
                ? QStringLiteral("choice of constellations is not supported while the receiver "
                                 "has not told its protocol version")
                : QStringLiteral("choice of constellations is not supported with protocol "
                                 "version %1")
                      .arg(details.ubxProtocol / 100.0, 0, 'f', 2));
    }
    return command;
}

QByteArray allystarReset(int mode)
{
    return allystar(0x40, QByteArray(1, static_cast<char>(mode)));
}

QByteArray allystarConfiguration(unsigned action, unsigned mask)
{
    return allystar(0x09, u4(action) + u4(mask));
}

tFamilyCommand encodeAllystarCommand(Kind kind)
{
    constexpr unsigned kSave = 0;
    constexpr unsigned kClear = 2;
    constexpr unsigned kEverything = 0xffffffff;
    constexpr unsigned kBaudMessagesNavigation = 7;
    tFamilyCommand command;
    switch (kind) {
    case Kind::HotStart:
        append(command, allystarReset(3));
        break;
    case Kind::WarmStart:
        append(command, allystarReset(2));
        break;
    case Kind::ColdStart:
        append(command, allystarReset(1));
        break;
    case Kind::FactoryStart:
        append(command, allystarConfiguration(kClear, kEverything), kSettleMs);
        append(command, allystarReset(0), 0, Effect::ChangesBaud);
        break;
    case Kind::Start:
        append(command, allystarReset(0x11));
        break;
    case Kind::Stop:
        append(command, allystarReset(0x10));
        break;
    case Kind::StoreNvm:
        append(command, allystarConfiguration(kSave, kBaudMessagesNavigation));
        break;
    case Kind::SelectConstellations:
        break;
    }
    return command;
}

// Bits of Allystar's CFG-NAVSAT, all signals of a constellation: the receiver takes any mask and
// receives what of it it can.
constexpr tSignalKey kAllystarSignals[] = {
    {ConstellationMask::kGps, 0x00000701},    {ConstellationMask::kGlonass, 0x00002002},
    {ConstellationMask::kBeiDou, 0x0007c004}, {ConstellationMask::kGalileo, 0x00700010},
    {ConstellationMask::kQzss, 0x0f000020},   {ConstellationMask::kSbas, 0x00000040},
};

QByteArray allystarConstellations(unsigned mask)
{
    unsigned enabled = 0;
    for (const tSignalKey &signal : kAllystarSignals)
        enabled |= (mask & signal.bit) != 0 ? signal.key : 0;
    return allystar(0x0c, u4(enabled));
}

// Bits of UFirebird's CFGSYS that the sources agree on, the first frequency of each constellation.
// Those of QZSS and SBAS are told in two ways.
constexpr tSignalKey kFirebirdSignals[] = {
    {ConstellationMask::kGps, 0x0001},
    {ConstellationMask::kBeiDou, 0x0010},
    {ConstellationMask::kGlonass, 0x0100},
    {ConstellationMask::kGalileo, 0x1000},
};

QByteArray firebirdConstellations(unsigned mask)
{
    unsigned enabled = 0;
    for (const tSignalKey &signal : kFirebirdSignals)
        enabled |= (mask & signal.bit) != 0 ? signal.key : 0;
    return line("$CFGSYS,h" + QByteArray::number(enabled, 16).rightJustified(2, '0'));
}

struct tUnicoreName
{
    unsigned bit;
    const char *name;
};

constexpr tUnicoreName kUnicoreNames[] = {
    {ConstellationMask::kGps, "GPS"},     {ConstellationMask::kGlonass, "GLO"},
    {ConstellationMask::kGalileo, "GAL"}, {ConstellationMask::kBeiDou, "BDS"},
    {ConstellationMask::kQzss, "QZSS"},
};

// What is wanted first, so that the receiver is never without any.
void appendUnicoreMasks(tFamilyCommand &command, unsigned mask)
{
    constexpr int kBetweenMs = 100;
    for (const bool wanted : {true, false}) {
        for (const tUnicoreName &constellation : kUnicoreNames) {
            if (((mask & constellation.bit) != 0) == wanted)
                append(command,
                       line((wanted ? "UNMASK " : "MASK ") + QByteArray(constellation.name)),
                       kBetweenMs);
        }
    }
}

unsigned ableConstellations(Family family, const tDetails &details)
{
    using namespace ConstellationMask;
    switch (family) {
    case Family::Pmtk:
        return kCore;
    case Family::Pair:
    case Family::Pqtm:
        return kCore | kQzss;
    case Family::Casic:
        return kGps | kGlonass | kBeiDou;
    case Family::Ubx:
        return details.constellations != 0 ? details.constellations : unsigned(kAll);
    case Family::Allystar:
        return kAll;
    case Family::Unicore:
        return details.unicore == UnicoreKind::Firebird ? kCore : kCore | kQzss;
    case Family::Sirf:
    case Family::None:
        break;
    }
    return 0;
}

tFamilyCommand constellationFrames(Family family, unsigned mask, const tDetails &details)
{
    using namespace ConstellationMask;
    const QByteArray withoutSbas = digits(mask, {kGps, kGlonass, kGalileo, kBeiDou, kQzss}) + ",0";
    tFamilyCommand command;
    switch (family) {
    case Family::Pmtk: // the fourth field is "Galileo full", which no receiver has
        append(command, NmeaFraming::sentence("PMTK353" + digits(mask, {kGps, kGlonass, kGalileo}) +
                                              ",0" + digits(mask, {kBeiDou})));
        break;
    case Family::Pair:
        append(command, NmeaFraming::sentence("PAIR066" + withoutSbas));
        break;
    case Family::Pqtm: // takes effect with the start that follows, when it has been saved
        append(command, NmeaFraming::sentence("PQTMCFGCNST,W" + withoutSbas), kSettleMs);
        appendRows(command, kPqtm, Form::Sentence, Kind::StoreNvm);
        command.frames.last().pauseMs = kSettleMs;
        appendRows(command, kPqtm, Form::Sentence, Kind::HotStart);
        break;
    case Family::Casic:
        append(command, NmeaFraming::sentence(
                            "PCAS04," + QByteArray::number(((mask & kGps) != 0 ? 1 : 0) |
                                                           ((mask & kBeiDou) != 0 ? 2 : 0) |
                                                           ((mask & kGlonass) != 0 ? 4 : 0))));
        break;
    case Family::Ubx:
        return encodeUbxConstellations(mask, details);
    case Family::Allystar:
        append(command, allystarConstellations(mask));
        break;
    case Family::Unicore:
        if (details.unicore == UnicoreKind::Firebird)
            append(command, firebirdConstellations(mask), kSettleMs);
        else
            appendUnicoreMasks(command, mask);
        break;
    case Family::Sirf:
    case Family::None:
        break;
    }
    return command;
}

tFamilyCommand encodeConstellations(Family family, unsigned mask, const tDetails &details)
{
    const unsigned able = ableConstellations(family, details);
    if (able == 0)
        return notSupported(family, Kind::SelectConstellations);
    const tChoice choice = choiceOf(mask, able);
    if ((choice.mask & ConstellationMask::kCore) == 0)
        return notSupported(family, choice.left.isEmpty()
                                        ? QStringLiteral("a choice without GPS, GLONASS, Galileo "
                                                         "and BeiDou is not supported")
                                        : choice.left);
    tFamilyCommand command = constellationFrames(family, choice.mask, details);
    if (command.supported && !choice.left.isEmpty())
        command.text = name(family) + QStringLiteral(": ") + choice.left;
    return command;
}

tFamilyCommand encodeOther(Family family, Kind kind, const tDetails &details)
{
    tFamilyCommand command;
    switch (family) {
    case Family::Pmtk:
        appendRows(command, kPmtk, Form::Sentence, kind);
        appendRows(command, kPmtkLines, Form::Line, kind);
        break;
    case Family::Pair:
        appendRows(command, kPair, Form::Sentence, kind);
        break;
    case Family::Pqtm:
        appendRows(command, kPqtm, Form::Sentence, kind);
        break;
    case Family::Ubx:
        command = encodeUbxCommand(kind);
        break;
    case Family::Casic:
        appendRows(command, kCasic, Form::Sentence, kind);
        break;
    case Family::Allystar:
        command = encodeAllystarCommand(kind);
        break;
    case Family::Unicore:
        if (details.unicore == UnicoreKind::Firebird)
            appendRows(command, kFirebirdLines, Form::Line, kind);
        else
            appendRows(command, kUnicoreLines, Form::Line, kind);
        break;
    case Family::Sirf:
        appendRows(command, kSirf, Form::Sentence, kind);
        break;
    case Family::None:
        break;
    }
    return command;
}

// Why a family lacks a command, where more can be said than that it does.
QString reason(Family family, Kind kind, const tDetails &details)
{
    if (family == Family::Casic && kind == Kind::Stop)
        return QStringLiteral("its standby cannot be ended");
    if (family == Family::Pmtk && kind == Kind::StoreNvm)
        return QStringLiteral("its memory lives on the backup battery");
    if (family == Family::Unicore && kind == Kind::ColdStart &&
        details.unicore == UnicoreKind::HighPrecision)
        return QStringLiteral("what RESET forgets is told in two ways");
    return {};
}

QString sentText(const tFamilyCommand &command)
{
    QStringList parts;
    for (const tFrame &frame : command.frames)
        parts << readable(frame.bytes);
    return parts.join(QStringLiteral(", "));
}

} // namespace

QVector<Family> all()
{
    QVector<Family> families;
    for (const tName &entry : kNames)
        families.append(entry.family);
    return families;
}

QString name(Family family)
{
    for (const tName &entry : kNames) {
        if (entry.family == family)
            return QString::fromLatin1(entry.name);
    }
    return {};
}

std::optional<Family> parse(const QString &text)
{
    for (const tName &entry : kNames) {
        if (text == QLatin1String(entry.name))
            return entry.family;
    }
    return std::nullopt;
}

QString readable(const QByteArray &bytes)
{
    const QByteArray text = bytes.trimmed();
    const bool printable = std::all_of(text.cbegin(), text.cend(),
                                       [](char byte) { return byte >= 0x20 && byte < 0x7f; });
    return QString::fromLatin1(printable && !text.isEmpty() ? text : bytes.toHex(' '));
}

tFamilyCommand encode(Family family, const tReceiverCommand &command, const tDetails &details)
{
    if (family == Family::None)
        return notSupported(family, QStringLiteral("the receiver's family is not known"));
    if (family == Family::Unicore && details.unicore == UnicoreKind::Unknown)
        return notSupported(family, QStringLiteral("%1 is not supported while the receiver has not "
                                                   "told whether it is a UM98x or a UFirebird")
                                        .arg(kindName(command.kind)));
    tFamilyCommand result = command.kind == Kind::SelectConstellations
                                ? encodeConstellations(family, command.mask, details)
                                : encodeOther(family, command.kind, details);
    if (!result.supported) {
        if (result.text.isEmpty())
            result = notSupported(family, command.kind);
        const QString why = reason(family, command.kind, details);
        if (!why.isEmpty())
            result.text += QStringLiteral(": ") + why;
        return result;
    }
    const QString sent = QStringLiteral("sent ") + sentText(result);
    result.text = result.text.isEmpty() ? sent : result.text + QStringLiteral("; ") + sent;
    if (family == Family::Unicore && command.kind == Kind::HotStart &&
        details.unicore == UnicoreKind::HighPrecision)
        result.text += QStringLiteral(" (sources differ on what it forgets)");
    return result;
}

} // namespace ReceiverFamily
