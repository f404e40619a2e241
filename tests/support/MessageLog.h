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

    /// Texts of the debug messages and the test's notes, without the quotation that the debug
    /// stream puts around a string.
    QStringList lines() const
    {
        QStringList texts;
        for (const Message &message : messages()) {
            if (message.type == QtDebugMsg)
                texts << unquoted(message.text);
        }
        return texts;
    }

    /// Texts of everything worse than information.
    QStringList warnings() const
    {
        QStringList texts;
        for (const Message &message : messages()) {
            if (message.type != QtDebugMsg && message.type != QtInfoMsg)
                texts << message.text;
        }
        return texts;
    }

    /// Puts a line of the test's own among the others.
    void note(const QString &line)
    {
        const QMutexLocker locker(&mutex);
        list.push_back({QtDebugMsg, QString(), false, line});
    }

    void clear()
    {
        const QMutexLocker locker(&mutex);
        list.clear();
    }

private:
    static QString unquoted(QString text)
    {
        if (text.size() < 2 || !text.startsWith(QLatin1Char('"')))
            return text;
        text = text.mid(1, text.size() - 2);
        text.replace(QStringLiteral("\\r"), QStringLiteral("\r"));
        text.replace(QStringLiteral("\\n"), QStringLiteral("\n"));
        return text;
    }

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
