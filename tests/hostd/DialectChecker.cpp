// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/DialectChecker.h"

#include <QHash>
#include <QRegularExpression>

namespace {

struct tRange
{
    const char *talker;
    int first;
    int last;
};

constexpr tRange kRanges[] = {
    {"GP", 1, 64}, {"GL", 65, 96}, {"GB", 121, 183}, {"GA", 301, 336}, {"QZ", 193, 202}};

bool belongs(const QString &talker, int number)
{
    for (const tRange &range : kRanges) {
        if (talker == QLatin1String(range.talker))
            return number >= range.first && number <= range.last;
    }
    return false;
}

bool matches(const char *pattern, const QString &text)
{
    // Compiled once: the recordings have many thousand fields.
    static QHash<const char *, QRegularExpression> compiled;
    QRegularExpression &expression = compiled[pattern];
    if (expression.pattern().isEmpty())
        expression.setPattern(QLatin1Char('^') + QString::fromLatin1(pattern) + QLatin1Char('$'));
    return expression.match(text).hasMatch();
}

int rankOf(const QString &type)
{
    static const QStringList order = {QStringLiteral("GNS"), QStringLiteral("GGA"),
                                      QStringLiteral("GSV"), QStringLiteral("GSA"),
                                      QStringLiteral("GLL"), QStringLiteral("RMC")};
    return order.indexOf(type);
}

} // namespace

void DialectChecker::fail(const QString &text, const QString &line)
{
    if (firstError.isEmpty())
        firstError = text + QStringLiteral(": ") + line;
}

void DialectChecker::read(const QByteArray &bytes)
{
    const QList<QByteArray> lines = bytes.split('\n');
    if (!lines.last().isEmpty())
        fail(QStringLiteral("the stream ends within a sentence"),
             QString::fromLatin1(lines.last()));
    for (int i = 0; i + 1 < lines.size(); ++i) {
        if (!lines[i].endsWith('\r'))
            fail(QStringLiteral("no CR LF"), QString::fromLatin1(lines[i]));
        readLine(QString::fromLatin1(lines[i]).chopped(1));
    }
}

void DialectChecker::readLine(const QString &line)
{
    static const QRegularExpression ordinary(QStringLiteral("^\\$..(GGA|GNS|GSV|GSA|GLL|RMC)"));
    if (!ordinary.match(line).hasMatch())
        return readOther(line);
    static const QRegularExpression form(QStringLiteral(
        "^\\$((?:GN|GP|GL|GA|GB|QZ)(?:GGA|GNS|GSV|GSA|GLL|RMC),[^$*]*)\\*([0-9A-F]{2})$"));
    const QRegularExpressionMatch match = form.match(line);
    if (!match.hasMatch() || line.size() > 80)
        return fail(QStringLiteral("no sentence of the device"), line);
    int sum = 0;
    for (const QChar c : match.captured(1))
        sum ^= c.toLatin1();
    if (sum != match.captured(2).toInt(nullptr, 16))
        fail(QStringLiteral("wrong checksum"), line);

    const QStringList fields = match.captured(1).split(QLatin1Char(','));
    const QString type = fields[0].mid(2);
    const int newRank = rankOf(type);
    const bool mayRepeat = type == QLatin1String("GSV") || type == QLatin1String("GSA");
    const bool beginsWell = newRank <= rankOf(QStringLiteral("GGA"));
    if (newRank < rank || (newRank == rank && !mayRepeat) || (rank < 0 && !beginsWell))
        fail(QStringLiteral("out of order"), line);
    if (type != QLatin1String("GSV") && setRead != setTotal)
        fail(QStringLiteral("GSV set ends early"), line);
    rank = newRank;
    if (type == QLatin1String("GNS")) {
        if (fields.size() != 13 || !matches("(\\d{6}\\.\\d{3})?", fields[1]) ||
            !matches("[A-Z]+", fields[6]))
            return fail(QStringLiteral("GNS, its time or modes"), line);
        readPosition(fields, 2, line);
        open.modes = fields[6];
    } else if (type == QLatin1String("GGA")) {
        if (fields.size() < 13 || !matches("(\\d{6}\\.\\d{3})?", fields[1]))
            return fail(QStringLiteral("GGA or its time"), line);
        open.quality = fields[6].toInt();
        open.altitude = fields[9];
        readPosition(fields, 2, line);
    } else if (type == QLatin1String("GSV")) {
        readGsv(fields, line);
    } else if (type == QLatin1String("GSA")) {
        readGsa(fields, line);
    } else if (type == QLatin1String("GLL")) {
        if (fields.size() != 8 || !matches("(\\d{6}\\.\\d{3})?", fields[5]))
            return fail(QStringLiteral("GLL or its time"), line);
        readPosition(fields, 1, line);
    } else {
        if (fields.size() != 13 || !matches("(\\d{6}\\.\\d{3})?", fields[1]) ||
            !matches("[AV]", fields[2]) || !matches("(\\d{6})?", fields[9]))
            return fail(QStringLiteral("RMC, its time, status or date"), line);
        readPosition(fields, 3, line);
        open.time = fields[1];
        open.date = fields[9];
        open.valid = fields[2] == QLatin1String("A");
        endCycle(line);
    }
}

