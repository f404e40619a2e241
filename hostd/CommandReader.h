// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "base/ReceiverCommand.h"
#include "hostd/NamedPipe.h"
#include "receiver/nmea/SentenceCutter.h"

#include <QObject>

#include <memory>

class QSocketNotifier;

/// Reads the viewer's command pipe without ever waiting, cuts the sentences and says which command
/// each one is. It holds the pipe open for reading and writing, so that a writer never has to wait
/// and a leaving writer is no end of file. The pipe also carries the lock that keeps a second
/// daemon off. Lives on the thread that made it.
class CommandReader : public QObject
{
    Q_OBJECT
public:
    explicit CommandReader(const QByteArray &path, QObject *parent = nullptr);
    ~CommandReader() override;

    /// Makes the pipe where it is absent, opens and locks it. False with `error` set on failure.
    bool open(QString *error);

    /// Makes and opens the pipe anew when its path has come to name something else. Called now and
    /// then by the owner; where it fails, the reason is noticed once.
    void restoreIfLost();

signals:
    /// A sentence that is a command; `sentence` is its text for the report.
    void commandReceived(const tReceiverCommand &command, const QByteArray &sentence);
    /// A sentence that is none, or one that was cut off before its line end.
    void unknownSentence(const QByteArray &sentence);
    /// Bytes that belong to no sentence.
    void strayBytes(qint64 count);
    /// Something the user should know.
    void notice(const QString &text);

private slots:
    void readAvailable();

private:
    void handle(const tCutSentence &sentence);
    void close();

    NamedPipe pipe;
    SentenceCutter cutter;
    int descriptor = -1;
    std::unique_ptr<QSocketNotifier> notifier;
    QString trouble; // why the lost pipe cannot be restored, as it was noticed
};
