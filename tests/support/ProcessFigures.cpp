// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/ProcessFigures.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QList>
#include <QString>

#include <unistd.h>

namespace {

QString pathOf(qint64 processId, const char *name)
{
    return QStringLiteral("/proc/%1/%2").arg(processId).arg(QLatin1String(name));
}

QByteArray contentOf(qint64 processId, const char *name)
{
    QFile file(pathOf(processId, name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

int entriesOf(qint64 processId, const char *name)
{
    return static_cast<int>(QDir(pathOf(processId, name))
                                .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
                                .size());
}

/// The number in a line like "Rss:   1234 kB".
qint64 kilobytes(const QByteArray &line)
{
    return line.mid(line.indexOf(':') + 1).simplified().split(' ').first().toLongLong();
}

} // namespace

namespace ProcessFigures {

std::optional<double> processorTime(qint64 processId)
{
    // The second field, the name in parentheses, may hold anything; these two are the 14th and
    // 15th, which makes them the 12th and 13th behind it.
    const QByteArray line = contentOf(processId, "stat");
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 13)
        return std::nullopt;
    const double ticks = fields.at(11).toDouble() + fields.at(12).toDouble();
    return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

std::optional<tMemory> memory(qint64 processId)
{
    tMemory memory;
    const QList<QByteArray> lines = contentOf(processId, "smaps_rollup").split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith("Rss:"))
            memory.residentKb = kilobytes(line);
        else if (line.startsWith("Private_Dirty:"))
            memory.privateKb = kilobytes(line);
    }
    if (memory.residentKb == 0)
        return std::nullopt;
    return memory;
}

int openFiles(qint64 processId)
{
    return entriesOf(processId, "fd");
}

int threads(qint64 processId)
{
    return entriesOf(processId, "task");
}

} // namespace ProcessFigures
