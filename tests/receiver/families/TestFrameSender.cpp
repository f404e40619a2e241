// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/families/FrameSender.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QtTest>

class TestFrameSender : public QObject
{
    Q_OBJECT
private slots:
    void keepsOrderAndPauses();
    void refusesTooMany();
    void forgets();
};

void TestFrameSender::keepsOrderAndPauses()
{
    FrameSender sender;
    QSignalSpy due(&sender, &FrameSender::due);
    QSignalSpy done(&sender, &FrameSender::done);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(sender.send({{"first", 150}, {"second", 0}}));
    QCOMPARE(due.size(), 1); // at once
    QVERIFY(sender.send({{"third", 0}}));
    QTRY_COMPARE(due.size(), 3);
    QVERIFY2(clock.elapsed() >= 149, qPrintable(QString::number(clock.elapsed())));
    QTRY_COMPARE(done.size(), 1);
    QByteArrayList sent;
    for (const QList<QVariant> &one : qAsConst(due))
        sent << one.first().toByteArray();
    QCOMPARE(sent, QByteArrayList({"first", "second", "third"}));
}

void TestFrameSender::refusesTooMany()
{
    FrameSender sender;
    QSignalSpy due(&sender, &FrameSender::due);
    QVERIFY(sender.send(QVector<ReceiverFamily::tFrame>(FrameSender::kMostWaiting, {"x", 0})));
    QVERIFY(!sender.send({{"y", 0}, {"z", 0}}));
    QTRY_COMPARE(due.size(), FrameSender::kMostWaiting);
    QVERIFY(sender.send({{"y", 0}}));
    QTRY_COMPARE(due.size(), FrameSender::kMostWaiting + 1);
}

void TestFrameSender::forgets()
{
    FrameSender sender;
    QSignalSpy due(&sender, &FrameSender::due);
    QSignalSpy done(&sender, &FrameSender::done);
    // As when the link is found to be gone.
    connect(&sender, &FrameSender::due, &sender, &FrameSender::clear);
    QVERIFY(sender.send({{"x", 0}, {"y", 0}}));
    QTest::qWait(50);
    QCOMPARE(due.size(), 1);
    QCOMPARE(done.size(), 0);
    QVERIFY(sender.send({{"z", 0}}));
    QCOMPARE(due.size(), 2);
}

QTEST_GUILESS_MAIN(TestFrameSender)
#include "TestFrameSender.moc"
