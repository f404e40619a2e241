// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QString>

/// The host daemon's end of the viewer's input pipe: makes the named pipe, holds it open and writes
/// into it, whether or not the viewer has opened it yet.
class NmeaPipe
{
public:
    /// Makes the pipe and opens it.
    explicit NmeaPipe(const QString &path);
    ~NmeaPipe();

    NmeaPipe(const NmeaPipe &) = delete;
    NmeaPipe &operator=(const NmeaPipe &) = delete;

    bool isOpen() const { return descriptor >= 0; }

    /// Lets the pipe hold `bytes` bytes instead of the system's usual 65536.
    bool enlarge(int bytes) const;

    /// Writes `bytes`, at most PIPE_BUF of them, in one write. False when the pipe is full.
    bool write(const QByteArray &bytes) const;

    /// Leaves the pipe without a writer.
    void close();

    /// Takes the path away and makes a new pipe there, as a restarted daemon does, while the old
    /// one loses its writer.
    void replace();

private:
    void make();

    QByteArray path;
    int descriptor = -1;
};
