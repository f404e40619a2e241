// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "gnss/NmeaReader.h"

#include "base/SystemError.h"
#include "base/SystemHooks.h"
#include "config/DebugOutput.h"
#include "gnss/NmeaFields.h"

#include <QStringBuilder>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <numeric>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::size_t kBufferSize = 102400;
constexpr std::size_t kMaxTail = 1024;
constexpr int kIdleSleepMs = 500;
constexpr int kMaxAnnounced = 999;
constexpr int kMaxTotalAnnounced = 1000000; // far beyond what five constellations can announce
constexpr ushort kMinusSign = 0x2212;
constexpr char kByteOrderMarkFront = '\xef';

namespace Gga {
enum Field { kTime = 1, kLatitude = 2, kLongitude = 4, kQuality = 6, kAltitude = 9 };
}
namespace Gsa {
enum Field { kFirstSatellite = 3, kLastSatellite = 14, kPdop = 15, kHdop = 16, kVdop = 17 };
}
namespace Gsv {
enum Field { kMessages = 1, kMessage = 2, kInView = 3, kFirstGroup = 4 };
constexpr int kGroupSize = 4;
constexpr std::size_t kLastSnrLength = 2; // what is left of it without the checksum
} // namespace Gsv
namespace Rmc {
enum Field { kTime = 1, kStatus = 2, kDate = 9 };
}

QString readerTag()
{
    return QStringLiteral("NmeaReader");
}

QLatin1Char flag(bool on)
{
    return QLatin1Char(on ? '1' : '0');
}

/// The characters of a damaged sentence as Latin-1. Of what that lacks, blanks and the minus sign
/// keep their meaning in a number; anything else turns into a question mark, which makes no number
/// any more than it did before.
QByteArray toSingleBytes(std::string_view sentence)
{
    const QString text = QString::fromLocal8Bit(sentence.data(), static_cast<int>(sentence.size()));
    QByteArray bytes = text.toLatin1();
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c.unicode() > 0xff && c.isSpace())
            bytes[i] = ' ';
        else if (c == QChar(kMinusSign))
            bytes[i] = '-';
    }
    return bytes;
}

/// Bytes at the end of `bytes` that may begin a UTF-8 character whose rest is still to come. Where
/// the local encoding is another, waiting for one more byte does no harm.
int unfinishedCharacter(std::string_view bytes)
{
    for (int taken = 1; taken <= 3 && std::size_t(taken) <= bytes.size(); ++taken) {
        const auto byte = static_cast<unsigned char>(bytes[bytes.size() - std::size_t(taken)]);
        if (byte < 0x80)
            return 0;
        if (byte >= 0xc0) {
            const int length = byte >= 0xf0 ? 4 : byte >= 0xe0 ? 3 : 2;
            return taken < length ? taken : 0;
        }
    }
    return 0;
}

/// Qt drops a byte order mark at the front of what it is given. The front of a read or a field is
/// no front of a text, and the mark must not come and go with the place where the pipe was cut: it
/// always stays.
QString toText(std::string_view bytes)
{
    const auto size = static_cast<int>(bytes.size());
    if (bytes.empty() || bytes.front() != kByteOrderMarkFront)
        return QString::fromLocal8Bit(bytes.data(), size);
    const QByteArray behindLetter = 'x' + QByteArray(bytes.data(), size);
    return QString::fromLocal8Bit(behindLetter.constData(), behindLetter.size()).mid(1);
}

/// With the fields' own text, whatever the decoder needs instead of it.
void traceRmc(std::string_view sentence)
{
    const NmeaFields fields(sentence);
    debugPrint(1, readerTag(),
               QLatin1String("RMC received ") % toText(fields[Rmc::kStatus]) % QLatin1Char(' ') %
                   toText(fields[Rmc::kTime]) % QLatin1Char(' ') % toText(fields[Rmc::kDate]));
}

/// True when `path` names another file than the one behind `descriptor`.
bool namesAnotherFile(const QByteArray &path, int descriptor)
{
    struct stat atPath = {};
    struct stat opened = {};
    return ::stat(path.constData(), &atPath) == 0 && ::fstat(descriptor, &opened) == 0 &&
           (atPath.st_ino != opened.st_ino || atPath.st_dev != opened.st_dev);
}

