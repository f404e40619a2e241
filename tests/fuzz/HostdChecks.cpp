// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "fuzz/HostdChecks.h"

#include "hostd/Dialect.h"
#include "receiver/epoch/EpochStream.h"
#include "receiver/families/FamilyFinder.h"
#include "receiver/recordings/TransferLogReader.h"

#include <QSet>

#include <algorithm>

namespace {

using ReceiverFamily::Family;
using Kind = tReceiverCommand::Kind;

constexpr int kPieces[] = {1, 7, 100};
constexpr int kPipeBuf = 4096;
constexpr int kRoom = 32;

bool isPlain(const QByteArray &text)
{
    return std::all_of(text.cbegin(), text.cend(),
                       [](char byte) { return byte >= 0x20 && byte < 0x7f && byte != '$'; });
}

/// `$`, text, `*`, right sum, CR LF.
QString formFault(const QByteArray &sentence)
{
    const int star = sentence.indexOf('*');
    const QByteArray text = sentence.mid(1, star - 1);
    unsigned sum = 0;
    for (const char byte : text)
        sum ^= static_cast<unsigned char>(byte);
    const bool whole = sentence.startsWith('$') && star > 1 && sentence.endsWith("\r\n") &&
                       isPlain(sentence.mid(1).chopped(2)) && sentence.size() <= 1100;
    if (!whole || sentence.mid(star + 1, 2).toUInt(nullptr, 16) != sum)
        return QStringLiteral("form of ") + QString::fromLatin1(sentence.toPercentEncoding("$,*"));
    return {};
}

bool isOrdinary(const QByteArray &sentence)
{
    static const QSet<QByteArray> types = {"GGA", "GNS", "GSV", "GSA", "GLL", "RMC"};
    return types.contains(sentence.mid(3, 3));
}

/// What the viewer keeps room for, over all sentences of a cycle.
QString cycleFault(const QVector<QByteArray> &sentences)
{
    QSet<int> inView;
    int announced = 0;
    int bytes = 0;
    for (const QByteArray &sentence : sentences) {
        bytes += sentence.size();
        const QString fault = formFault(sentence);
        if (!fault.isEmpty())
            return fault;
        if (!isOrdinary(sentence))
            continue;
        if (sentence.size() > 82 || sentence.indexOf('*') != sentence.size() - 5)
            return QStringLiteral("length of ") + QString::fromLatin1(sentence);
        if (sentence.mid(3, 3) != "GSV")
            continue;
        const QList<QByteArray> fields = sentence.left(sentence.indexOf('*')).split(',');
        if (fields.size() % 4 != 0 || fields.size() < 8)
            return QStringLiteral("groups of ") + QString::fromLatin1(sentence);
        announced += fields[2] == "1" ? fields[3].toInt() : 0;
        for (int i = 4; i < fields.size(); i += 4) {
            if (inView.contains(fields[i].toInt()) || fields[i + 3].size() != 2)
                return QStringLiteral("satellite of ") + QString::fromLatin1(sentence);
            inView.insert(fields[i].toInt());
        }
    }
    if (inView.size() > kRoom || announced != inView.size())
        return QStringLiteral("%1 satellites, %2 announced").arg(inView.size()).arg(announced);
    return bytes <= kPipeBuf ? QString() : QStringLiteral("%1 bytes in a cycle").arg(bytes);
}

struct Spoken
{
    QByteArray bytes;
    QString fault;
    qint64 broken = 0;
};

void speak(const tEpoch &epoch, Spoken &spoken)
{
    const QVector<QByteArray> sentences = Dialect::sentences(epoch);
    const QString fault = cycleFault(sentences);
    if (spoken.fault.isEmpty())
        spoken.fault = fault;
    for (const QByteArray &sentence : sentences)
        spoken.bytes += sentence;
}

Spoken spoken(const QByteArray &bytes, int piece, bool pauses)
{
    Spoken result;
    EpochStream stream;
    for (int at = 0; at < bytes.size(); at += piece) {
        for (const tEpoch &epoch : stream.feed(bytes.mid(at, piece)))
            speak(epoch, result);
        if (!pauses)
            continue;
        if (const auto epoch = stream.pause())
            speak(*epoch, result);
        if (stream.isOpen())
            result.fault = QStringLiteral("something is held over a pause");
    }
    for (const tEpoch &epoch : stream.takeRest())
        speak(epoch, result);
    if (stream.isOpen())
        result.fault = QStringLiteral("something is held at the end");
    result.broken = stream.brokenSentences();
    return result;
}

QString encodingFault(const tReceiverCommand &command, const ReceiverFamily::tDetails &details)
{
    for (const Family family : ReceiverFamily::all()) {
        const auto encoded = ReceiverFamily::encode(family, command, details);
        if (encoded.supported == encoded.frames.isEmpty() || encoded.text.isEmpty() ||
            encoded.text.contains('\n'))
            return QStringLiteral("%1 with command %2: %3")
                .arg(ReceiverFamily::name(family))
                .arg(static_cast<int>(command.kind))
                .arg(encoded.text);
    }
    return {};
}

QString described(const FamilyFinder &finder)
{
    const ReceiverFamily::tDetails &details = finder.details();
    return QStringLiteral("%1 %2 %3 %4 %5 %6")
        .arg(finder.found() ? ReceiverFamily::name(*finder.found()) : QStringLiteral("-"))
        .arg(finder.isCertain())
        .arg(details.ubxProtocol)
        .arg(details.constellations)
        .arg(static_cast<int>(details.unicore))
        .arg(finder.evidence());
}

QByteArray recordBytes(const tTransferRecord &record)
{
    return QByteArray(1, static_cast<char>(record.kind)) + ' ' +
           QByteArray::number(record.timeUs / 1000000) + '.' +
           QByteArray::number(record.timeUs % 1000000).rightJustified(6, '0') + ' ' +
           QByteArray::number(record.bytes.size()) + '\n' + record.bytes + '\n';
}

QByteArray logBytes(const QByteArray &bytes, int piece, bool *broken)
{
    TransferLogReader reader;
    QByteArray all;
    for (int at = 0; at < bytes.size(); at += piece) {
        for (const tTransferRecord &record : reader.feed(bytes.mid(at, piece)))
            all += recordBytes(record);
    }
    *broken = reader.isBroken();
    return all;
}

/// The commands as one text, and what is wrong with any.
QByteArray commandsIn(const QByteArray &bytes, int piece, QString *fault)
{
    SentenceCutter cutter;
    QByteArray all;
    for (int at = 0; at < bytes.size(); at += piece) {
        const QByteArray part = bytes.mid(at, piece);
        for (const tCutSentence &cut : cutter.feed(part.constData(), part.size())) {
            const auto command = parseReceiverCommand(cut.text);
            all += cut.text + (cut.terminated ? '!' : '?');
            if (!command)
                continue;
            all += QByteArray::number(static_cast<int>(command->kind)) + ' ' +
                   QByteArray::number(command->mask) + '\n';
            const bool hasMask = command->kind == Kind::SelectConstellations;
            if (command->mask > ConstellationMask::kAll || (!hasMask && command->mask != 0))
                *fault = QStringLiteral("mask %1").arg(command->mask);
            if (fault->isEmpty())
                *fault = encodingFault(*command, {});
        }
    }
    return all;
}

} // namespace

