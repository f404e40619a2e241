// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/epoch/EpochStream.h"
#include "receiver/families/FamilyFinder.h"
#include "receiver/families/FrameSender.h"
#include "receiver/links/LinkKeeper.h"
#include "receiver/recordings/TransferLog.h"
#include "receiver/sources/LiveSettings.h"
#include "receiver/sources/ReceiverSource.h"

#include <QTimer>

#include <memory>
#include <optional>

/// A real receiver: its bytes become epochs, the viewer's commands go to it in the language of its
/// family. Finds the family out where it is not given, keeps the link open, records.
class LiveSource : public ReceiverSource
{
    Q_OBJECT
public:
    /// `link` leads to the receiver that the settings name; without one it is made from them.
    explicit LiveSource(const tLiveSettings &settings, std::unique_ptr<ByteLink> link = nullptr,
                        QObject *parent = nullptr);

    /// Begins the recording, if there is to be one.
    bool prepare(QString *error) override;
    void start() override;
    void noteCommand(const QByteArray &sentence) override;
    tCommandAnswer obey(const tReceiverCommand &command) override;
    tSourceCounters counters() const override;
    bool isMidEpoch() const override { return stream.isOpen(); }

    /// How long a receiver that sends every `cycleMs` has to be silent for an epoch to be complete,
    /// milliseconds: short enough that no epoch waits for the next one, long enough for what lies
    /// between two pieces of the same burst.
    static int pauseMs(int cycleMs);

private slots:
    void beginListening();
    void noteDown();
    void take(const QByteArray &bytes);
    void closeEpoch();
    void ask();
    void giveUpAsking();
    void send(const QByteArray &bytes);
    void endSequence();

private:
    void connectParts();
    void deliver(const tEpoch &epoch);
    bool needsDetails() const;
    void findFamily(const QByteArray &bytes);
    void settleFamily(ReceiverFamily::Family found);
    void record(TransferLog::Kind kind, const QByteArray &bytes);

    tLiveSettings settings;
    LinkKeeper keeper;
    FrameSender sender;
    EpochStream stream;
    FamilyFinder finder;
    std::optional<ReceiverFamily::Family> family; // nothing while unknown
    std::unique_ptr<TransferLog> log;             // nothing without a recording
    tSourceCounters counts;
    std::optional<int> lastTimeMs; // of the epoch before
    int cycleMs = 1000;
    QTimer pauseTimer;         // runs since the latest bytes
    QTimer askTimer;           // until the receiver is asked for its family
    QTimer answerTimer;        // until nothing more is expected
    bool detailsAsked = false; // what the family alone does not tell, since the link is up
    bool unknownSaid = false;
    QString sendError;       // why the latest bytes could not be sent, empty when they were
    bool doubtSpeed = false; // once what is being sent is out
};
