// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/Recording.h"

Recording::Recording(const QStringList &files)
    : names(files)
{
}

std::optional<tEpoch> Recording::next()
{
    while (ready.isEmpty() && errorText.isEmpty()) {
        if (!file.isOpen() && !openNext())
            return std::nullopt;
        readMore();
    }
    if (ready.isEmpty())
        return std::nullopt;
    return ready.dequeue();
}

void Recording::rewind()
{
    file.close();
    nextFile = 0;
    broken = 0;
    errorText.clear();
    ready.clear();
    cutter = SentenceCutter(SentenceCutter::Comments::PassOver);
    builder = EpochBuilder();
}

bool Recording::openNext()
{
    if (nextFile >= names.size())
        return false;
    file.setFileName(names[nextFile++]);
    if (file.open(QIODevice::ReadOnly))
        return true;
    errorText = QStringLiteral("cannot read %1: %2").arg(file.fileName(), file.errorString());
    return false;
}

void Recording::readMore()
{
    constexpr qint64 kReadSize = 65536;
    const QByteArray bytes = file.read(kReadSize);
    if (!bytes.isEmpty()) {
        const QVector<tCutSentence> sentences = cutter.feed(bytes.constData(), bytes.size());
        for (const tCutSentence &sentence : sentences)
            take(sentence);
        return;
    }
    if (file.error() != QFileDevice::NoError)
        errorText = QStringLiteral("cannot read %1: %2").arg(file.fileName(), file.errorString());
    take(cutter.takeRest());
    if (const std::optional<tEpoch> rest = builder.takeRest())
        ready.enqueue(*rest);
    file.close();
}

void Recording::take(const tCutSentence &cut)
{
    if (cut.text.isEmpty())
        return;
    const Nmea::LineEnd lineEnd = cut.terminated ? Nmea::LineEnd::Seen : Nmea::LineEnd::Missing;
    const std::optional<tNmeaSentence> sentence = Nmea::parse(cut.text, lineEnd);
    if (!sentence) {
        // Binary data holds dollar signs too; only what has an address is worth counting.
        broken += Nmea::hasAddress(cut.text) ? 1 : 0;
        return;
    }
    if (const std::optional<tEpoch> epoch = builder.add(*sentence))
        ready.enqueue(*epoch);
}
