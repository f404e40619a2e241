// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/links/LinkKeeper.h"

#include "support/ShortWaits.h"

#include <QSignalSpy>
#include <QtTest>

class TestLinkKeeper : public QObject
{
    Q_OBJECT
private slots:
    void growsItsPauses();
    void saysEachReasonOnce();
    void saysNothingOfAServerThatHangsUp();
    void triesAtOnceWhatAppears();
    void passesBytesOnWhileItIsUp();
};

namespace {

/// A link that does what the test says.
class TestLink : public ByteLink
{
public:
    QString name() const override { return QStringLiteral("link"); }
    void open() override
    {
        ++opens;
        if (!reason.isEmpty())
            emit lost(reason);
        else
            emit opened(QStringLiteral("at last"));
    }
    void close() override {}
    bool write(const QByteArray &bytes, QString *error) override
    {
        Q_UNUSED(bytes)
        Q_UNUSED(error)
        return true;
    }

    QString reason; ///< why it cannot be opened, empty when it can
    int opens = 0;
};

struct tKept
{
    explicit tKept(const QString &reason)
    {
        auto made = std::make_unique<TestLink>();
        link = made.get();
        link->reason = reason;
        keeper = std::make_unique<LinkKeeper>(std::move(made));
        notices = std::make_unique<QSignalSpy>(keeper.get(), &LinkKeeper::notice);
        keeper->start();
    }

    QString said(int index) const { return notices->value(index).value(0).toString(); }

    TestLink *link = nullptr;
    std::unique_ptr<LinkKeeper> keeper;
    std::unique_ptr<QSignalSpy> notices;
};

} // namespace

void TestLinkKeeper::growsItsPauses()
{
    const ShortWaits waits;
    const tKept kept(QStringLiteral("closed"));
    QTRY_VERIFY(kept.link->opens >= 9);
    const std::vector<int> nominal = ShortWaits::nominal();
    QCOMPARE(std::vector<int>(nominal.begin(), nominal.begin() + 8),
             std::vector<int>({1000, 2000, 4000, 8000, 16000, 30000, 30000, 30000}));
    QCOMPARE(LinkKeeper::pauseMs(1000000), 30000);
}

void TestLinkKeeper::saysEachReasonOnce()
{
    const ShortWaits waits;
    const tKept kept(QStringLiteral("closed"));
    QTRY_VERIFY(kept.link->opens >= 5);
    kept.link->reason = QStringLiteral("locked");
    QTRY_COMPARE(kept.notices->size(), 2);
    kept.link->opens = 0;
    QTRY_VERIFY(kept.link->opens >= 5);
    kept.link->reason.clear();
    QTRY_VERIFY(kept.keeper->isUp());
    emit kept.link->bytesReceived("x");
    kept.link->reason = QStringLiteral("closed");
    emit kept.link->lost(kept.link->reason); // an outage of its own
    kept.link->opens = 0;
    QTRY_VERIFY(kept.link->opens >= 5);
    QCOMPARE(kept.notices->size(), 4);
    QCOMPARE(kept.said(0), QStringLiteral("link: closed; trying again"));
    QCOMPARE(kept.said(1), QStringLiteral("link: locked; trying again"));
    QCOMPARE(kept.said(2), QStringLiteral("link is open at last"));
    QCOMPARE(kept.said(3), QStringLiteral("link: closed; trying again"));
}

void TestLinkKeeper::saysNothingOfAServerThatHangsUp()
{
    const ShortWaits waits;
    const tKept kept({});
    for (int i = 0; i < 20; ++i) {
        QTRY_VERIFY(kept.keeper->isUp());
        emit kept.link->lost(QStringLiteral("hung up"));
    }
    QTRY_VERIFY(kept.keeper->isUp());
    QVERIFY2(kept.notices->size() <= 3, qPrintable(QString::number(kept.notices->size())));
    const std::vector<int> nominal = ShortWaits::nominal();
    QCOMPARE(nominal.back(), 30000); // the pauses grow all the same
}

void TestLinkKeeper::triesAtOnceWhatAppears()
{
    const tKept kept(QStringLiteral("absent"));
    QCOMPARE(kept.link->opens, 1);
    kept.link->reason.clear();
    emit kept.link->appeared();
    QCOMPARE(kept.link->opens, 2);
    QVERIFY(kept.keeper->isUp());
    emit kept.link->appeared(); // an open link is left alone
    QCOMPARE(kept.link->opens, 2);
}

void TestLinkKeeper::passesBytesOnWhileItIsUp()
{
    const tKept kept({});
    QSignalSpy bytes(kept.keeper.get(), &LinkKeeper::bytesReceived);
    QSignalSpy down(kept.keeper.get(), &LinkKeeper::wentDown);
    emit kept.link->bytesReceived("x");
    QCOMPARE(bytes.size(), 1);
    emit kept.link->lost(QStringLiteral("gone"));
    QCOMPARE(down.size(), 1);
    emit kept.link->lost(QStringLiteral("gone"));
    QCOMPARE(down.size(), 1);
}

QTEST_GUILESS_MAIN(TestLinkKeeper)
#include "TestLinkKeeper.moc"
