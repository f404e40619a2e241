// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "base/SignalWatcher.h"

#include <QSignalSpy>
#include <QtTest>

#include <csignal>
#include <sys/resource.h>

class TestSignalWatcher : public QObject
{
    Q_OBJECT
private slots:
    void asksForTheEnd_data();
    void asksForTheEnd();
    void leavesAnIgnoredHangUpIgnored();
    void ignoresABrokenPipe();
    void givesTheSignalsBack();
    void saysWhyItCannotWatch();
};

namespace {

void (*handlerOf(int number))(int)
{
    struct sigaction action = {};
    ::sigaction(number, nullptr, &action);
    return action.sa_handler;
}

} // namespace

void TestSignalWatcher::asksForTheEnd_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGHUP") << SIGHUP;
}

void TestSignalWatcher::asksForTheEnd()
{
    QFETCH(int, number);
    SignalWatcher watcher;
    QString error;
    QVERIFY2(watcher.watch(&error), qPrintable(error));
    QSignalSpy ends(&watcher, &SignalWatcher::endRequested);
    std::raise(number);
    QTRY_COMPARE(ends.size(), 1);
}

void TestSignalWatcher::leavesAnIgnoredHangUpIgnored()
{
    std::signal(SIGHUP, SIG_IGN);
    {
        SignalWatcher watcher;
        QString error;
        QVERIFY(watcher.watch(&error));
        QVERIFY(handlerOf(SIGHUP) == SIG_IGN);
    }
    QVERIFY(handlerOf(SIGHUP) == SIG_IGN);
    std::signal(SIGHUP, SIG_DFL);
}

void TestSignalWatcher::ignoresABrokenPipe()
{
    SignalWatcher watcher;
    QString error;
    QVERIFY(watcher.watch(&error));
    QVERIFY(handlerOf(SIGPIPE) == SIG_IGN);
}

void TestSignalWatcher::givesTheSignalsBack()
{
    const auto before = handlerOf(SIGTERM);
    const auto beforeOfPipe = handlerOf(SIGPIPE);
    {
        SignalWatcher watcher;
        QString error;
        QVERIFY(watcher.watch(&error));
        QVERIFY(handlerOf(SIGTERM) != before);
    }
    QVERIFY(handlerOf(SIGTERM) == before);
    QVERIFY(handlerOf(SIGPIPE) == beforeOfPipe);
}

void TestSignalWatcher::saysWhyItCannotWatch()
{
    const auto before = handlerOf(SIGTERM);
    rlimit limit = {};
    QCOMPARE(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    rlimit none = limit;
    none.rlim_cur = 0; // no descriptor is to be had any more
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &none), 0);
    SignalWatcher watcher;
    QString error;
    const bool watches = watcher.watch(&error);
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    QVERIFY(!watches);
    QVERIFY2(error.contains(QStringLiteral("cannot watch for signals: ")), qPrintable(error));
    QVERIFY(handlerOf(SIGTERM) == before);
}

QTEST_GUILESS_MAIN(TestSignalWatcher)
#include "TestSignalWatcher.moc"
