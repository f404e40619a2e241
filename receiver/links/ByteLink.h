// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QObject>
#include <QString>

/// A way over which bytes come from a receiver and commands go to it. Lives on the daemon's thread
/// and never waits; what happens comes as signals.
class ByteLink : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    /// What the user knows it by: a device, a host with its port.
    virtual QString name() const = 0;

    /// Tries once to open; opened() or lost() tells what became of it, from within open() or later.
    virtual void open() = 0;

    /// Closes without a signal. Closing twice is harmless.
    virtual void close() = 0;

    /// Sends bytes to the receiver. False with `error`, which is empty before, set when that cannot
    /// be.
    virtual bool write(const QByteArray &bytes, QString *error) = 0;

    /// The receiver may have changed the speed of its line: the link finds out, where it can.
    virtual void doubtSpeed() {}

signals:
    /// The link is there; `how` is for the report, "at 9600 baud", may be empty.
    void opened(const QString &how);
    /// The link could not be opened or is no longer there; it is closed.
    void lost(const QString &reason);
    void bytesReceived(const QByteArray &bytes);
    /// What was absent has appeared: the next try need not wait.
    void appeared();
    /// Something the user should know.
    void notice(const QString &text);

protected:
    /// The write() of a link that is up. A device or server that takes nothing must not let
    /// commands pile up.
    bool writeTo(QIODevice &device, const QByteArray &bytes, QString *error) const
    {
        constexpr qint64 kMostUnsent = 65536;
        if (device.bytesToWrite() <= kMostUnsent && device.write(bytes) == bytes.size())
            return true;
        *error = QStringLiteral("%1 takes no bytes").arg(name());
        return false;
    }
};
