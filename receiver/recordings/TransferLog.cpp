// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/recordings/TransferLog.h"

#include "base/SystemError.h"
#include "receiver/recordings/TransferLogReader.h"

#include <QDateTime>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int kMode = 0644;

QString partName(const QString &fileName, int part)
{
    return part == 0 ? fileName : fileName + QLatin1Char('.') + QString::number(part);
}

// Whether the path names something that is not a recording, an odd file for instance, whose opening
// might never return.
bool isForeign(const QString &name)
{
    struct stat status = {};
    if (::stat(QFile::encodeName(name).constData(), &status) != 0)
        return false;
    QFile file(name);
    return !S_ISREG(status.st_mode) || !file.open(QIODevice::ReadOnly) ||
           !TransferLogReader::isLog(file.read(TransferLog::signature().size() + 1));
}

QByteArray secondsText(qint64 timeUs)
{
    constexpr qint64 kSecond = 1000000;
    return QByteArray::number(timeUs / kSecond) + '.' +
           QByteArray::number(timeUs % kSecond).rightJustified(6, '0');
}

} // namespace

const QByteArray &TransferLog::signature()
{
    static const QByteArray text = QByteArrayLiteral("#tavrin-hostd transfer log 1");
    return text;
}

TransferLog::TransferLog(const QString &name, qint64 most)
    : fileName(name)
    , maxBytes(most)
{
}

TransferLog::~TransferLog()
{
    close();
}

bool TransferLog::open(const QString &about, QString *error)
{
    // A limit on file sizes must end the recording, not the bridge.
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    aboutSource = about;
    part = 0;
    clock.start();
    return begin(error);
}

// Starts the next file.
bool TransferLog::begin(QString *error)
{
    if (!makeRoom(error))
        return false;
    descriptor = ::open(QFile::encodeName(fileName).constData(),
                        O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
    const int reason = errno;
    if (descriptor < 0) {
        *error = QStringLiteral("cannot record into %1: %2").arg(fileName, systemErrorText(reason));
        return false;
    }
    size = 0;
    ++part;
    const QString began = QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
    const QString head = QStringLiteral("\n# %1, begun %2, part %3\n")
                             .arg(aboutSource.simplified(), began)
                             .arg(part);
    writeWhole(signature() + head.toUtf8());
    if (!isRecording()) {
        // Nobody would take an empty file for a recording, the next one least of all.
        ::unlink(QFile::encodeName(fileName).constData());
        *error = takeTrouble();
        return false;
    }
    return true;
}

// Moves what bears the name out of the way. Looks at all parts before it touches one, also when
// none has to be moved yet: a recording should fail at its begin rather than at its second file.
bool TransferLog::makeRoom(QString *error) const
{
    for (int number = 0; number <= kKeptParts; ++number) {
        const QString name = partName(fileName, number);
        if (isForeign(name)) {
            *error = QStringLiteral("cannot record into %1: %2 is there already and no recording "
                                    "of tavrin-hostd")
                         .arg(fileName, name);
            return false;
        }
    }
    if (!QFile::exists(fileName))
        return true;
    for (int number = kKeptParts; number > 0; --number) {
        const QByteArray from = QFile::encodeName(partName(fileName, number - 1));
        const QByteArray to = QFile::encodeName(partName(fileName, number));
        const int reason = ::rename(from.constData(), to.constData()) == 0 ? 0 : errno;
        if (reason != 0 && reason != ENOENT) {
            *error =
                QStringLiteral("cannot record into %1: %2").arg(fileName, systemErrorText(reason));
            return false;
        }
    }
    return true;
}

void TransferLog::write(Kind kind, const QByteArray &bytes)
{
    if (isRecording())
        write(kind, bytes, clock.nsecsElapsed() / 1000);
}

void TransferLog::write(Kind kind, const QByteArray &bytes, qint64 timeUs)
{
    for (int from = 0; isRecording() && (from == 0 || from < bytes.size());
         from += TransferLogReader::kMaxRecord) {
        const QByteArray piece = bytes.mid(from, TransferLogReader::kMaxRecord);
        const QByteArray record = QByteArray(1, static_cast<char>(kind)) + ' ' +
                                  secondsText(std::max<qint64>(timeUs, 0)) + ' ' +
                                  QByteArray::number(piece.size()) + '\n' + piece + '\n';
        if (size + record.size() > maxBytes && size > 0) {
            close();
            QString error;
            if (!begin(&error)) {
                trouble = QStringLiteral("recording has ended: %1").arg(error);
                return;
            }
        }
        writeWhole(record);
    }
}

// All of it or nothing: after a failure the file ends with its last whole record.
void TransferLog::writeWhole(const QByteArray &bytes)
{
    int written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(descriptor, bytes.constData() + written,
                                      static_cast<size_t>(bytes.size() - written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            fail(systemErrorText(count < 0 ? errno : ENOSPC));
            return;
        }
        written += static_cast<int>(count);
    }
    size += written;
}

void TransferLog::fail(const QString &reason)
{
    // A reader passes over half a record too, so that this may fail as well.
    static_cast<void>(::ftruncate(descriptor, size) == 0);
    close();
    trouble = QStringLiteral("recording into %1 has ended: %2").arg(fileName, reason);
}

void TransferLog::close()
{
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
}

QString TransferLog::takeTrouble()
{
    return std::exchange(trouble, {});
}
