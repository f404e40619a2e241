// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QString>

/// A pseudo-terminal in place of a serial device: this end is the receiver's, the other one, at a
/// path of the test's choice, is the device that a program opens. Ends by unplug() as a USB device
/// does that is pulled out.
class Pty
{
public:
    Pty() = default;
    ~Pty();
    Q_DISABLE_COPY(Pty)

    /// Makes one and the link `path` to it. Every user may open it.
    bool plugIn(const QString &path);

    /// Takes the link away and hangs up on whoever has the device open.
    void unplug();

    /// Whether a program has the device open.
    bool isOpened() const;

    /// What the program has written since the last call.
    QByteArray read();

    /// Sends to the program; false when the device is not open or takes no more.
    bool write(const QByteArray &bytes);

    /// The speed that the program has set, bit/s; 0 when it is none of the usual ones.
    int baud() const;

private:
    int master = -1;
    QString link;
};