/// The next '$', nearly always right behind the line end that follows a sentence.
std::size_t findStart(std::string_view data, std::size_t position)
{
    if (data.size() - position > 1 && data[position] == '\n' && data[position + 1] == '$')
        return position + 1;
    return data.find('$', position);
}

/// Negative, and traced, when it fails.
int openForReading(const QByteArray &path)
{
    const int opened = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    const int error = errno;
    if (opened < 0)
        debugMessage(QStringLiteral("open error ") + systemErrorText(error));
    return opened;
}

} // namespace

NmeaReader::NmeaReader(QObject *parent)
    : QObject(parent)
    , gnssInfo(GnssInfo::instance())
    , buffer(kBufferSize)
{
}

NmeaReader::~NmeaReader()
{
    notifier_delete();
}

bool NmeaReader::notifier_start()
{
    debugPrint(1, readerTag(), QStringLiteral("notifier_start"));
    const QByteArray path = SystemHooks::systemPath(SystemHooks::kNmeaPipe);
    const int opened = openForReading(path);
    if (opened < 0)
        return false;
    notifier_delete();
    descriptor = opened;
    return true;
}

void NmeaReader::notifier_delete()
{
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
}

qlonglong NmeaReader::notifier_process(int)
{
    const ssize_t count = ::read(descriptor, buffer.data() + writePosition, freeSpace());
    const int error = errno;
    if (count > 0) {
        process(static_cast<std::size_t>(count));
        return count;
    }

    sleep(kIdleSleepMs);
    // With a silent writer this is the would-block error, twice a second: it shows in the trace
    // that the pipe is alive and nothing comes.
    if (count < 0)
        debugMessage(QStringLiteral("read error ") + systemErrorText(error));
    // Whatever else cannot be read, a directory for one, may have been put right meanwhile.
    if (count == 0 || error != EAGAIN)
        openNewPipeAtPath();
    return count;
}

/// A restarted host daemon may have made a new pipe; the old one would stay silent for ever.
void NmeaReader::openNewPipeAtPath()
{
    const QByteArray path = SystemHooks::systemPath(SystemHooks::kNmeaPipe);
    if (!namesAnotherFile(path, descriptor))
        return;
    const int opened = openForReading(path);
    if (opened < 0)
        return;
    notifier_delete();
    descriptor = opened;
    // The rest of the old pipe's last sentence never comes.
    writePosition = 0;
}

void NmeaReader::feed(std::string_view bytes)
{
    const std::size_t count = std::min(bytes.size(), freeSpace());
    if (count == 0)
        return;
    std::memcpy(buffer.data() + writePosition, bytes.data(), count);
    process(count);
}

std::size_t NmeaReader::freeSpace() const
{
    return buffer.size() - writePosition;
}

/// Takes in `arrived` new bytes that stand at the write position.
void NmeaReader::process(std::size_t arrived)
{
    gnssInfo->setDataStatus(true);
    emit gnssInfo->dataReceived();
    gnssInfo->setNmeaData(textOf({buffer.data() + writePosition, arrived}));
    if (debugStreamEnabled())
        debugMessage(QStringLiteral("read len ") + QString::number(arrived));

    const std::string_view data(buffer.data(), writePosition + arrived);
    std::size_t position = 0;
    for (;;) {
        const std::size_t start = findStart(data, position);
        if (start == std::string_view::npos) {
            writePosition = 0;
            return;
        }
        const std::size_t end = data.find('\r', start + 1);
        if (end == std::string_view::npos) {
            keepTail(start, data.size());
            return;
        }
        decode(data.substr(start, end - start));
        position = end + 1;
    }
}

/// The text of bytes just read. A character that the read ends within waits for the next one: the
/// text must not depend on how the pipe happened to cut it.
QString NmeaReader::textOf(std::string_view arrived)
{
    if (unfinishedText.isEmpty() && unfinishedCharacter(arrived) == 0)
        return toText(arrived);
    unfinishedText.append(arrived.data(), static_cast<int>(arrived.size()));
    const int rest = unfinishedCharacter(
        {unfinishedText.constData(), static_cast<std::size_t>(unfinishedText.size())});
    const int length = unfinishedText.size() - rest;
    QString text = toText({unfinishedText.constData(), static_cast<std::size_t>(length)});
    unfinishedText.remove(0, length);
    return text;
}

