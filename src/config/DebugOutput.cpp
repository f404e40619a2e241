// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "config/DebugOutput.h"

#include <QDebug>
#include <QLoggingCategory>

int debugLevel = 2;
const QString TAG;

namespace {

void printLine(const QString &pattern, const QString &tag, const QString &message)
{
    // Two single arg() calls on purpose: a tag that holds a place marker is itself substituted.
    QMessageLogger(nullptr, 0, nullptr).debug() << pattern.arg(tag).arg(message);
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

void debugPrint(int level, const QString &tag, const QString &message)
{
    if (level <= debugLevel)
        printLine(QStringLiteral("d> %1: %2"), tag, message);
}

void errorPrint(const QString &tag, const QString &message)
{
    printLine(QStringLiteral("E> %1: %2"), tag, message);
}

void warningPrint(const QString &tag, const QString &message)
{
    printLine(QStringLiteral("W> %1: %2"), tag, message);
}
