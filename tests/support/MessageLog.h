// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QMutex>
#include <QMutexLocker>
#include <QString>
#include <QStringList>

#include <vector>

/// Collects what goes to the Qt message system while it lives, from any thread, instead of letting
/// it through. One at a time.
class MessageLog
{
public:
    struct Message
    {
        QtMsgType type;
        QString category;
        bool hasSource; ///< names a file, a line or a function
        QString text;
    };

    MessageLog()
    {
        current = this;
        previous = qInstallMessageHandler(&MessageLog::handle);
    }

    ~MessageLog()
    {
        qInstallMessageHandler(previous);
        current = nullptr;
    }

    MessageLog(const MessageLog &) = delete;
    MessageLog &operator=(const MessageLog &) = delete;

    std::vector<Message> messages() const
    {
        const QMutexLocker locker(&mutex);
        return list;
    }

    /// Texts of the debug messages, without the quotes that the debug stream puts around a string.
    QStringList debugLines() const
    {
        QStringList lines;
        for (const Message &message : messages()) {
            if (message.type != QtDebugMsg)
                continue;
            const bool quoted =
                message.text.startsWith(QLatin1Char('"')) && message.text.size() > 1;
            lines << (quoted ? message.text.mid(1, message.text.size() - 2) : message.text);
        }
        return lines;
    }

    /// Texts of everything worse than information.
    QStringList warnings() const
    {
        QStringList lines;
        for (const Message &message : messages()) {
            if (message.type != QtDebugMsg && message.type != QtInfoMsg)
                lines << message.text;
        }
        return lines;
    }

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &text)
    {
        const QMutexLocker locker(&current->mutex);
        current->list.push_back({type, QString::fromLatin1(context.category),
                                 context.file || context.line || context.function, text});
    }

    inline static MessageLog *current = nullptr;
    QtMessageHandler previous = nullptr;
    mutable QMutex mutex;
    // Not a QList: what it shares with a copy it may write to while the copy is just being given
    // up.
    std::vector<Message> list;
};
