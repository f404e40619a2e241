// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/StatusLine.h"

#include <QtTest>

class TestStatusLine : public QObject
{
    Q_OBJECT
private slots:
    void saysEverything();
    void keepsWhatAnEpochDoesNotTell();
    void takesTheCountOfSatellitesWithoutTheirNumbers();
    void beginsWithWhatKeepsTheEpochsBack();
    void namesTheFix_data();
    void namesTheFix();
};

namespace {

tEpoch epochWithFix()
{
    tEpoch epoch;
    epoch.valid = true;
    epoch.quality = 1;
    epoch.activeKnown = true;
    epoch.fixMode = 3;
    epoch.used = {1, 2, 3, 4};
    epoch.inView.resize(9);
    return epoch;
}

} // namespace

void TestStatusLine::saysEverything()
{
    StatusLine line;
    QVERIFY(line.text({}).endsWith(
        QStringLiteral("Hz, 0 epochs, 0 checksum errors, 0/0 satellites, no fix")));
    line.noteEpoch(epochWithFix());
    line.noteCommand(QStringLiteral("$PPLMG,3"), true);
    const QString text = line.text({1234, 5});
    QVERIFY2(text.endsWith(QStringLiteral("Hz, 1 epochs, 5 checksum errors, 4/9 satellites, 3D "
                                          "fix, last $PPLMG,3")),
             qPrintable(text));
    line.noteCommand(QStringLiteral("$PPLMS,1"), false);
    QVERIFY(line.text({}).endsWith(QStringLiteral("last $PPLMS,1 (not obeyed)")));
}

void TestStatusLine::keepsWhatAnEpochDoesNotTell()
{
    StatusLine line;
    line.noteEpoch(epochWithFix());
    tEpoch next = epochWithFix();
    next.inView.clear(); // satellites are listed every fifth time
    line.noteEpoch(next);
    tEpoch beside; // sentences beside the epochs
    beside.withoutFix = true;
    line.noteEpoch(beside);
    QVERIFY2(line.text({}).contains(QStringLiteral("2 epochs")), qPrintable(line.text({})));
    QVERIFY2(line.text({}).contains(QStringLiteral("4/9 satellites, 3D fix")),
             qPrintable(line.text({})));
}

void TestStatusLine::takesTheCountOfSatellitesWithoutTheirNumbers()
{
    StatusLine line;
    tEpoch epoch;
    epoch.satellitesInUse = 7;
    line.noteEpoch(epoch);
    QVERIFY2(line.text({}).contains(QStringLiteral("7/0 satellites")), qPrintable(line.text({})));
}

// First, so that a narrow terminal shows it.
void TestStatusLine::beginsWithWhatKeepsTheEpochsBack()
{
    StatusLine line;
    line.noteHold(QStringLiteral("paused until a start"));
    QVERIFY2(line.text({}).startsWith(QStringLiteral("paused until a start, 0.0 Hz, ")),
             qPrintable(line.text({})));
    line.noteHold({});
    QVERIFY2(line.text({}).startsWith(QStringLiteral("0.0 Hz, ")), qPrintable(line.text({})));
}

void TestStatusLine::namesTheFix_data()
{
    QTest::addColumn<bool>("valid");
    QTest::addColumn<int>("fixMode");
    QTest::addColumn<int>("quality");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << false << 1 << 0 << "no fix";
    QTest::newRow("none, but flat") << false << 2 << 1 << "no fix";
    QTest::newRow("flat") << true << 2 << 1 << "2D fix";
    QTest::newRow("in space") << true << 3 << 1 << "3D fix";
    QTest::newRow("differential") << true << 3 << 2 << "3D fix (differential)";
    QTest::newRow("RTK") << true << 3 << 4 << "3D fix (RTK)";
    QTest::newRow("RTK float") << true << 3 << 5 << "3D fix (RTK float)";
    QTest::newRow("estimated") << true << 3 << 6 << "3D fix (estimated)";
    QTest::newRow("shape unknown") << true << 1 << 1 << "fix";
}

void TestStatusLine::namesTheFix()
{
    QFETCH(bool, valid);
    QFETCH(int, fixMode);
    QFETCH(int, quality);
    tEpoch epoch;
    epoch.valid = valid;
    epoch.activeKnown = true;
    epoch.fixMode = fixMode;
    epoch.quality = quality;
    QTEST(StatusLine::fixText(epoch), "text");
}

QTEST_GUILESS_MAIN(TestStatusLine)
#include "TestStatusLine.moc"