namespace HostdChecks {

QString dialectFault(const QByteArray &bytes)
{
    const Spoken whole = spoken(bytes, std::max(bytes.size(), 1), false);
    if (!whole.fault.isEmpty())
        return whole.fault;
    for (const int piece : kPieces) {
        const Spoken cut = spoken(bytes, piece, false);
        if (cut.bytes != whole.bytes || cut.broken != whole.broken)
            return QStringLiteral("other sentences in pieces of %1").arg(piece);
        const Spoken paused = spoken(bytes, piece * 20, true);
        if (!paused.fault.isEmpty())
            return QStringLiteral("with pauses: ") + paused.fault;
    }
    return {};
}

QString familyFault(const QByteArray &bytes)
{
    FamilyFinder whole;
    whole.feed(bytes);
    for (const int piece : kPieces) {
        FamilyFinder cut;
        for (int at = 0; at < bytes.size(); at += piece)
            cut.feed(bytes.mid(at, piece));
        if (described(cut) != described(whole))
            return described(cut) + QStringLiteral(" is not ") + described(whole);
    }
    if (whole.found().has_value() == whole.evidence().isEmpty())
        return QStringLiteral("a family without evidence");
    for (int kind = 0; kind <= static_cast<int>(Kind::StoreNvm); ++kind) {
        const QString fault =
            encodingFault({static_cast<Kind>(kind), ConstellationMask::kDefault}, whole.details());
        if (!fault.isEmpty())
            return fault;
    }
    return {};
}

QString transferLogFault(const QByteArray &bytes)
{
    bool broken = false;
    const QByteArray whole = logBytes(bytes, std::max(bytes.size(), 1), &broken);
    for (const int piece : kPieces) {
        bool cutBroken = false;
        if (logBytes(bytes, piece, &cutBroken) != whole || cutBroken != broken)
            return QStringLiteral("other records in pieces of %1").arg(piece);
    }
    bool again = false;
    if (logBytes(TransferLog::signature() + '\n' + whole, 4096, &again) != whole || again)
        return QStringLiteral("other records after writing them");
    return {};
}

QString commandFault(const QByteArray &bytes)
{
    QString fault;
    const QByteArray whole = commandsIn(bytes, std::max(bytes.size(), 1), &fault);
    for (const int piece : kPieces) {
        if (fault.isEmpty() && commandsIn(bytes, piece, &fault) != whole)
            fault = QStringLiteral("other commands in pieces of %1").arg(piece);
    }
    return fault;
}

} // namespace HostdChecks
