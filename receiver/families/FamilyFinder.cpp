// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/families/FamilyFinder.h"

#include "base/NmeaFraming.h"

#include <cmath>

namespace {

using ReceiverFamily::Family;
using ReceiverFamily::UnicoreKind;
using Maker = tBinaryFrame::Maker;

constexpr unsigned char kMon = 0x0a; // class and number of the version message, both makers
constexpr unsigned char kVer = 0x04;

// Proprietary addresses and whose they are. A sentence of the receiver with one of them settles the
// family where `certain`: modules with Airoha's chip also send some of Quectel's own.
struct tAddress
{
    const char *start;
    Family family;
    bool certain;
};

constexpr tAddress kAddresses[] = {
    {"PMTK", Family::Pmtk, true}, {"PAIR", Family::Pair, true},  {"PQTM", Family::Pqtm, false},
    {"PUBX", Family::Ubx, true},  {"PCAS", Family::Casic, true}, {"PSRF", Family::Sirf, true},
};

// Texts of the banner that receivers send as TXT sentences when they start, or as an answer.
struct tBanner
{
    const char *text;
    Family family;
};

constexpr tBanner kBanners[] = {
    {"u-blox", Family::Ubx},     {"UBX-", Family::Ubx},     {"PROTVER", Family::Ubx},
    {"MA=CASIC", Family::Casic}, {"IC=AT6", Family::Casic}, {"SW=URANUS", Family::Casic},
    {"HW=ATGM", Family::Casic},
};

// Quectel modules with Airoha's chip: they answer to PQTMVERNO but are steered by PAIR.
constexpr const char *kAirohaModules[] = {"LC29H", "LC76G", "LC86G", "LC79H", "LC26G"};

struct tQuery
{
    Family family;
    const char *text; // a sentence without its checksum
};

// Version questions, from pynmeagps (PMTK605, PAIR021, PQTMVERNO), the CASIC manual (PCAS06) and
// the SiRF NMEA manual (PSRF125).
constexpr tQuery kSentenceQueries[] = {
    {Family::Pmtk, "PMTK605"},   {Family::Pair, "PAIR021"},   {Family::Pqtm, "PQTMVERNO"},
    {Family::Casic, "PCAS06,0"}, {Family::Casic, "PCAS06,1"}, {Family::Sirf, "PSRF125"},
};
// Unicore's, UFirebird and UM98x, are lines without a checksum.
constexpr const char *kUnicoreQueries[] = {"$PDTINFO", "VERSION"};

struct tGnssName
{
    const char *name;
    unsigned bit;
};

constexpr tGnssName kGnssNames[] = {
    {"GPS", ConstellationMask::kGps},     {"GLO", ConstellationMask::kGlonass},
    {"GAL", ConstellationMask::kGalileo}, {"BDS", ConstellationMask::kBeiDou},
    {"SBAS", ConstellationMask::kSbas},   {"QZSS", ConstellationMask::kQzss},
};

QByteArray versionPoll(Maker maker)
{
    return binaryFrameBytes({maker, kMon, kVer, {}});
}

// Some adapters send back what they are sent; a question tells nothing of the receiver.
bool isOwnQuery(const QByteArray &text)
{
    static const QList<QByteArray> known = [] {
        QList<QByteArray> all;
        const QVector<QByteArray> queries = FamilyFinder::queries();
        for (const QByteArray &query : queries)
            all.append(query.trimmed());
        return all;
    }();
    return known.contains(text);
}

// A UM98x repeats each command in a sentence whose checksum counts the $ as well.
bool isUnicoreAnswer(const QByteArray &text)
{
    const int star = text.lastIndexOf('*');
    const QByteArray digits = text.mid(star + 1);
    return text.startsWith("$command,") && star >= 0 && digits.size() == 2 &&
           NmeaFraming::isHex(digits) &&
           digits.toUInt(nullptr, 16) == NmeaFraming::checksumOf(text.left(star));
}

// `#VERSION,...;UM980,...`, in the long form `#VERSIONA,...;"UM980",...`, which receivers of other
// makers send as well.
bool isUnicoreVersion(const QByteArray &line)
{
    if (!line.startsWith("#VERSION,") && !line.startsWith("#VERSIONA,"))
        return false;
    const int product = line.indexOf(';') + 1;
    const QByteArray name = line.mid(line.mid(product, 1) == "\"" ? product + 1 : product, 2);
    return product > 0 && (name == "UM" || name == "UB");
}

} // namespace

QVector<QByteArray> FamilyFinder::queries(std::optional<Family> only)
{
    QVector<QByteArray> all;
    const auto wants = [&only](Family of) {
        return !only || *only == of;
    };
    for (const tQuery &query : kSentenceQueries) {
        if (!only)
            all.append(NmeaFraming::sentence(query.text));
    }
    if (wants(Family::Ubx))
        all.append(versionPoll(Maker::Ublox));
    if (!only)
        all.append(versionPoll(Maker::Allystar));
    if (wants(Family::Unicore)) {
        for (const char *query : kUnicoreQueries)
            all.append(QByteArray(query) + "\r\n");
    }
    return all;
}

