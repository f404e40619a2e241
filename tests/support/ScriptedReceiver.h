// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Pty.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

/// What a receiver of a family says and how it is told to start anew, byte by byte.
struct tReceiverScript
{
    QByteArray family;   ///< as --family names it
    QByteArray question; ///< for its version
    QByteArray answer;
    QByteArray hot;
    QByteArray warm; ///< the restarts; empty for what the family cannot do
    QByteArray cold;
    QByteArray factory;
};

/// A receiver of some family at a pseudo-terminal: sends an epoch of sentences every so often,
/// answers the question for its version, keeps everything it is told, and loses its fix when it is
/// told to start anew. Needs the test's event loop.
class ScriptedReceiver : public QObject
{
    Q_OBJECT
public:
    explicit ScriptedReceiver(const tReceiverScript &script, QObject *parent = nullptr);

    /// The scripts of all families.
    static const QVector<tReceiverScript> &scripts();
    static const tReceiverScript &script(const QByteArray &family);

    /// Appears at `path`, or disappears.
    bool plugIn(const QString &path);
    void unplug();

    /// Time between two epochs; 1000 ms at first.
    void setPeriodMs(int ms) { epochTimer.setInterval(ms); }
    /// Sends in pieces of so many bytes, each in a turn of its own; 0 for whole epochs.
    void setPieces(int bytes) { pieceSize = bytes; }
    /// Speed of its line: at any other one it is not understood and understands nothing; 0 for any.
    void setBaud(int bitsPerSecond) { baud = bitsPerSecond; }
    /// Speed to which a factory start brings it; 0 for none.
    void setFactoryBaud(int bitsPerSecond) { factoryBaud = bitsPerSecond; }
    /// Epochs without a fix after a start, the one with the first fix not counted.
    void setEpochsToFix(int epochs) { epochsToFix = epochs; }
    /// Whether it vanishes for so many milliseconds when it starts anew; 0 for no.
    void setVanishMs(int ms) { vanishMs = ms; }
    void setSilent(bool quiet) { silent = quiet; }

    /// Everything it was told, questions for its version included.
    const QByteArray &received() const { return told; }
    void forgetReceived() { told.clear(); }
    /// Restarts so far: "hot", "warm", "cold" or "factory".
    const QStringList &restarts() const { return starts; }
    /// Everything it has sent.
    const QByteArray &sent() const { return allSent; }
    int epochs() const { return epochCount; }

private slots:
    void sendEpoch();
    void look();

private:
    void send(const QByteArray &bytes);
    bool obeyFirst();
    void restart(const QString &kind);
    QByteArray epochText() const;

    tReceiverScript lines;
    Pty pty;
    QString path;
    QTimer epochTimer;
    QTimer lookTimer;
    QByteArray toSend; // in pieces
    QByteArray told;
    QByteArray recent; // of what it was told, until it is understood
    QByteArray allSent;
    QStringList starts;
    int pieceSize = 0;
    int baud = 0;
    int factoryBaud = 0;
    int epochsToFix = 3;
    int vanishMs = 0;
    bool silent = false;
    bool opened = false; ///< at the latest epoch
    int epochCount = 0;
    int epochsSinceStart = 1000; // it has had its fix for long
};
