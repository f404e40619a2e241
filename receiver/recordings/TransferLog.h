// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QString>

/// What passed between the daemon and a receiver, as a file: every byte that came in, every command
/// that went out, with its time.
///
/// The file begins with a line that names the format and its version, and a few more that begin
/// with `#` and tell what the file is about:
///
///     #tavrin-hostd transfer log 1
///     # serial /dev/ttyUSB0, begun 2026-03-04T05:06:07Z, part 1
///
/// Then there is one record after the other:
///
///     < 12.345678 74\n<74 bytes as they came>\n
///
/// First what it is: `<` bytes from the receiver, `>` bytes to the receiver, `!` a command of the
/// viewer as text, `=` a remark. Then seconds since recording began, by a clock that is never set,
/// with six decimals; the number of bytes; a line feed; the bytes; a line feed. So nothing is
/// escaped or changed, and a pager still shows most of it. A record that was cut off by a crash
/// can only be the last one; readers pass over it.
///
/// When a file has grown to its limit it becomes FILE.1, FILE.1 becomes FILE.2 and so on, the
/// oldest one goes, and a new one begins, its times going on. Played in order (FILE.2 FILE.1 FILE)
/// they are one recording again.
///
/// A write error ends the recording; the file keeps the whole records. One thread at a time.
class TransferLog
{
public:
    enum class Kind : char {
        FromReceiver = '<',
        ToReceiver = '>',
        Command = '!',
        Remark = '=',
    };

    static constexpr qint64 kUsualSize = 67108864; ///< 64 MiB
    static constexpr int kKeptParts = 9;           ///< older files beside the one that is written

    /// First line of every file, without its line feed.
    static const QByteArray &signature();

    /// `maxBytes` is the size at which a file is followed by another.
    explicit TransferLog(const QString &fileName, qint64 maxBytes = kUsualSize);
    ~TransferLog();
    Q_DISABLE_COPY(TransferLog)

    /// Begins the recording; `about` is a word on the source for the head. A recording that is
    /// already there becomes FILE.1 and so on; any other file, also one with the name of such a
    /// part, is left alone, which is a failure.
    bool open(const QString &about, QString *error);

    /// Adds a record with the time of now. Does nothing while not recording.
    void write(Kind kind, const QByteArray &bytes);

    /// Adds a record with a time of its own, microseconds since the recording began.
    void write(Kind kind, const QByteArray &bytes, qint64 timeUs);

    bool isRecording() const { return descriptor >= 0; }

    /// Why the recording ended early, one line; empty when it did not. Told once.
    QString takeTrouble();

private:
    bool begin(QString *error);
    bool makeRoom(QString *error) const;
    void writeWhole(const QByteArray &bytes);
    void fail(const QString &reason);
    void close();

    QString fileName;
    qint64 maxBytes;
    QString aboutSource;
    int descriptor = -1;
    qint64 size = 0; // of the open file
    int part = 0;
    QElapsedTimer clock;
    QString trouble;
};
