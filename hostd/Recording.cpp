// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/Recording.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr qint64 kReadSize = 65536;
} // namespace

Recording::Recording(const QStringList &files)
    : names(files)
{
}

std::optional<tEpoch> Recording::next()
{
    for (qint64 looked = 0; looked < kMostBytesALook && ready.isEmpty() && errorText.isEmpty();
         looked += kReadSize) {
        if (!file.isOpen() && !openNext())
            return std::nullopt;
        readMore();
    }
    if (ready.isEmpty())
        return std::nullopt;
    return ready.dequeue();
}

bool Recording::atEnd() const
{
    return ready.isEmpty() &&
           (!errorText.isEmpty() || (!file.isOpen() && nextFile >= names.size()));
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
    const QString name = names[nextFile++];
    // Opening a pipe would wait for a writer, and reading from anything else may never end.
    const int descriptor =
        ::open(QFile::encodeName(name).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    const int reason = errno;
    struct stat opened = {};
    if (descriptor < 0) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
        const QString why = QString::fromLocal8Bit(strerror(reason));
        errorText = QStringLiteral("cannot read %1: %2").arg(name, why);
    } else if (::fstat(descriptor, &opened) != 0 || !S_ISREG(opened.st_mode)) {
        errorText = QStringLiteral("cannot read %1: it is no ordinary file").arg(name);
    } else if (file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        fileName = name;
        return true;
    } else {
        errorText = QStringLiteral("cannot read %1: %2").arg(name, file.errorString());
    }
    if (descriptor >= 0)
        ::close(descriptor);
    return false;
}

void Recording::readMore()
{
    const QByteArray bytes = file.read(kReadSize);
    if (!bytes.isEmpty()) {
        const QVector<tCutSentence> sentences = cutter.feed(bytes.constData(), bytes.size());
        for (const tCutSentence &sentence : sentences)
            take(sentence);
        return;
    }
    if (file.error() != QFileDevice::NoError)
        errorText = QStringLiteral("cannot read %1: %2").arg(fileName, file.errorString());
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
