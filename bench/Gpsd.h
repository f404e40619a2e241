// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>

/// A gpsd of its own, fed through a pseudo terminal as through a receiver's serial line.
class Gpsd
{
public:
    Gpsd() = default;
    ~Gpsd();

    Gpsd(const Gpsd &) = delete;
    Gpsd &operator=(const Gpsd &) = delete;

    /// Starts it and waits until it takes clients.
    bool start();

    /// What its clients take for a server: "host:port".
    QString server() const;

    /// Text of the receiver; what the line cannot take at once is lost, as on a serial line.
    bool write(const QByteArray &bytes) const;

    /// Satellites in its latest list, 0 when it tells none within `timeoutMs`.
    int satellitesInView(int timeoutMs) const;

    qint64 processId() const { return daemon.processId(); }

private:
    bool openLine();

    QProcess daemon;
    quint16 port = 0;
    QByteArray lineName;
    int line = -1;
    int farEnd = -1;
};
