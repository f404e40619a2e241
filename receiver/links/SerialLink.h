// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/links/BaudFinder.h"
#include "receiver/links/ByteLink.h"

#include <QSerialPort>
#include <QTimer>

#include <optional>

/// A receiver at a serial line: 8 data bits, no parity, one stop bit, no flow control. Finds the
/// line's speed by trying where it is not given.
class SerialLink : public ByteLink
{
    Q_OBJECT
public:
    /// `device`: its path. `baud`: bit/s, nothing to find it by trying.
    SerialLink(const QString &device, const std::optional<int> &baud, QObject *parent = nullptr);

    QString name() const override { return device; }
    void open() override;
    void close() override;
    bool write(const QByteArray &bytes, QString *error) override;
    void doubtSpeed() override;

private slots:
    void readAvailable();
    void handleError(QSerialPort::SerialPortError error);
    void beginSearch();
    void tryNextRate();
    void lookForDevice();

private:
    QString whyNotOpened() const;
    void endSearch();
    void useRate(int rate);
    void lookAtSpeed();

    QString device;
    std::optional<int> givenBaud;
    QSerialPort port;
    BaudFinder finder;
    QTimer lookTimer;       // for the device while it is absent
    bool seen = false;      // at the look before
    QTimer doubtTimer;      // until the rate is looked for again
    QTimer rateTimer;       // how long a rate is listened to
    bool searching = false; // for the rate
    bool announced = false; // opened() was emitted
    bool hinted = false;    // that the rate seems to be wrong
    QList<int> rates;       // in the order in which they are tried
    int rateIndex = 0;
    QByteArray heard; // at the rate that is being tried
};