/// Keeps the incomplete sentence at [start, end) for the next read, unless it is too long for one.
void NmeaReader::keepTail(std::size_t start, std::size_t end)
{
    const std::size_t length = end - start;
    if (length > kMaxTail) {
        writePosition = 0;
        return;
    }
    if (start > 0)
        std::memmove(buffer.data(), buffer.data() + start, length);
    writePosition = length;
}

void NmeaReader::decode(std::string_view sentence)
{
    if (NmeaText::hasAsciiAddress(sentence)) {
        decodeCharacters(sentence, sentence);
        return;
    }
    const QByteArray characters = toSingleBytes(sentence);
    decodeCharacters({characters.constData(), std::size_t(characters.size())}, sentence);
}

/// Decodes a sentence of which at least the address has one byte a character. The rest is brought
/// into that form when it must be: types and fields are cut by characters. `received` is the
/// sentence as it came.
void NmeaReader::decodeCharacters(std::string_view sentence, std::string_view received)
{
    const SentenceType type = typeOf(NmeaText::sentenceType(sentence));
    if (type == SentenceType::Other)
        return;
    if (type == SentenceType::Gll) {
        decodeGll();
        return;
    }
    const NmeaFields fields(sentence);
    if (sentence.data() != received.data() || fields.isAscii()) {
        decodeFields(type, fields, received);
        return;
    }
    const QByteArray characters = toSingleBytes(sentence);
    decodeFields(type, NmeaFields({characters.constData(), std::size_t(characters.size())}),
                 received);
}

void NmeaReader::decodeFields(SentenceType type, const NmeaFields &fields,
                              std::string_view received)
{
    switch (type) {
    case SentenceType::Gga:
        decodePosition(fields, NmeaText::toInt(fields[Gga::kQuality]) == 0);
        break;
    case SentenceType::Gns:
        decodePosition(fields, fields[Gga::kQuality] == "NNNN");
        break;
    case SentenceType::Gsv:
        decodeGsv(fields);
        break;
    case SentenceType::Gsa:
        decodeGsa(fields);
        break;
    case SentenceType::Rmc:
        decodeRmc(fields, received);
        break;
    case SentenceType::Gll:
    case SentenceType::Other:
        break;
    }
}

NmeaReader::SentenceType NmeaReader::typeOf(std::string_view letters)
{
    // The most frequent first.
    if (letters == "GSV")
        return SentenceType::Gsv;
    if (letters == "GSA")
        return SentenceType::Gsa;
    if (letters == "GGA")
        return SentenceType::Gga;
    if (letters == "GNS")
        return SentenceType::Gns;
    if (letters == "GLL")
        return SentenceType::Gll;
    if (letters == "RMC")
        return SentenceType::Rmc;
    return SentenceType::Other;
}

/// GGA and GNS, which have time, coordinates and altitude at the same places.
void NmeaReader::decodePosition(const NmeaFields &fields, bool withoutFix)
{
    location.fixTime = NmeaText::toDouble(fields[Gga::kTime]);
    location.latitude = NmeaText::toDegrees(fields[Gga::kLatitude]);
    location.longitude = NmeaText::toDegrees(fields[Gga::kLongitude]);
    location.altitude = NmeaText::toDouble(fields[Gga::kAltitude]);
    // The mode letters of GNS make no number, so that GNS always gives 0 here.
    location.fix = NmeaText::toInt(fields[Gga::kQuality]);
    noFix = withoutFix;
}

void NmeaReader::decodeGsa(const NmeaFields &fields)
{
    if (noFix) {
        debugPrint(1, readerTag(), QStringLiteral("lost fix clean used in fix"));
        for (tGnssSv &sv : svStatus.svList)
            sv.usedInFix = false;
        noFix = false;
    }

    for (int n = Gsa::kFirstSatellite; n <= Gsa::kLastSatellite; ++n) {
        if (fields[n].empty())
            continue;
        const int prn = NmeaText::toInt(fields[n]);
        markUsedInFix(prn);
        const Slot slot = gsaSlot(prn);
        if (slot != kNoSlot)
            gsaSeen[slot] = true;
    }

    location.pdop = NmeaText::toFloat(fields[Gsa::kPdop]);
    location.hdop = NmeaText::toFloat(fields[Gsa::kHdop]);
    location.vdop = NmeaText::toFloat(fields[Gsa::kVdop]);
}

