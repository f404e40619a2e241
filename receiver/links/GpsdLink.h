// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/links/ByteLink.h"
#include "receiver/links/TcpLink.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTimer>

/// A receiver that a gpsd has. gpsd passes the sentences of an NMEA receiver on as they are and
/// writes some itself for a receiver that sends binary data. Commands go through gpsd to the
/// receiver; a gpsd that was told only to read (its option -b) drops them without a word.
class GpsdLink : public ByteLink
{
    Q_OBJECT
public:
    /// The address' `rest` is the path of gpsd's device, empty for any that it has.
    explicit GpsdLink(const tNetAddress &address, QObject *parent = nullptr);

    QString name() const override;
    void open() override;
    void close() override;
    bool write(const QByteArray &bytes, QString *error) override;

private slots:
    void watch();
    void take(const QByteArray &bytes);

private:
    void takeLine(const QByteArray &line);
    void takeAnswer(const QJsonObject &answer);
    void takeDevices(const QJsonArray &devices);
    void takeDevice(const QJsonObject &device);
    void giveUp(const QString &reason);

    tNetAddress address;
    TcpLink link;
    QTimer answerTimer;
    QByteArray pending;      // a line that is not whole yet
    bool greeted = false;    // the other side is a gpsd
    bool recognised = false; // gpsd knows what the receiver is: it takes no commands for it before
    QString device;          // the receiver's path, empty while gpsd has none
    bool absentSaid = false; // that gpsd has no receiver
};