// Any sentence that the receiver had besides, as it was.
void DialectChecker::readOther(const QString &line)
{
    static const QRegularExpression form(QStringLiteral("^\\$([^$*]+)\\*([0-9A-Fa-f]{2})$"));
    const QRegularExpressionMatch match = form.match(line);
    if (!match.hasMatch() || line.size() > 1024)
        return fail(QStringLiteral("no sentence"), line);
    if (rank >= 0)
        fail(QStringLiteral("another sentence within a cycle"), line);
    int sum = 0;
    for (const QChar c : match.captured(1))
        sum ^= c.toLatin1();
    if (sum != match.captured(2).toInt(nullptr, 16))
        fail(QStringLiteral("wrong checksum"), line);
    others_.append(line);
}

void DialectChecker::readPosition(const QStringList &fields, int first, const QString &line)
{
    const bool empty = fields[first].isEmpty() && fields[first + 1].isEmpty() &&
                       fields[first + 2].isEmpty() && fields[first + 3].isEmpty();
    const bool whole =
        matches("\\d\\d[0-5]\\d\\.\\d{4}", fields[first]) && matches("[NS]", fields[first + 1]) &&
        matches("\\d{3}[0-5]\\d\\.\\d{4}", fields[first + 2]) && matches("[EW]", fields[first + 3]);
    if (!empty && !whole)
        fail(QStringLiteral("position"), line);
    if (whole && (fields[first].toDouble() > 9000.0 || fields[first + 2].toDouble() > 18000.0))
        fail(QStringLiteral("position off the earth"), line);
    open.latitude = fields[first];
    open.northSouth = fields[first + 1];
    open.longitude = fields[first + 2];
    open.eastWest = fields[first + 3];
}

void DialectChecker::readGsv(const QStringList &fields, const QString &line)
{
    const QString talker = fields[0].left(2);
    const int groups = (fields.size() - 4) / 4;
    if (fields.size() < 8 || fields.size() % 4 != 0 || groups > 4)
        return fail(QStringLiteral("GSV with an incomplete group or a signal id"), line);
    if (fields[2].toInt() == 1) {
        if (setRead != setTotal)
            fail(QStringLiteral("GSV set ends early"), line);
        if (setsDone.contains(talker))
            fail(QStringLiteral("second GSV set of a talker"), line);
        setsDone.append(talker);
        setTalker = talker;
        setMessages = fields[1].toInt();
        setMessage = 0;
        setRead = 0;
        setTotal = fields[3].toInt();
    }
    ++setMessage;
    setRead += groups;
    if (talker != setTalker || fields[1].toInt() != setMessages ||
        fields[2].toInt() != setMessage || fields[3].toInt() != setTotal ||
        (setMessage < setMessages && groups != 4) ||
        (setMessage == setMessages && setRead != setTotal))
        fail(QStringLiteral("GSV counts"), line);
    for (int i = 4; i < fields.size(); i += 4) {
        const int number = fields[i].toInt();
        if (!belongs(talker, number) || open.inView.contains(number))
            fail(QStringLiteral("satellite number foreign or twice"), line);
        if (!matches("(\\d\\d)?", fields[i + 1]) || fields[i + 1].toInt() > 90 ||
            !matches("(\\d{3})?", fields[i + 2]) || fields[i + 2].toInt() > 359 ||
            !matches("\\d\\d", fields[i + 3]))
            fail(QStringLiteral("elevation, azimuth or strength"), line);
        open.inView[number] = {talker, fields[i + 1].toInt(), fields[i + 2].toInt(),
                               fields[i + 3].toInt()};
    }
    if (open.inView.size() > 32)
        fail(QStringLiteral("more than 32 satellites"), line);
}

void DialectChecker::readGsa(const QStringList &fields, const QString &line)
{
    if (fields.size() != 18 || !matches("[123]", fields[2]))
        return fail(QStringLiteral("GSA"), line);
    for (int i = 3; i <= 14; ++i) {
        if (fields[i].isEmpty())
            continue;
        if (!belongs(fields[0].left(2), fields[i].toInt()) || open.used.contains(fields[i].toInt()))
            fail(QStringLiteral("used number foreign or twice"), line);
        open.used.append(fields[i].toInt());
    }
    for (int i = 15; i <= 17; ++i) {
        if (!matches("(\\d{1,5}\\.\\d{2,4})?", fields[i]))
            fail(QStringLiteral("DOP"), line);
    }
    open.pdop.append(fields[15]);
    open.hdop.append(fields[16]);
    open.vdop.append(fields[17]);
}

void DialectChecker::endCycle(const QString &line)
{
    if (setRead != setTotal)
        fail(QStringLiteral("GSV set ends early"), line);
    read_.append(open);
    open = {};
    rank = -1;
    setsDone.clear();
    setRead = 0;
    setTotal = 0;
}
