// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/SourceOracle.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <sstream>

namespace {

constexpr double kTolerance = 1e-6; // degrees
constexpr int kRoom = 32;

// Whole lines with a right checksum, fields without it.
QVector<QStringList> sentencesOf(const QByteArray &recording)
{
    static const QRegularExpression form(QStringLiteral("\\$([A-Z]{2,}[^$*\\x00-\\x1f]*)\\*"
                                                        "([0-9A-Fa-f]{2})"));
    QVector<QStringList> sentences;
    const QList<QByteArray> lines = recording.split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith('#'))
            continue;
        auto matches = form.globalMatch(QString::fromLatin1(line));
        while (matches.hasNext()) {
            const QRegularExpressionMatch match = matches.next();
            int sum = 0;
            for (const QChar c : match.captured(1))
                sum ^= c.toLatin1();
            if (sum == match.captured(2).toInt(nullptr, 16))
                sentences.append(match.captured(1).split(QLatin1Char(',')));
        }
    }
    return sentences;
}

std::optional<int> milliseconds(const QString &text)
{
    if (text.size() < 6)
        return std::nullopt;
    const double second = text.mid(4).toDouble();
    return text.left(2).toInt() * 3600000 + text.mid(2, 2).toInt() * 60000 +
           static_cast<int>(std::floor(second * 1000.0 + 0.5 + 1e-6));
}

double degrees(const QString &text)
{
    const int point = text.contains('.') ? text.indexOf('.') : text.size();
    if (point < 4)
        return 0.0;
    // Not strtold(): that takes the locale's decimal point.
    long double minutes = 0.0L;
    std::istringstream(text.mid(point - 2).toStdString()) >> minutes;
    const long double rounded = std::floor(minutes * 10000.0L + 0.5L + 1e-9L) / 10000.0L;
    return text.left(point - 2).toDouble() + static_cast<double>(rounded) / 60.0;
}

// The number that is the satellite's alone: Galileo from 301, BeiDou from 121, QZSS from 193; 0 for
// one that the viewer has no number for.
int uniqueNumber(const QString &talker, int n)
{
    const auto within = [n](int first, int last) {
        return n >= first && n <= last;
    };
    if (talker == QLatin1String("GL"))
        return within(65, 88) ? n : within(1, 24) ? n + 64 : 0;
    if (talker == QLatin1String("GA"))
        return within(1, 36) ? n + 300 : within(301, 336) ? n : 0;
    if (QStringList{"GB", "BD", "PQ"}.contains(talker))
        return within(1, 37) ? n + 120 : within(201, 237) ? n - 80 : within(121, 157) ? n : 0;
    if (QStringList{"QZ", "GQ"}.contains(talker))
        return within(1, 7) ? n + 192 : within(193, 199) ? n : 0;
    if (QStringList{"GP", "GN"}.contains(talker))
        return within(1, 88) || within(193, 199) ? n : within(120, 151) ? n - 87 : 0;
    return 0;
}

class Reader
{
public:
    void take(const QStringList &fields)
    {
        const QString talker = fields[0].left(2);
        const QString type = fields[0].size() == 5 ? fields[0].mid(2) : QString();
        const auto field = [&fields](int n) {
            return fields.value(n);
        };
        if (type == QLatin1String("GGA")) {
            begin(type, field(1));
            position(field(2), field(4), 3);
        } else if (type == QLatin1String("GNS")) {
            begin(type, field(1));
            position(field(2), field(4), 2);
        } else if (type == QLatin1String("GLL")) {
            begin(type, field(5));
            position(field(1), field(3), 1);
        } else if (type == QLatin1String("RMC")) {
            begin(type, field(1));
            position(field(3), field(5), 1);
            open.rmc = rmcs++;
            open.date = QDate(2000 + field(9).mid(4, 2).toInt(), field(9).mid(2, 2).toInt(),
                              field(9).left(2).toInt());
        } else if (type == QLatin1String("GSV")) {
            for (int i = 4; i + 3 < fields.size(); i += 4) {
                const int number = uniqueNumber(talker, field(i).toInt());
                if (number > 0)
                    open.strengths[number] =
                        std::max(open.strengths.value(number), field(i + 3).toInt());
            }
        } else if (type == QLatin1String("GSA")) {
            static const QStringList systems = {"GN", "GP", "GL", "GA", "GB", "QZ"};
            const QString system =
                talker == QLatin1String("GN") ? systems.value(field(18).toInt(), "none") : talker;
            if (!gsaSeen)
                used.clear();
            gsaSeen = true;
            for (int i = 3; i <= 14; ++i) {
                const int number = uniqueNumber(system, field(i).toInt());
                if (number > 0)
                    used.insert(number);
            }
        }
    }

    QVector<tSourceEpoch> finish()
    {
        end();
        return epochs;
    }

private:
    void begin(const QString &type, const QString &timeText)
    {
        const std::optional<int> time = milliseconds(timeText);
        const bool changed = time && open.timeMs ? *time != *open.timeMs : types.contains(type);
        if (!types.isEmpty() && changed)
            end();
        types.append(type);
        if (time)
            open.timeMs = time;
    }

    void end()
    {
        open.used = used;
        // A lone GLL is what a recording that begins or breaks within a cycle leaves of it.
        if (!types.isEmpty() && types != QStringList{QStringLiteral("GLL")})
            epochs.append(open);
        open = {};
        types.clear();
        rank = 0;
        gsaSeen = false;
    }

    void position(const QString &latitude, const QString &longitude, int newRank)
    {
        if (latitude.isEmpty() || longitude.isEmpty() || newRank <= rank)
            return;
        rank = newRank;
        open.latitude = degrees(latitude);
        open.longitude = degrees(longitude);
    }

