// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "hostd/NamedPipe.h"

#include <QObject>
#include <QVector>

#include <memory>

class QSocketNotifier;

/// Writes cycles of sentences into the pipe that the viewer reads. Never waits: without a reader
/// the cycle is gone, in front of a full pipe nothing of a sentence is written that cannot be
/// written whole. The pipe is let go as soon as its last reader leaves, so that nothing old is kept
/// for the next one. Lives on the thread that made it.
class PipeWriter : public QObject
{
    Q_OBJECT
public:
    enum class Result {
        Written,
        NoReader,
        Full, ///< the pipe had no room; what was not written was dropped
    };

    explicit PipeWriter(const QByteArray &path, QObject *parent = nullptr);
    ~PipeWriter() override;

    /// Makes the pipe where it is absent. False with `error` set on failure.
    bool prepare(QString *error);

    /// Whether somebody has the pipe open for reading. Also opens it for a reader that has come,
    /// and makes it again where it has vanished: to be asked now and then while nothing is written.
    bool hasReader();

    /// Writes sentences, each with its line end. Those of one cycle go in together or not at all
    /// as long as they fit into what the system writes in one piece (4096 bytes).
    Result write(const QVector<QByteArray> &sentences);

signals:
    /// Something the user should know: reader came, left, is slow, and, once, why the pipe cannot
    /// be written to.
    void notice(const QString &text);

private slots:
    void closeWithoutReader();

private:
    bool open();
    bool openPipe(QString *error);
    void close();

    NamedPipe pipe;
    QString trouble; // why the pipe cannot be opened, as it was noticed
    int descriptor = -1;
    std::unique_ptr<QSocketNotifier> readerWatch;
};