/// Marks the first entry of that number, if any. By index: searching each number through all
/// entries shows in what decoding costs.
void NmeaReader::markUsedInFix(int prn)
{
    tGnssSv *const begin = svStatus.svList;
    if (isIndexed(prn)) {
        if (firstEntry[std::size_t(prn)] > 0)
            begin[firstEntry[std::size_t(prn)] - 1].usedInFix = true;
        return;
    }
    tGnssSv *const end = begin + storedSvs;
    tGnssSv *const sv =
        std::find_if(begin, end, [prn](const tGnssSv &entry) { return entry.prn == prn; });
    if (sv != end)
        sv->usedInFix = true;
}

void NmeaReader::decodeGsv(const NmeaFields &fields)
{
    const int messages = NmeaText::toInt(fields[Gsv::kMessages]);
    const int message = NmeaText::toInt(fields[Gsv::kMessage]);
    const Slot slot = gsvSlot(fields.raw(0));
    if (slot != kNoSlot) {
        gsvSeen[slot] = true;
        if (message == 1) {
            // Bounded, so that no sum of announced counts can overflow.
            inView[slot] = std::clamp(NmeaText::toInt(fields[Gsv::kInView]), 0, kMaxAnnounced);
            // A receiver that sends no RMC and no GLL never ends a cycle.
            totalInView = std::min(totalInView + inView[slot], kMaxTotalAnnounced);
            firstMessageSeen[slot] = true;
        }
        if (messages == message)
            lastMessageSeen[slot] = true;
    }
    appendSatellites(fields);
}

void NmeaReader::appendSatellites(const NmeaFields &fields)
{
    for (int first = Gsv::kFirstGroup; first + Gsv::kGroupSize <= fields.count();
         first += Gsv::kGroupSize) {
        if (fields.raw(first).empty() || storedSvs >= kMaxSatellites)
            continue;
        const int snr = first + Gsv::kGroupSize - 1;
        const bool endsSentence = snr == fields.count() - 1;

        tGnssSv &sv = svStatus.svList[storedSvs++];
        // Only the SNR can be the sentence's last field, and that is cut by length.
        sv.prn = NmeaText::toInt(fields.raw(first));
        sv.elevation = NmeaText::toDouble(fields.raw(first + 1));
        sv.azimuth = NmeaText::toFloat(fields.raw(first + 2));
        const std::string_view density = fields.raw(snr);
        sv.snr = NmeaText::toDouble(endsSentence ? NmeaText::left(density, Gsv::kLastSnrLength)
                                                 : density);
        sv.usedInFix = false;
        if (isIndexed(sv.prn) && firstEntry[std::size_t(sv.prn)] == 0)
            firstEntry[std::size_t(sv.prn)] = static_cast<quint8>(storedSvs);
    }
}

/// For entries that are stored and were emptied: all of them now have the number 0.
void NmeaReader::indexEmptyEntries()
{
    firstEntry.fill(0);
    if (storedSvs > 0)
        firstEntry[0] = 1;
}

bool NmeaReader::isIndexed(int prn)
{
    return prn >= 0 && prn < kIndexedNumbers;
}

void NmeaReader::decodeGll()
{
    if (gsvCycleComplete())
        gnssInfo->setSvStatus(svStatus);
}

/// The sentence that ends a cycle and publishes it.
void NmeaReader::decodeRmc(const NmeaFields &fields, std::string_view received)
{
    const std::string_view time = fields[Rmc::kTime];
    const std::string_view status = fields[Rmc::kStatus];
    const std::string_view date = fields[Rmc::kDate];
    if (debugEnabled(1))
        traceRmc(received);

    NmeaText::readUtc(time, date, utcTime);
    if (!time.empty()) {
        utcTime.valid = true;
        gnssInfo->setUtcTime(utcTime);
        emit gnssInfo->utcUpdate();
    }

    updateTtff(status == "A");

    if (gsvCycleComplete())
        gnssInfo->setSvStatus(svStatus);
    clearGsvCounts();

    requestNvmStore();

    location.fixTime = NmeaText::toDouble(time);
    gnssInfo->setLocation(location);
    emit gnssInfo->locationUpdate();
}

