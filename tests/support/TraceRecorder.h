// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDebug>
#include <QMutex>
#include <QMutexLocker>
#include <QString>
#include <QStringList>

/// While it lives, keeps all messages of the program in the order in which they came. Only one at
/// a time.
class TraceRecorder
{
public:
    TraceRecorder()
        : previous(qInstallMessageHandler(&TraceRecorder::record))
    {
        current() = this;
    }

    ~TraceRecorder()
    {
        qInstallMessageHandler(previous);
        const QMutexLocker locker(&mutex);
        current() = nullptr;
    }

    TraceRecorder(const TraceRecorder &) = delete;
    TraceRecorder &operator=(const TraceRecorder &) = delete;

    /// The lines, without the quotation that the debug stream puts around a string.
    QStringList lines() const
    {
        const QMutexLocker locker(&mutex);
        return ownCopy(recorded);
    }

    /// What came with a higher severity than debug and information: no test expects any.
    QStringList warnings() const
    {
        const QMutexLocker locker(&mutex);
        return ownCopy(warned);
    }

    /// Puts a line of the test's own among the others.
    void note(const QString &line)
    {
        const QMutexLocker locker(&mutex);
        recorded.append(line);
    }

    void clear()
    {
        const QMutexLocker locker(&mutex);
        recorded.clear();
    }

private:
    /// Made while the lock is held: what Qt shares is given up without it.
    static QStringList ownCopy(QStringList lines)
    {
        lines.detach();
        return lines;
    }

    static TraceRecorder *&current()
    {
        static TraceRecorder *recorder = nullptr;
        return recorder;
    }

    static void record(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        TraceRecorder *const self = current();
        QtMessageHandler next = nullptr;
        {
            const QMutexLocker locker(&self->mutex);
            self->recorded.append(unquoted(message));
            if (type != QtDebugMsg && type != QtInfoMsg)
                self->warned.append(message);
            next = self->previous;
        }
        // Of this object nothing is touched from here on: its end waits for the lock only.
        if (next)
            next(type, context, message);
    }

    static QString unquoted(QString line)
    {
        if (line.size() < 2 || !line.startsWith(QLatin1Char('"')))
            return line;
        line = line.mid(1, line.size() - 2);
        line.replace(QStringLiteral("\\r"), QStringLiteral("\r"));
        line.replace(QStringLiteral("\\n"), QStringLiteral("\n"));
        return line;
    }

    mutable QMutex mutex;
    QStringList recorded;
    QStringList warned;
    QtMessageHandler previous;
};
