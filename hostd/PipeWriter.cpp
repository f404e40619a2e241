// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/PipeWriter.h"

#include "base/SystemError.h"

#include <QFile>
#include <QSocketNotifier>

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

// Cut into pieces that the kernel writes whole or not at all, each ending with a sentence.
QVector<QByteArray> wholePieces(const QVector<QByteArray> &sentences)
{
    QVector<QByteArray> pieces;
    for (const QByteArray &sentence : sentences) {
        if (pieces.isEmpty() || pieces.last().size() + sentence.size() > PIPE_BUF)
            pieces.append(QByteArray());
        pieces.last() += sentence;
    }
    return pieces;
}

} // namespace

PipeWriter::PipeWriter(const QByteArray &path, QObject *parent)
    : QObject(parent)
    , pipe(path)
{
}

PipeWriter::~PipeWriter()
{
    close();
}

bool PipeWriter::prepare(QString *error)
{
    QString replaced;
    return pipe.make(NamedPipe::OrdinaryFile::Refuse, error, &replaced);
}

bool PipeWriter::hasReader()
{
    if (descriptor < 0)
        return open();
    pollfd state = {descriptor, POLLOUT, 0};
    if (::poll(&state, 1, 0) > 0 && (state.revents & POLLERR) != 0)
        closeWithoutReader();
    return descriptor >= 0;
}

PipeWriter::Result PipeWriter::write(const QVector<QByteArray> &sentences)
{
    if (!hasReader())
        return Result::NoReader;
    const QVector<QByteArray> pieces = wholePieces(sentences);
    for (const QByteArray &piece : pieces) {
        ssize_t written = -1;
        int reason = 0;
        do {
            written = ::write(descriptor, piece.constData(), static_cast<size_t>(piece.size()));
            reason = errno;
        } while (written < 0 && reason == EINTR);
        if (written == piece.size())
            continue;
        if (written < 0 && reason != EAGAIN) {
            closeWithoutReader();
            return Result::NoReader;
        }
        return Result::Full;
    }
    return Result::Written;
}

void PipeWriter::closeWithoutReader()
{
    if (descriptor < 0)
        return;
    close();
    emit notice(QStringLiteral("the reader of %1 has left").arg(QFile::decodeName(pipe.path())));
}

bool PipeWriter::open()
{
    QString error;
    const bool opened = openPipe(&error);
    if (!error.isEmpty() && error != trouble)
        emit notice(QStringLiteral("nothing can be sent: %1").arg(error));
    trouble = error;
    if (!opened)
        return false;
    // The writing end reports an error condition, always watched for, when the last reader leaves.
    readerWatch = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Exception);
    connect(readerWatch.get(), &QSocketNotifier::activated, this, &PipeWriter::closeWithoutReader);
    emit notice(QStringLiteral("a reader has opened %1").arg(QFile::decodeName(pipe.path())));
    return true;
}

// Opens the pipe if somebody reads it; makes it anew if it is gone. False without `error` when
// there is only no reader.
bool PipeWriter::openPipe(QString *error)
{
    descriptor = ::open(pipe.path().constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    const int reason = errno;
    if (descriptor >= 0 && pipe.isOpenOn(descriptor))
        return true;
    const bool elsewhere = descriptor >= 0;
    close();
    // Also tells what else may be at the path.
    if (!prepare(error) || elsewhere || reason == ENXIO) // ENXIO: nobody reads
        return false;
    const QString name = QFile::decodeName(pipe.path());
    if (reason == ENOENT) {
        emit notice(QStringLiteral("%1 was gone and has been made again").arg(name));
        return false;
    }
    *error = QStringLiteral("cannot open %1: %2").arg(name, systemErrorText(reason));
    return false;
}

void PipeWriter::close()
{
    // Not deleted here: the notifier itself may be calling.
    if (readerWatch) {
        readerWatch->setEnabled(false);
        readerWatch.release()->deleteLater();
    }
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
}
