// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/HostDaemon.h"

#include "base/Report.h"
#include "base/SystemHooks.h"
#include "hostd/Dialect.h"

#include <climits>
#include <utility>

namespace {

constexpr int kStatusMs = 1000;
constexpr int kCountersMs = 10000;
constexpr int kPipeCheckMs = 1000;
constexpr int kReaderPollMs = 50;
constexpr int kRetryMs = 10;
// How long a source that can wait waits for a reader that reads nothing.
constexpr qint64 kPatienceMs = 2000;

} // namespace

HostDaemon::HostDaemon(std::unique_ptr<ReceiverSource> receiverSource, DaemonOutput outputForm,
                       QObject *parent)
    : QObject(parent)
    , commands(SystemHooks::systemPath(SystemHooks::kCommandPipe))
    , output(SystemHooks::systemPath(SystemHooks::kNmeaPipe))
    , source(std::move(receiverSource))
    , form(outputForm)
    , stopHold(source->canWait() ? StopHold::Way::Pause : StopHold::Way::HoldBack)
{
    statusTimer.setInterval(kStatusMs);
    countersTimer.setInterval(kCountersMs);
    pipeTimer.setInterval(kPipeCheckMs);
    readerTimer.setInterval(kReaderPollMs);
    retryTimer.setInterval(kRetryMs);
    connectParts();
}

HostDaemon::~HostDaemon()
{
    Report::setStatus({});
    reportDropped();
}

void HostDaemon::connectParts()
{
    connect(&commands, &CommandReader::notice, this, &Report::line);
    connect(&output, &PipeWriter::notice, this, &Report::line);
    connect(source.get(), &ReceiverSource::notice, this, &Report::line);
    connect(source.get(), &ReceiverSource::detail, this, &Report::detail);
    connect(source.get(), &ReceiverSource::epochReady, this, &HostDaemon::takeEpoch);
    if (form == DaemonOutput::Raw)
        connect(source.get(), &ReceiverSource::bytesReady, this, &HostDaemon::writeRaw);
    connect(source.get(), &ReceiverSource::finished, this, &HostDaemon::finish);
    connect(&commands, &CommandReader::commandReceived, this, &HostDaemon::obey);
    connect(&commands, &CommandReader::unknownSentence, this, [](const QByteArray &sentence) {
        Report::line(QStringLiteral("unknown sentence %1").arg(QString::fromLatin1(sentence)));
    });
    connect(&commands, &CommandReader::strayBytes, this, [](qint64 count) {
        Report::line(QStringLiteral("%1 bytes on the command pipe are no sentence").arg(count));
    });
    connect(&statusTimer, &QTimer::timeout, this, &HostDaemon::showStatus);
    connect(&countersTimer, &QTimer::timeout, this, &HostDaemon::sayCounters);
    connect(&pipeTimer, &QTimer::timeout, this, &HostDaemon::lookAfterPipes);
    connect(&readerTimer, &QTimer::timeout, this, &HostDaemon::startWithReader);
    connect(&retryTimer, &QTimer::timeout, this, &HostDaemon::retryHeld);
}

bool HostDaemon::start()
{
    QString error;
    // The command pipe first: its lock tells whether the pipes are another daemon's.
    if (!source->prepare(&error) || !commands.open(&error) || !output.prepare(&error)) {
        Report::line(error);
        return false;
    }
    pipeTimer.start();
    countersTimer.start();
    if (Report::isTerminal())
        statusTimer.start();
    if (source->canWait())
        readerTimer.start();
    else
        source->start();
    return true;
}

void HostDaemon::lookAfterPipes()
{
    commands.restoreIfLost();
    output.hasReader();
}

void HostDaemon::startWithReader()
{
    if (!output.hasReader())
        return;
    readerTimer.stop();
    source->start();
}

void HostDaemon::takeEpoch(const tEpoch &epoch)
{
    status.noteEpoch(epoch);
    const bool passes = stopHold.passesEpoch();
    rawGate.setOpen(stopHold.isOpen());
    if (passes && form == DaemonOutput::Dialect)
        writeEpoch(epoch);
}

