// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/sources/LiveSource.h"

#include "base/SystemHooks.h"
#include "receiver/links/GpsdLink.h"
#include "receiver/links/SerialLink.h"
#include "receiver/links/TcpLink.h"

#include <algorithm>
#include <utility>

namespace {

using ReceiverFamily::Family;
using ReceiverFamily::tFamilyCommand;
using ReceiverFamily::tFrame;

constexpr int kShortestPauseMs = 20;
constexpr int kLongestPauseMs = 300;
constexpr int kLongestCycleMs = 10000;
// Some receivers name themselves in what they send anyway.
constexpr int kListenMs = 3000;
constexpr int kAnswerMs = 400; // for each question
constexpr int kLastAnswerMs = 3000;

std::unique_ptr<ByteLink> makeLink(const tLiveSettings &settings)
{
    switch (settings.kind) {
    case tLiveSettings::Kind::Gpsd:
        return std::make_unique<GpsdLink>(settings.address);
    case tLiveSettings::Kind::Tcp:
        return std::make_unique<TcpLink>(settings.address);
    case tLiveSettings::Kind::Serial:
        break;
    }
    return std::make_unique<SerialLink>(settings.device, settings.baud);
}

} // namespace

LiveSource::LiveSource(const tLiveSettings &liveSettings, std::unique_ptr<ByteLink> link,
                       QObject *parent)
    : ReceiverSource(parent)
    , settings(liveSettings)
    , keeper(link ? std::move(link) : makeLink(liveSettings))
    , family(liveSettings.family)
{
    for (QTimer *timer : {&pauseTimer, &askTimer, &answerTimer})
        timer->setSingleShot(true);
    pauseTimer.setTimerType(Qt::PreciseTimer);
    connectParts();
}

void LiveSource::connectParts()
{
    connect(&keeper, &LinkKeeper::notice, this, &ReceiverSource::notice);
    connect(&keeper, &LinkKeeper::detail, this, &ReceiverSource::detail);
    connect(&keeper, &LinkKeeper::cameUp, this, &LiveSource::beginListening);
    connect(&keeper, &LinkKeeper::wentDown, this, &LiveSource::noteDown);
    connect(&keeper, &LinkKeeper::bytesReceived, this, &LiveSource::take);
    connect(&sender, &FrameSender::due, this, &LiveSource::send);
    connect(&sender, &FrameSender::done, this, &LiveSource::endSequence);
    connect(&pauseTimer, &QTimer::timeout, this, &LiveSource::closeEpoch);
    connect(&askTimer, &QTimer::timeout, this, &LiveSource::ask);
    connect(&answerTimer, &QTimer::timeout, this, &LiveSource::giveUpAsking);
}

bool LiveSource::prepare(QString *error)
{
    if (settings.recordFile.isEmpty())
        return true;
    log = std::make_unique<TransferLog>(settings.recordFile);
    return log->open(keeper.link().name(), error);
}

void LiveSource::start()
{
    keeper.start();
}

tSourceCounters LiveSource::counters() const
{
    tSourceCounters result = counts;
    result.brokenSentences = stream.brokenSentences();
    return result;
}

int LiveSource::pauseMs(int cycleMs)
{
    return std::clamp(cycleMs * 3 / 10, kShortestPauseMs, kLongestPauseMs);
}

void LiveSource::beginListening()
{
    if (!family || needsDetails())
        askTimer.start(SystemHooks::waitLength(kListenMs));
}

bool LiveSource::needsDetails() const
{
    const ReceiverFamily::tDetails &known = finder.details();
    return family && !detailsAsked && known.ubxProtocol == 0 &&
           known.unicore == ReceiverFamily::UnicoreKind::Unknown;
}

void LiveSource::noteDown()
{
    for (QTimer *timer : {&pauseTimer, &askTimer, &answerTimer})
        timer->stop();
    sender.clear();
    doubtSpeed = false;
    // The answer may have been lost, and what comes back may be another receiver.
    detailsAsked = false;
    const QVector<tEpoch> rest = stream.takeRest();
    for (const tEpoch &epoch : rest)
        deliver(epoch);
}

void LiveSource::take(const QByteArray &bytes)
{
    counts.bytes += bytes.size();
    record(TransferLog::Kind::FromReceiver, bytes);
    emit bytesReady(bytes);
    findFamily(bytes);
    const QVector<tEpoch> epochs = stream.feed(bytes);
    for (const tEpoch &epoch : epochs)
        deliver(epoch);
    if (stream.isOpen())
        pauseTimer.start(SystemHooks::waitLength(pauseMs(cycleMs)));
}

