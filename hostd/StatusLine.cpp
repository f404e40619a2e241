// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/StatusLine.h"

namespace {

// Long enough to show the rate of a receiver that reports every other second.
constexpr int kMostSamples = 6;

} // namespace

StatusLine::StatusLine()
    : fix(QStringLiteral("no fix"))
{
    clock.start();
}

void StatusLine::noteEpoch(const tEpoch &epoch)
{
    if (!epoch.withoutFix) {
        ++epochs;
        fix = fixText(epoch);
    }
    if (epoch.activeKnown)
        used = epoch.used.size();
    else if (epoch.satellitesInUse)
        used = *epoch.satellitesInUse;
    // Many receivers list the satellites only now and then.
    if (!epoch.inView.isEmpty())
        inView = epoch.inView.size();
}

void StatusLine::noteCommand(const QString &sentence, bool obeyed)
{
    lastCommand = obeyed ? sentence : sentence + QStringLiteral(" (not obeyed)");
}

QString StatusLine::text(const tSourceCounters &counters)
{
    QString line = QStringLiteral("%1 Hz, %2 epochs, %3 checksum errors, %4/%5 satellites, %6")
                       .arg(rateHz(), 0, 'f', 1)
                       .arg(epochs)
                       .arg(counters.brokenSentences)
                       .arg(used)
                       .arg(inView)
                       .arg(fix);
    if (!lastCommand.isEmpty())
        line += QStringLiteral(", last %1").arg(lastCommand);
    return hold.isEmpty() ? line : QStringLiteral("%1, %2").arg(hold, line);
}

QString StatusLine::fixText(const tEpoch &epoch)
{
    if (!epoch.valid)
        return QStringLiteral("no fix");
    QString shape = epoch.activeKnown && epoch.fixMode > 1
                        ? QStringLiteral("%1D fix").arg(epoch.fixMode)
                        : QStringLiteral("fix");
    switch (epoch.quality) {
    case 2:
        return shape + QStringLiteral(" (differential)");
    case 4:
        return shape + QStringLiteral(" (RTK)");
    case 5:
        return shape + QStringLiteral(" (RTK float)");
    case 6:
        return shape + QStringLiteral(" (estimated)");
    default:
        return shape;
    }
}

double StatusLine::rateHz()
{
    samples.enqueue({clock.elapsed(), epochs});
    if (samples.size() > kMostSamples)
        samples.dequeue();
    const qint64 passedMs = samples.last().atMs - samples.first().atMs;
    const qint64 passedEpochs = samples.last().epochs - samples.first().epochs;
    return passedMs > 0 ? 1000.0 * static_cast<double>(passedEpochs) / static_cast<double>(passedMs)
                        : 0.0;
}
