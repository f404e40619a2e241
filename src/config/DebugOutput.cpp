// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "config/DebugOutput.h"

#include <QDebug>
#include <QLoggingCategory>
#include <QStringBuilder>

#include <algorithm>
#include <cstdio>

int debugLevel = 2;
const QString TAG;

namespace {

bool needsNoEscape(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) {
        return c >= QLatin1Char(' ') && c <= QLatin1Char('~') && c != QLatin1Char('"') &&
               c != QLatin1Char('\\');
    });
}

void printLine(QLatin1String kind, const QString &tag, const QString &message)
{
    if (tag.contains(QLatin1Char('%'))) {
        // Two single arg() calls on purpose: a tag that holds a place marker is itself substituted.
        const QString line = kind % QLatin1String("> %1: %2");
        debugMessage(line.arg(tag).arg(message)); // clazy:exclude=qstring-arg
        return;
    }
    debugMessage(kind % QLatin1String("> ") % tag % QLatin1String(": ") % message);
}

} // namespace

bool debugStreamEnabled()
{
    return QLoggingCategory::defaultCategory()->isDebugEnabled();
}

bool debugEnabled(int level)
{
    return level <= debugLevel && debugStreamEnabled();
}

void debugMessage(const QString &message)
{
    if (!needsNoEscape(message)) {
        QMessageLogger(nullptr, 0, nullptr).debug() << message;
        return;
    }
    // Nearly every message comes here: the same line for half the time of a debug stream.
    qt_message_output(QtDebugMsg, QMessageLogContext(nullptr, 0, nullptr, "default"),
                      QLatin1Char('"') % message % QLatin1Char('"'));
}

void debugPrint(int level, const QString &tag, const QString &message)
{
    // A silenced line is not even built.
    if (debugEnabled(level))
        printLine(QLatin1String("d"), tag, message);
}

void consolePrint(const char *text)
{
    // Whoever reads the output through a pipe must not wait for a full buffer.
    static_cast<void>(std::fputs(text, stdout));
    static_cast<void>(std::fflush(stdout));
}

void errorPrint(const QString &tag, const QString &message)
{
    printLine(QLatin1String("E"), tag, message);
}

void warningPrint(const QString &tag, const QString &message)
{
    printLine(QLatin1String("W"), tag, message);
}