// Byte by byte, so that what comes first decides, however the bytes were cut.
void FamilyFinder::feed(const QByteArray &bytes)
{
    for (const char byte : bytes) {
        const QVector<tBinaryFrame> binary = frames.feed(QByteArray(1, byte));
        for (const tBinaryFrame &frame : binary)
            take(frame);
        const QVector<tCutSentence> cuts = sentences.feed(&byte, 1);
        for (const tCutSentence &cut : cuts)
            take(cut);
        takeVersionLine(byte);
    }
}

std::optional<FamilyFinder::Family> FamilyFinder::found() const
{
    return family;
}

void FamilyFinder::note(Family noted, Strength strength, const QByteArray &evidence)
{
    if (certain || (family && strength == Strength::Hint))
        return;
    family = noted;
    certain = strength == Strength::Certain;
    constexpr int kMostEvidence = 80;
    told = QString::fromLatin1(evidence.left(kMostEvidence));
}

void FamilyFinder::take(const tCutSentence &cut)
{
    if (!cut.terminated || isOwnQuery(cut.text))
        return;
    if (isUnicoreAnswer(cut.text)) {
        known.unicore = UnicoreKind::HighPrecision;
        note(Family::Unicore, Strength::Certain, cut.text);
    }
    const std::optional<tNmeaSentence> sentence = Nmea::parse(cut.text, Nmea::LineEnd::Seen);
    if (!sentence)
        return;
    const QByteArray address = sentence->field(0);
    for (const tAddress &entry : kAddresses) {
        if (address.startsWith(entry.start))
            note(entry.family, entry.certain ? Strength::Certain : Strength::Hint, cut.text);
    }
    if (sentence->type == "TXT")
        takeText(cut.text);
    takeProduct(*sentence);
}

// Numbered fields of TXT: the text is the fourth, and may have commas itself.
void FamilyFinder::takeText(const QByteArray &text)
{
    for (const tBanner &banner : kBanners) {
        if (text.contains(banner.text))
            note(banner.family, Strength::Certain, text);
    }
    const int protocol = text.indexOf("PROTVER");
    if (protocol >= 0)
        takeUbxExtension(text.mid(protocol, text.indexOf('*') - protocol));
}

void FamilyFinder::takeProduct(const tNmeaSentence &sentence)
{
    const QByteArray address = sentence.field(0);
    if (address == "PQTMVERNO" && !sentence.field(1).isEmpty()) {
        bool airoha = false;
        for (const char *module : kAirohaModules)
            airoha = airoha || sentence.field(1).startsWith(module);
        note(airoha ? Family::Pair : Family::Pqtm, Strength::Certain, sentence.field(1));
    } else if (address == "PDTINFO" && !sentence.field(1).isEmpty()) {
        known.unicore = UnicoreKind::Firebird;
        note(Family::Unicore, Strength::Certain, sentence.field(1));
    }
}

void FamilyFinder::take(const tBinaryFrame &frame)
{
    const bool isVersion = frame.messageClass == kMon && frame.messageId == kVer;
    // Without payload it is the question, sent back.
    if (isVersion && frame.payload.isEmpty())
        return;
    if (frame.maker == Maker::Allystar) {
        note(Family::Allystar, Strength::Certain, "binary frame");
        return;
    }
    note(Family::Ubx, Strength::Certain, "binary frame");
    if (isVersion)
        takeUbxVersion(frame.payload);
}

// Software (30 characters), hardware (10), then any number of extensions of 30.
void FamilyFinder::takeUbxVersion(const QByteArray &payload)
{
    constexpr int kFixed = 40;
    constexpr int kExtension = 30;
    const auto text = [](const QByteArray &field) {
        const int end = field.indexOf('\0');
        return end < 0 ? field : field.left(end);
    };
    unsigned before = 0;
    std::swap(before, known.constellations);
    for (int at = kFixed; at + kExtension <= payload.size(); at += kExtension)
        takeUbxExtension(text(payload.mid(at, kExtension)));
    if (known.constellations == 0)
        known.constellations = before;
}

// "PROTVER=18.00", with a space before protocol 18, and the systems as "GPS;GLO;GAL;BDS".
void FamilyFinder::takeUbxExtension(const QByteArray &text)
{
    constexpr int kNumber = 8; // behind "PROTVER="
    constexpr double kMostVersion = 99.0;
    if (text.startsWith("PROTVER")) {
        const std::optional<double> version = Nmea::number(text.mid(kNumber).trimmed());
        if (version && *version > 0.0 && *version <= kMostVersion)
            known.ubxProtocol = static_cast<int>(std::lround(*version * 100.0));
        return;
    }
    const QList<QByteArray> names = text.split(';');
    for (const QByteArray &name : names) {
        for (const tGnssName &gnss : kGnssNames)
            known.constellations |= name == gnss.name ? gnss.bit : 0;
    }
}

void FamilyFinder::takeVersionLine(char byte)
{
    constexpr int kLongest = 256;
    if (byte == '#') {
        versionLine = "#";
        return;
    }
    if (versionLine.isEmpty())
        return;
    if (byte != '\r' && byte != '\n' && versionLine.size() < kLongest) {
        versionLine += byte;
        return;
    }
    if (isUnicoreVersion(versionLine)) {
        known.unicore = UnicoreKind::HighPrecision;
        note(Family::Unicore, Strength::Certain, versionLine);
    }
    versionLine.clear();
}
