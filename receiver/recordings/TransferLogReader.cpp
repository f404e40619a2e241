// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/recordings/TransferLogReader.h"

#include <QList>

#include <optional>

namespace {

// Longest line of the head and of a record's first line.
constexpr int kMaxHeadLine = 4096;
constexpr int kMaxRecordLine = 64;

bool isKind(char byte)
{
    using RecordKind = TransferLog::Kind;
    for (const RecordKind kind : {RecordKind::FromReceiver, RecordKind::ToReceiver,
                                  RecordKind::Command, RecordKind::Remark}) {
        if (byte == static_cast<char>(kind))
            return true;
    }
    return false;
}

// A number of only digits, up to 15 of them.
std::optional<qint64> digits(const QByteArray &text)
{
    constexpr int kMostDigits = 15;
    if (text.isEmpty() || text.size() > kMostDigits)
        return std::nullopt;
    for (const char byte : text) {
        if (byte < '0' || byte > '9')
            return std::nullopt;
    }
    return text.toLongLong();
}

// "12.345678" in microseconds.
std::optional<qint64> microseconds(const QByteArray &text)
{
    constexpr int kDecimals = 6;
    constexpr qint64 kMostSeconds = 999999999999;
    const int point = text.indexOf('.');
    const std::optional<qint64> seconds = digits(text.left(point));
    const std::optional<qint64> fraction = digits(text.mid(point + 1));
    if (point < 0 || text.size() - point - 1 != kDecimals || !seconds || !fraction ||
        *seconds > kMostSeconds)
        return std::nullopt;
    return *seconds * 1000000 + *fraction;
}

} // namespace

bool TransferLogReader::isLog(const QByteArray &head)
{
    return head.startsWith(TransferLog::signature() + '\n');
}

QVector<tTransferRecord> TransferLogReader::feed(const QByteArray &bytes)
{
    QVector<tTransferRecord> out;
    if (broken)
        return out;
    open += bytes;
    Step step = Step::Taken;
    while (step == Step::Taken)
        step = inHead ? takeHead() : takeRecord(out);
    broken = step == Step::Broken;
    open.remove(0, at);
    at = 0;
    return out;
}

TransferLogReader::Step TransferLogReader::takeHead()
{
    if (at == open.size())
        return Step::NeedsMore;
    if (open.at(at) != '#') {
        inHead = false;
        return Step::Taken;
    }
    const int end = open.indexOf('\n', at);
    if (end < 0)
        return open.size() - at > kMaxHeadLine ? Step::Broken : Step::NeedsMore;
    at = end + 1;
    return Step::Taken;
}

TransferLogReader::Step TransferLogReader::takeRecord(QVector<tTransferRecord> &out)
{
    if (at == open.size())
        return Step::NeedsMore;
    const int end = open.indexOf('\n', at);
    if (end < 0 || end - at > kMaxRecordLine)
        return end < 0 && open.size() - at <= kMaxRecordLine ? Step::NeedsMore : Step::Broken;
    const QList<QByteArray> fields = open.mid(at, end - at).split(' ');
    if (fields.size() != 3 || fields[0].size() != 1 || !isKind(fields[0].at(0)))
        return Step::Broken;
    const std::optional<qint64> time = microseconds(fields[1]);
    const std::optional<qint64> size = digits(fields[2]);
    if (!time || !size || *size > kMaxRecord)
        return Step::Broken;
    const int afterBytes = end + 1 + static_cast<int>(*size);
    if (afterBytes >= open.size())
        return Step::NeedsMore;
    if (open.at(afterBytes) != '\n')
        return Step::Broken;
    out.append({static_cast<TransferLog::Kind>(fields[0].at(0)), *time,
                open.mid(end + 1, static_cast<int>(*size))});
    at = afterBytes + 1;
    return Step::Taken;
}
