// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVector>

/// One cycle of the device as an independent reader understands it.
struct tReadCycle
{
    struct tReadSatellite
    {
        QString talker;
        int elevation = 0;
        int azimuth = 0;
        int strength = 0;
    };

    QString time; ///< of RMC
    QString date; ///< of RMC
    bool valid = false;
    int quality = 0;
    QString modes; ///< of GNS; empty without one
    QString latitude;
    QString northSouth;
    QString longitude;
    QString eastWest;
    QString altitude; ///< of GGA
    QMap<int, tReadSatellite> inView;
    QList<int> used;
    QStringList pdop; ///< of each GSA
    QStringList hdop;
    QStringList vdop;
};

/// Reads what the daemon writes, knowing only how the device writes, and finds every departure.
/// Shares no code with the daemon on purpose.
class DialectChecker
{
public:
    /// Takes a stream of whole sentences.
    void read(const QByteArray &bytes);

    /// The first departure, empty when there was none.
    QString error() const { return firstError; }

    const QVector<tReadCycle> &cycles() const { return read_; }

    /// Sentences of other types, without their line ends.
    const QStringList &others() const { return others_; }

private:
    void fail(const QString &text, const QString &line);
    void readLine(const QString &line);
    void readOther(const QString &line);
    void readPosition(const QStringList &fields, int first, const QString &line);
    void readGsv(const QStringList &fields, const QString &line);
    void readGsa(const QStringList &fields, const QString &line);
    void endCycle(const QString &line);

    QString firstError;
    QVector<tReadCycle> read_;
    QStringList others_;
    tReadCycle open;
    int rank = -1; // of the latest sentence: the order within a cycle
    QString setTalker;
    int setMessages = 0;
    int setMessage = 0;
    int setTotal = 0;
    int setRead = 0;
    QStringList setsDone;
};
