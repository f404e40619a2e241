// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/CommandReader.h"

#include "base/SystemError.h"

#include <QFile>
#include <QSocketNotifier>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

constexpr int kReadSize = 4096;
// So that a writer that never pauses cannot keep the event loop from everything else.
constexpr int kReadsATurn = 16;

} // namespace

CommandReader::CommandReader(const QByteArray &path, QObject *parent)
    : QObject(parent)
    , pipe(path)
{
}

CommandReader::~CommandReader()
{
    close();
}

bool CommandReader::open(QString *error)
{
    QString replaced;
    if (!pipe.make(NamedPipe::OrdinaryFile::Replace, error, &replaced))
        return false;
    if (!replaced.isEmpty())
        emit notice(replaced);
    descriptor = ::open(pipe.path().constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    const int reason = errno;
    if (descriptor < 0) {
        *error = QStringLiteral("cannot open %1: %2")
                     .arg(QFile::decodeName(pipe.path()), systemErrorText(reason));
        return false;
    }
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        *error = QStringLiteral("another tavrin-hostd serves %1; end it first or set TAVRIN_ROOT")
                     .arg(QFile::decodeName(pipe.path()));
        close();
        return false;
    }
    notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
    connect(notifier.get(), &QSocketNotifier::activated, this, &CommandReader::readAvailable);
    return true;
}

void CommandReader::restoreIfLost()
{
    if (descriptor >= 0 && pipe.isOpenOn(descriptor))
        return;
    close();
    QString error;
    if (open(&error))
        emit notice(QStringLiteral("%1 was gone and has been made again")
                        .arg(QFile::decodeName(pipe.path())));
    else if (error != trouble)
        emit notice(QStringLiteral("no command can be received: %1").arg(error));
    trouble = error;
}

void CommandReader::readAvailable()
{
    char buffer[kReadSize];
    const qint64 straysBefore = cutter.strayBytes();
    for (int turn = 0; turn < kReadsATurn && descriptor >= 0; ++turn) {
        // Would block and interrupted are no failures: the notifier comes again.
        const ssize_t size = ::read(descriptor, buffer, sizeof(buffer));
        if (size <= 0)
            break;
        const QVector<tCutSentence> sentences = cutter.feed(buffer, size);
        for (const tCutSentence &sentence : sentences)
            handle(sentence);
    }
    if (cutter.strayBytes() > straysBefore)
        emit strayBytes(cutter.strayBytes() - straysBefore);
}

void CommandReader::handle(const tCutSentence &sentence)
{
    const std::optional<tReceiverCommand> command =
        sentence.terminated ? parseReceiverCommand(sentence.text) : std::nullopt;
    if (command)
        emit commandReceived(*command, sentence.text);
    else
        emit unknownSentence(sentence.text);
}

void CommandReader::close()
{
    notifier.reset();
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
}