void LiveSource::closeEpoch()
{
    if (const std::optional<tEpoch> epoch = stream.pause())
        deliver(*epoch);
}

void LiveSource::deliver(const tEpoch &epoch)
{
    if (epoch.timeMs && lastTimeMs) {
        const int passed = *epoch.timeMs - *lastTimeMs;
        if (passed > 0 && passed <= kLongestCycleMs)
            cycleMs = passed;
    }
    if (epoch.timeMs)
        lastTimeMs = epoch.timeMs;
    emit epochReady(epoch);
}

// The receiver may name itself at any time, in the banner of a restart say.
void LiveSource::findFamily(const QByteArray &bytes)
{
    if (settings.family == Family::None)
        return;
    finder.feed(bytes);
    const std::optional<Family> found = finder.found();
    if (!settings.family && found && found != family)
        settleFamily(*found);
}

void LiveSource::settleFamily(Family found)
{
    family = found;
    detailsAsked = false;
    // The questions that are left are for others.
    if (finder.isCertain() && answerTimer.isActive()) {
        sender.clear();
        answerTimer.stop();
    }
    if (needsDetails())
        askTimer.start(SystemHooks::waitLength(kAnswerMs));
    emit notice(QStringLiteral("the receiver's family is %1, by %2")
                    .arg(ReceiverFamily::name(found), finder.evidence()));
}

void LiveSource::ask()
{
    // Behind an address there may be more than a receiver.
    if (settings.kind == tLiveSettings::Kind::Tcp && !settings.family)
        return;
    const QVector<QByteArray> questions = FamilyFinder::queries(family);
    detailsAsked = family.has_value();
    QVector<tFrame> frames;
    for (const QByteArray &question : questions)
        frames.append({question, kAnswerMs});
    if (frames.isEmpty())
        return;
    emit detail(family ? QStringLiteral("asking the receiver for its version")
                       : QStringLiteral("asking the receiver for its family"));
    sender.send(frames);
    answerTimer.start(SystemHooks::waitLength(frames.size() * kAnswerMs + kLastAnswerMs));
}

void LiveSource::giveUpAsking()
{
    if (family || unknownSaid)
        return;
    unknownSaid = true;
    emit notice(QStringLiteral("the receiver does not tell its family: no command reaches it; "
                               "--family names one"));
}

void LiveSource::noteCommand(const QByteArray &sentence)
{
    record(TransferLog::Kind::Command, sentence);
}

tCommandAnswer LiveSource::obey(const tReceiverCommand &command)
{
    if (!family)
        return {false, QStringLiteral("no family known; --family names one")};
    if (*family == Family::None)
        return {false, QStringLiteral("--family none: the receiver takes no commands")};
    if (!keeper.isUp())
        return {false, QStringLiteral("the receiver is not there")};
    const tFamilyCommand said = ReceiverFamily::encode(*family, command, finder.details());
    if (!said.supported)
        return {false, said.text};
    sendError.clear();
    if (!sender.send(said.frames))
        return {false, QStringLiteral("too many commands before this one are still being sent")};
    if (!sendError.isEmpty())
        return {false, sendError};
    doubtSpeed = doubtSpeed || said.mayChangeBaud;
    if (isReset(command.kind))
        stream.forgetSatellites();
    return {true, said.text};
}

void LiveSource::send(const QByteArray &bytes)
{
    sendError.clear();
    if (!keeper.link().write(bytes, &sendError)) {
        emit notice(QStringLiteral("not sent to the receiver: %1").arg(sendError));
        sender.clear();
        return;
    }
    record(TransferLog::Kind::ToReceiver, bytes);
    emit detail(QStringLiteral("sent %1").arg(ReceiverFamily::readable(bytes)));
}

void LiveSource::endSequence()
{
    if (std::exchange(doubtSpeed, false))
        keeper.link().doubtSpeed();
}

void LiveSource::record(TransferLog::Kind kind, const QByteArray &bytes)
{
    if (!log)
        return;
    log->write(kind, bytes);
    const QString trouble = log->takeTrouble();
    if (!trouble.isEmpty())
        emit notice(trouble);
}
