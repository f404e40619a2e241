// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/recordings/Recording.h"

#include "base/SystemError.h"
#include "receiver/families/ReceiverFamily.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr qint64 kReadSize = 65536;

// What the user is told of a record that brings no bytes of the receiver.
QString eventOf(const tTransferRecord &record)
{
    const QString text = ReceiverFamily::readable(record.bytes);
    if (record.kind == TransferLog::Kind::ToReceiver)
        return QStringLiteral("recorded: sent %1").arg(text);
    if (record.kind == TransferLog::Kind::Command)
        return QStringLiteral("recorded: command %1").arg(text);
    return QStringLiteral("recorded: %1").arg(text);
}

} // namespace

Recording::Recording(const QStringList &files)
    : names(files)
{
}

std::optional<tPlayed> Recording::next()
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
    errorText.clear();
    ready.clear();
    log.reset();
    receivedUs.reset();
    stream = EpochStream(SentenceCutter::Comments::PassOver);
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
        errorText = QStringLiteral("cannot read %1: %2").arg(name, systemErrorText(reason));
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
    const bool atBegin = file.pos() == 0;
    const QByteArray bytes = file.read(kReadSize);
    if (bytes.isEmpty()) {
        endFile();
        return;
    }
    if (atBegin && TransferLogReader::isLog(bytes))
        log.emplace();
    if (!log) {
        enqueue(stream.feed(bytes));
        return;
    }
    const QVector<tTransferRecord> records = log->feed(bytes);
    for (const tTransferRecord &record : records)
        take(record);
    if (log->isBroken())
        errorText = QStringLiteral("cannot read %1 to its end: there is something that is no "
                                   "record of a transfer log")
                        .arg(fileName);
}

void Recording::endFile()
{
    if (file.error() != QFileDevice::NoError)
        errorText = QStringLiteral("cannot read %1: %2").arg(fileName, file.errorString());
    // The next part of a transfer log goes on where this one ends, in the middle of a sentence too.
    if (!log || nextFile >= names.size())
        enqueue(stream.takeRest(), receivedUs);
    log.reset();
    file.close();
}

void Recording::take(const tTransferRecord &record)
{
    if (receivedUs && record.timeUs - *receivedUs > kPauseUs) {
        if (const std::optional<tEpoch> epoch = stream.pause())
            enqueue({*epoch}, *receivedUs + kPauseUs);
    }
    if (record.kind != TransferLog::Kind::FromReceiver) {
        ready.enqueue({{}, eventOf(record), record.timeUs});
        return;
    }
    receivedUs = record.timeUs;
    enqueue(stream.feed(record.bytes), record.timeUs);
}

void Recording::enqueue(const QVector<tEpoch> &epochs, std::optional<qint64> timeUs)
{
    for (const tEpoch &epoch : epochs)
        ready.enqueue({epoch, {}, timeUs});
}