/// Counts RMC sentences until the first fix; at the usual 1 Hz their number is the TTFF in seconds.
void NmeaReader::updateTtff(bool fixValid)
{
    const int gap = gnssInfo->utcGap();
    const bool timeRunsOn = gap == 0 || gap == 1;
    if (gnssInfo->isTtffSet()) {
        timeCount = 0;
    } else if (!fixValid) {
        ++timeCount;
    } else if (timeRunsOn && timeCount == 0) {
        // A fix in the very first second is what the receiver still held from before the reset.
        debugMessage(QStringLiteral("Exist rest data after the reset, avoid!"));
    } else {
        ++timeCount;
        if (debugStreamEnabled())
            debugMessage(QStringLiteral("TTFF: ") + QString::number(timeCount));
        gnssInfo->setTtff(timeCount);
        emit gnssInfo->ttffUpdate();
        timeCount = 0;
    }
    if (debugStreamEnabled())
        debugMessage(QLatin1String("TTFF Set? : ") % flag(gnssInfo->isTtffSet()) %
                     QLatin1String(" time count: ") % QString::number(timeCount));
}

/// Once for each clear of the buffers: as soon as there is a TTFF and the constellations in view
/// and those in the fix agree.
void NmeaReader::requestNvmStore()
{
    const bool sameConstellations = std::equal(gsvSeen, gsvSeen + kGalileo, gsaSeen);
    if (!gnssInfo->isTtffSet() || !sameConstellations || gnssInfo->isNvmSaved())
        return;
    emit gnssInfo->nvmUpdate();
    gnssInfo->setNvmStatus(true);
    clearSeenConstellations();
}

/// True when all GSV messages of the cycle have come; in every case the next GSV begins a new list.
bool NmeaReader::gsvCycleComplete()
{
    const int announced = std::exchange(totalInView, 0);
    if (std::exchange(storedSvs, 0) > 0)
        firstEntry.fill(0);
    if (announced == 0)
        return false;

    const bool allOk = std::equal(std::begin(firstMessageSeen), std::end(firstMessageSeen),
                                  std::begin(lastMessageSeen));
    const int total = std::accumulate(std::begin(inView), std::end(inView), 0);
    if (announced != total || !allOk) {
        if (debugStreamEnabled())
            debugMessage(QLatin1String("GSVs not fulfilled: totalInView ") %
                         QString::number(announced) % QLatin1String(" totalCnt ") %
                         QString::number(total) % QLatin1String(" allOK ") % flag(allOk));
        return false;
    }
    if (debugEnabled(1))
        debugPrint(1, readerTag(), QStringLiteral("GSVs fulfilled"));
    svStatus.numSvs = std::min(announced, kMaxSatellites);
    return true;
}

void NmeaReader::clearGsvCounts()
{
    std::fill(std::begin(inView), std::end(inView), 0);
    std::fill(std::begin(firstMessageSeen), std::end(firstMessageSeen), false);
    std::fill(std::begin(lastMessageSeen), std::end(lastMessageSeen), false);
}

void NmeaReader::clearSeenConstellations()
{
    std::fill(std::begin(gsvSeen), std::end(gsvSeen), false);
    std::fill(std::begin(gsaSeen), std::end(gsaSeen), false);
}

void NmeaReader::clearBuf()
{
    debugPrint(1, readerTag(), QStringLiteral("NmeaReader clearBuf"));
    gnssInfo->setDataStatus(false);
    clearGsvCounts();
    clearSeenConstellations();
    location = {};
    svStatus = {};
    indexEmptyEntries();
    timeCount = 0;
    gnssInfo->setNvmStatus(false);
}

NmeaReader::Slot NmeaReader::gsvSlot(std::string_view address)
{
    const std::string_view talker = NmeaText::left(address, 3);
    if (talker == "$GP")
        return kGps;
    if (talker == "$GL")
        return kGlonass;
    if (talker == "$BD" || talker == "$GB")
        return kBeiDou;
    if (talker == "$GA")
        return kGalileo;
    if (talker == "$QZ")
        return kQzss;
    return kNoSlot;
}

/// By number, in the system's own ranges: what lies outside them counts for no constellation.
NmeaReader::Slot NmeaReader::gsaSlot(int prn)
{
    if (prn >= 1 && prn <= 32)
        return kGps;
    if (prn >= 65 && prn <= 88)
        return kGlonass;
    if (prn >= 121 && prn <= 157)
        return kBeiDou;
    return kNoSlot;
}