    QVector<tSourceEpoch> epochs;
    tSourceEpoch open;
    QStringList types; // with a time, of the open epoch
    int rank = 0;      // of the sentence that its position is from
    bool gsaSeen = false;
    QSet<int> used;
    int rmcs = 0;
};

QString positionFault(const tSourceEpoch &epoch, const Publication &shown)
{
    const double off = std::max(std::fabs(shown.location.latitude - epoch.latitude),
                                std::fabs(shown.location.longitude - epoch.longitude));
    if (off <= kTolerance)
        return {};
    return QStringLiteral("position %1, %2 instead of %3, %4")
        .arg(shown.location.latitude, 0, 'f', 9)
        .arg(shown.location.longitude, 0, 'f', 9)
        .arg(epoch.latitude, 0, 'f', 9)
        .arg(epoch.longitude, 0, 'f', 9);
}

QString timeFault(const tSourceEpoch &epoch, const Publication &shown)
{
    if (!epoch.timeMs)
        return {};
    const tUTCTime &utc = shown.utc;
    const int ms = utc.hour * 3600000 + utc.minute * 60000 +
                   static_cast<int>(std::lround(utc.second * 1000.0));
    if (!utc.valid || ms != *epoch.timeMs)
        return QStringLiteral("time %1 ms instead of %2 ms").arg(ms).arg(*epoch.timeMs);
    if (epoch.date.isValid() && QDate(utc.year, utc.month, utc.day) != epoch.date)
        return QStringLiteral("date %1-%2-%3").arg(utc.year).arg(utc.month).arg(utc.day);
    return {};
}

QString satelliteFault(const tSourceEpoch &epoch, const Publication &shown)
{
    if (epoch.strengths.isEmpty())
        return {};
    const int expected = std::min(kRoom, static_cast<int>(epoch.strengths.size()));
    if (shown.svStatus.numSvs != expected)
        return QStringLiteral("%1 satellites instead of %2")
            .arg(shown.svStatus.numSvs)
            .arg(expected);
    QMap<int, int> left = epoch.strengths;
    int weakestUnused = 99;
    for (int i = 0; i < shown.svStatus.numSvs; ++i) {
        const tGnssSv &sv = shown.svStatus.svList[i];
        if (!left.contains(sv.prn))
            return QStringLiteral("satellite %1 twice or not there").arg(sv.prn);
        const int strength = left.take(sv.prn);
        if (std::fabs(sv.snr - strength) > 0.0)
            return QStringLiteral("satellite %1 with %2 dB-Hz").arg(sv.prn).arg(sv.snr);
        if (sv.usedInFix != epoch.used.contains(sv.prn))
            return QStringLiteral("satellite %1 wrongly %2")
                .arg(sv.prn)
                .arg(sv.usedInFix ? QStringLiteral("in use") : QStringLiteral("not in use"));
        if (!sv.usedInFix)
            weakestUnused = std::min(weakestUnused, strength);
    }
    for (auto it = left.constBegin(); it != left.constEnd(); ++it) {
        if (epoch.used.contains(it.key()) || it.value() > weakestUnused)
            return QStringLiteral("satellite %1 left out for a lesser one").arg(it.key());
    }
    return {};
}

QString numbered(int epoch, const QString &fault)
{
    return fault.isEmpty() ? fault : QStringLiteral("epoch %1: %2").arg(epoch).arg(fault);
}

} // namespace

namespace SourceOracle {

QVector<tSourceEpoch> read(const QByteArray &recording)
{
    Reader reader;
    const QVector<QStringList> sentences = sentencesOf(recording);
    for (const QStringList &sentence : sentences)
        reader.take(sentence);
    return reader.finish();
}

QByteArray asSent(const QByteArray &stored)
{
    return stored.contains('\r') ? stored : QByteArray(stored).replace("\n", "\r\n");
}

QString fault(const tSourceEpoch &epoch, const Publication &shown)
{
    for (const auto &check : {positionFault, timeFault, satelliteFault}) {
        const QString found = check(epoch, shown);
        if (!found.isEmpty())
            return found;
    }
    return {};
}

QString faultOfDialect(const QVector<tSourceEpoch> &epochs, const std::vector<Publication> &shown)
{
    for (int i = 0; i < epochs.size() && i < static_cast<int>(shown.size()); ++i) {
        const QString found = fault(epochs[i], shown[static_cast<std::size_t>(i)]);
        if (!found.isEmpty())
            return numbered(i, found);
    }
    if (static_cast<int>(shown.size()) != epochs.size())
        return QStringLiteral("%1 epochs instead of %2").arg(shown.size()).arg(epochs.size());
    return {};
}

QString faultOfRaw(const QVector<tSourceEpoch> &epochs, const std::vector<Publication> &shown)
{
    for (int i = 0; i < epochs.size(); ++i) {
        const tSourceEpoch &epoch = epochs[i];
        if (epoch.rmc < 0)
            continue;
        if (epoch.rmc >= static_cast<int>(shown.size()))
            return numbered(i, QStringLiteral("not shown"));
        const Publication &now = shown[static_cast<std::size_t>(epoch.rmc)];
        const QString ofTime = timeFault(epoch, now);
        if (!ofTime.isEmpty())
            return numbered(i, ofTime);
        for (const auto &check : {positionFault, satelliteFault}) {
            const QString found = check(epoch, now);
            if (i > 0 && !found.isEmpty() && !check(epochs[i - 1], now).isEmpty())
                return numbered(i, found);
        }
    }
    return {};
}

} // namespace SourceOracle
