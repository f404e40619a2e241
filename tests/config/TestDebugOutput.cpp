// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "config/DebugOutput.h"

#include "support/MessageLog.h"
#include "support/SelfProcess.h"

#include <QLoggingCategory>
#include <QtTest>

#include <cstring>
#include <limits>
#include <thread>
#include <vector>

namespace {

constexpr auto kChildArgument = "--print-lines";

int printLines()
{
    debugPrint(2, QStringLiteral("NVM Store"), QStringLiteral("NVM Store now: $PPLMT,0"));
    debugPrint(3, QStringLiteral("Config"), QStringLiteral("not to be seen"));
    errorPrint(QStringLiteral("NVM Store"), QStringLiteral("File (/pipe): gone"));
    warningPrint(QStringLiteral("Log"), QStringLiteral("full"));
    debugPrint(1, TAG, QStringLiteral("updateSats"));
    return 0;
}

} // namespace

class TestDebugOutput : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void startsAtLevelTwoWithoutTag();
    void printsUpToTheLevel_data();
    void printsUpToTheLevel();
    void marksTheKindOfLine_data();
    void marksTheKindOfLine();
    void sendsAllAsPlainDebugMessages();
    void substitutesTagThenMessage_data();
    void substitutesTagThenMessage();
    void keepsSilentWhenTheStreamIsOff();
    void mayBeCalledFromAnyThread();
    void writesToStandardError();
};

void TestDebugOutput::cleanup()
{
    QLoggingCategory::setFilterRules(QString());
}

void TestDebugOutput::startsAtLevelTwoWithoutTag()
{
    QCOMPARE(debugLevel, 2);
    QCOMPARE(TAG, QString());
}

void TestDebugOutput::printsUpToTheLevel_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<bool>("printed");
    QTest::newRow("level 0 prints") << 0 << true;
    QTest::newRow("level 1 prints") << 1 << true;
    QTest::newRow("level 2 prints") << 2 << true;
    QTest::newRow("level 3 prints nothing") << 3 << false;
    QTest::newRow("highest prints nothing") << std::numeric_limits<int>::max() << false;
    QTest::newRow("negative prints") << -1 << true;
    QTest::newRow("lowest prints") << std::numeric_limits<int>::min() << true;
}

void TestDebugOutput::printsUpToTheLevel()
{
    QFETCH(int, level);
    QFETCH(bool, printed);
    const MessageLog log;
    debugPrint(level, QStringLiteral("Tag"), QStringLiteral("text"));
    QCOMPARE(log.lines(), printed ? QStringList(QStringLiteral("d> Tag: text")) : QStringList());
    QCOMPARE(debugEnabled(level), printed);
}

void TestDebugOutput::marksTheKindOfLine_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("tag");
    QTest::addColumn<QString>("line");
    QTest::newRow("debug") << "d"
                           << "NVM Store"
                           << "d> NVM Store: text";
    QTest::newRow("debug, no tag") << "d"
                                   << ""
                                   << "d> : text";
    QTest::newRow("error") << "E"
                           << "NVM Store"
                           << "E> NVM Store: text";
    QTest::newRow("warning") << "W"
                             << "NVM Store"
                             << "W> NVM Store: text";
}

void TestDebugOutput::marksTheKindOfLine()
{
    QFETCH(QString, kind);
    QFETCH(QString, tag);
    QFETCH(QString, line);
    const MessageLog log;
    if (kind == "d")
        debugPrint(1, tag, "text");
    else if (kind == "E")
        errorPrint(tag, "text");
    else
        warningPrint(tag, "text");
    QCOMPARE(log.lines(), QStringList(line));
}

void TestDebugOutput::sendsAllAsPlainDebugMessages()
{
    const MessageLog log;
    debugPrint(1, "a", "b");
    errorPrint("a", "b");
    warningPrint("a", "b");
    debugPrint(1, "a", "what the debug stream escapes: \"\r\n");
    debugPrint(1, "a", QString::fromUtf8("what has more than ASCII: \u00b0"));
    const std::vector<MessageLog::Message> messages = log.messages();
    QCOMPARE(messages.size(), std::size_t(5));
    for (const MessageLog::Message &message : messages) {
        QCOMPARE(message.type, QtDebugMsg);
        QCOMPARE(message.category, QString("default"));
        QVERIFY(!message.hasSource);
        QVERIFY(message.text.startsWith('"') && message.text.endsWith('"'));
    }
}

void TestDebugOutput::substitutesTagThenMessage_data()
{
    QTest::addColumn<QString>("tag");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("line");
    QTest::newRow("marker in the tag is filled") << "a%1b"
                                                 << "text"
                                                 << "d> atextb: %2";
    QTest::newRow("second marker in the tag") << "a%2b"
                                              << "text"
                                              << "d> atextb: text";
    QTest::newRow("marker in the message stays") << "tag"
                                                 << "%1 of %2"
                                                 << "d> tag: %1 of %2";
    QTest::newRow("empty message") << "tag"
                                   << ""
                                   << "d> tag: ";
}

void TestDebugOutput::substitutesTagThenMessage()
{
    QFETCH(QString, tag);
    QFETCH(QString, message);
    const MessageLog log;
    debugPrint(1, tag, message);
    QTEST(log.lines().value(0), "line");
}

void TestDebugOutput::keepsSilentWhenTheStreamIsOff()
{
    QVERIFY(debugStreamEnabled());
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    const MessageLog log;
    QVERIFY(!debugStreamEnabled());
    QVERIFY(!debugEnabled(0));
    debugPrint(0, "a", "b");
    errorPrint("a", "b");
    QVERIFY(log.messages().empty());
}

void TestDebugOutput::mayBeCalledFromAnyThread()
{
    const MessageLog log;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < 200; ++i)
                debugPrint(1, QStringLiteral("thread"), QStringLiteral("line"));
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(log.lines().size(), 800);
    QCOMPARE(log.lines().count(QStringLiteral("d> thread: line")), 800);
}

void TestDebugOutput::writesToStandardError()
{
    const ChildResult child = runSelf({kChildArgument});
    QVERIFY(child.finished);
    QCOMPARE(child.exitCode, 0);
    QCOMPARE(child.output, QByteArray());
    QCOMPARE(child.error, QByteArray("\"d> NVM Store: NVM Store now: $PPLMT,0\"\n"
                                     "\"E> NVM Store: File (/pipe): gone\"\n"
                                     "\"W> Log: full\"\n"
                                     "\"d> : updateSats\"\n"));
}

int main(int argc, char *argv[])
{
    if (argc > 1 && std::strcmp(argv[1], kChildArgument) == 0)
        return printLines();
    QCoreApplication app(argc, argv);
    TestDebugOutput test;
    return QTest::qExec(&test, argc, argv);
}
#include "TestDebugOutput.moc"
