// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gnss/GnssInfo.h"
#include "gnss/InterruptibleSleep.h"

#include <QByteArray>
#include <QObject>

#include <array>
#include <string_view>
#include <vector>

class NmeaFields;

/// The whole input pipeline: reads NMEA 0183 text from the input pipe, keeps it in GnssInfo, cuts
/// it into sentences and decodes GGA, GNS, GSA, GSV, GLL and RMC of any talker. The sentences fill
/// working copies; RMC, and for satellites GLL, publish them to GnssInfo. Checksums are not looked
/// at.
///
/// Lives on the reading thread. Only clearBuf() and interrupt() are called from elsewhere: the
/// former writes the decoder's state without a lock, which at worst mixes it with one decoding
/// pass and is overwritten by the next GSV cycle.
class NmeaReader : public QObject
{
    Q_OBJECT

public:
    explicit NmeaReader(QObject *parent = nullptr);
    ~NmeaReader() override;

    /// Sleeps for a nominal time, at most until interrupt().
    void sleep(int nominalMs) { idleSleep.sleep(nominalMs); }

    /// Ends the sleep under way and all later ones. Any thread.
    void interrupt() { idleSleep.interrupt(); }

    /// Decodes `bytes` as if one read had delivered them; at most freeSpace() of them.
    void feed(std::string_view bytes);

    /// Bytes that the receive buffer has room for: at least 101376, whatever came before.
    std::size_t freeSpace() const;

signals:
    void done(); ///< never emitted

public slots:
    /// Opens the input pipe, without blocking. False, with a debug message, when it cannot.
    bool notifier_start();

    /// Closes the input pipe; harmless when it is closed.
    void notifier_delete();

    /// One pass: reads what has arrived and decodes it. Returns what read() returned; after less
    /// than 1 it has slept half a second. The argument is not used.
    qlonglong notifier_process(int);

    /// Forgets the decoder's state and the data-received and NVM-saved flags. The bytes received
    /// but not yet decoded, the no-fix flag and the counts of the current GSV cycle stay.
    void clearBuf();

private:
    /// The constellations that GSV talkers and GSA numbers are sorted into.
    enum Slot { kGps, kGlonass, kBeiDou, kGalileo, kQzss, kSlotCount, kNoSlot = kSlotCount };

    enum class SentenceType { Gga, Gns, Gsv, Gsa, Gll, Rmc, Other };

    /// More than the numbers of all constellations; others, in damaged sentences, are searched for.
    static constexpr int kIndexedNumbers = 512;

    void openNewPipeAtPath();
    void process(std::size_t arrived);
    QString textOf(std::string_view arrived);
    void keepTail(std::size_t start, std::size_t end);
    void decode(std::string_view sentence);
    void decodeCharacters(std::string_view sentence, std::string_view received);
    void decodeFields(SentenceType type, const NmeaFields &fields, std::string_view received);
    void decodePosition(const NmeaFields &fields, bool withoutFix);
    void decodeGsa(const NmeaFields &fields);
    void decodeGsv(const NmeaFields &fields);
    void appendSatellites(const NmeaFields &fields);
    void decodeGll();
    void decodeRmc(const NmeaFields &fields, std::string_view received);
    void markUsedInFix(int prn);
    void indexEmptyEntries();
    static bool isIndexed(int prn);
    bool gsvCycleComplete();
    void updateTtff(bool fixValid);
    void requestNvmStore();
    void clearGsvCounts();
    void clearSeenConstellations();

    static SentenceType typeOf(std::string_view letters);
    static Slot gsvSlot(std::string_view address);
    static Slot gsaSlot(int prn);

    int descriptor = -1;
    GnssInfo *gnssInfo = nullptr;
    std::vector<char> buffer;
    std::size_t writePosition = 0;
    QByteArray unfinishedText; ///< of the last character, no text yet
    InterruptibleSleep idleSleep;

    tGnssSvStatus svStatus;
    tGnssLocation location;
    tUTCTime utcTime;
    bool noFix = false;
    quint32 timeCount = 0; ///< RMC sentences without a fix since the last clear or TTFF
    int storedSvs = 0;     ///< entries of svStatus filled in the current GSV cycle
    /// By satellite number: 1 more than its first entry among those filled, 0 when it has none.
    std::array<quint8, kIndexedNumbers> firstEntry = {};
    int totalInView = 0; ///< announced in the current GSV cycle
    int inView[kSlotCount] = {};
    bool firstMessageSeen[kSlotCount] = {};
    bool lastMessageSeen[kSlotCount] = {};
    bool gsvSeen[kSlotCount] = {};
    bool gsaSeen[kSlotCount] = {};
};