// In pieces that the pipe takes whole or not at all.
void HostDaemon::writeRaw(const QByteArray &bytes)
{
    const QByteArray passed = rawGate.passed(bytes);
    if (passed.isEmpty())
        return;
    QVector<QByteArray> pieces;
    for (int from = 0; from < passed.size(); from += PIPE_BUF)
        pieces << passed.mid(from, PIPE_BUF);
    noteResult(output.write(pieces));
}

void HostDaemon::showStatus()
{
    Report::setStatus(status.text(source->counters()));
}

void HostDaemon::sayCounters()
{
    const tSourceCounters counters = source->counters();
    Report::detail(QStringLiteral("%1 bytes, %2").arg(counters.bytes).arg(status.text(counters)));
}

void HostDaemon::writeEpoch(const tEpoch &epoch)
{
    const QVector<QByteArray> sentences = Dialect::sentences(epoch);
    const PipeWriter::Result result = output.write(sentences);
    if (shouldHold(result)) {
        heldSentences = sentences;
        heldSince.start();
        source->setHeld(true);
        retryTimer.start();
        return;
    }
    noteResult(result);
}

// Only a source that can wait waits, and not again for a reader that has just been waited for.
bool HostDaemon::shouldHold(PipeWriter::Result result)
{
    return result == PipeWriter::Result::Full && source->canWait() && !pipeFull;
}

void HostDaemon::retryHeld()
{
    const PipeWriter::Result result = output.write(heldSentences);
    if (result == PipeWriter::Result::Full && heldSince.elapsed() < kPatienceMs)
        return;
    retryTimer.stop();
    heldSentences.clear();
    noteResult(result);
    source->setHeld(false);
    if (finishHeld)
        finish(finishOk, finishText);
}

void HostDaemon::noteResult(PipeWriter::Result result)
{
    pipeFull = result == PipeWriter::Result::Full;
    // Once a reader, and the sum when it has left: one that is slow is slow all the time.
    if (pipeFull && droppedCycles++ == 0)
        Report::line(QStringLiteral("the reader is slow and the pipe is full: dropping"));
    if (result == PipeWriter::Result::NoReader)
        reportDropped();
}

void HostDaemon::reportDropped()
{
    if (droppedCycles > 0)
        Report::line(QStringLiteral("%1 cycles were dropped for a slow reader").arg(droppedCycles));
    droppedCycles = 0;
}

void HostDaemon::obey(const tReceiverCommand &command, const QByteArray &sentence)
{
    source->noteCommand(sentence);
    const tCommandAnswer given = source->obey(command);
    const tCommandAnswer answer = stopHold.take(command.kind, given, source->isMidEpoch());
    applyStop();
    status.noteCommand(QString::fromLatin1(sentence), answer.obeyed);
    Report::line(QStringLiteral("%1 %2: %3")
                     .arg(answer.obeyed ? QStringLiteral("obeyed") : QStringLiteral("not obeyed"),
                          QString::fromLatin1(sentence), answer.text));
}

// An epoch that waits for room in the pipe waits for the start as well.
void HostDaemon::applyStop()
{
    status.noteHold(stopHold.stateText());
    rawGate.setOpen(stopHold.isOpen());
    const bool waitsForRoom = !heldSentences.isEmpty();
    if (source->canWait())
        source->setHeld(stopHold.isHeld() || waitsForRoom);
    if (stopHold.isHeld()) {
        retryTimer.stop();
    } else if (waitsForRoom && !retryTimer.isActive()) {
        heldSince.start();
        retryTimer.start();
    }
}

void HostDaemon::finish(bool ok, const QString &text)
{
    if (!heldSentences.isEmpty()) {
        finishHeld = true;
        finishOk = ok;
        finishText = text;
        return;
    }
    reportDropped();
    Report::line(text);
    emit ended(ok ? 0 : 1);
}
