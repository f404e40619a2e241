// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/HostdProcess.h"
#include "support/NmeaSentences.h"
#include "support/Pages.h"
#include "support/ScriptedReceiver.h"
#include "support/ViewerProcess.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

constexpr int kLongMs = 60000;
constexpr int kSeveralEpochsMs = 3500;

} // namespace

/// The viewer's Start and Stop with receivers that know of neither.
class TestStop : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void pagesStandStillAndMoveAgain_data();
    void pagesStandStillAndMoveAgain();

private:
    QStringList plugIn(const QByteArray &source);
    QString state() { return viewer->text(Pages::kControl, QStringLiteral("label_state")); }
    QString utc() { return viewer->text(Pages::kSatellite, QStringLiteral("label_utc")); }
    QStringList timesDecoded() const;
    bool staysIdle();
    bool pressStop();

    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<ScriptedReceiver> receiver;
    std::unique_ptr<ViewerProcess> viewer;
    std::unique_ptr<HostdProcess> hostd;
};

void TestStop::init()
{
    folder = std::make_unique<QTemporaryDir>();
    viewer = std::make_unique<ViewerProcess>();
    hostd = std::make_unique<HostdProcess>(viewer->root());
}

void TestStop::cleanup()
{
    if (QTest::currentTestFailed())
        qInfo("%s\n%s", qPrintable(viewer->standardError().right(2000)),
              qPrintable(hostd->reports().join(QLatin1Char('\n'))));
    hostd.reset();
    viewer.reset();
    receiver.reset();
}

/// A source with an epoch a second, and how the daemon is told of it.
QStringList TestStop::plugIn(const QByteArray &source)
{
    if (source == "replay") {
        QFile file(folder->filePath(QStringLiteral("drive.log")));
        if (!file.open(QIODevice::WriteOnly))
            return {};
        for (int second = 0; second < 600; ++second)
            file.write(NmeaSentences::epochOf31Satellites(43200 + second));
        return {QStringLiteral("replay"), file.fileName()};
    }
    const QString device = folder->filePath(QStringLiteral("ttyUSB0"));
    receiver = std::make_unique<ScriptedReceiver>(ScriptedReceiver::script("casic"));
    receiver->plugIn(device);
    return {QStringLiteral("serial"),   device,
            QStringLiteral("--baud"),   QStringLiteral("9600"),
            QStringLiteral("--family"), QString::fromLatin1(source)};
}

/// The time of every fix that the viewer has decoded.
QStringList TestStop::timesDecoded() const
{
    static const QRegularExpression pattern(QStringLiteral("RMC received A ([0-9.]+)"));
    QStringList times;
    QRegularExpressionMatchIterator matches = pattern.globalMatch(viewer->standardError());
    while (matches.hasNext())
        times << matches.next().captured(1);
    return times;
}

bool TestStop::staysIdle()
{
    const auto isIdle = [this] {
        return state() == QStringLiteral("Idle");
    };
    return QTest::qWaitFor(isIdle, kSeveralEpochsMs) &&
           !QTest::qWaitFor([&isIdle] { return !isIdle(); }, kSeveralEpochsMs);
}

/// Once more where an epoch was on its way at the first press: the page then takes the receiver for
/// a running one.
bool TestStop::pressStop()
{
    constexpr int kMaxPresses = 2;
    for (int press = 1; press <= kMaxPresses; ++press) {
        const auto commanded = [this, press] {
            return hostd->commands().count(QStringLiteral("$PPLMS,1")) == press;
        };
        if (!viewer->press(Pages::kControl, QStringLiteral("pushButton_start")) ||
            !QTest::qWaitFor(commanded, kLongMs))
            return false;
        if (staysIdle())
            return true;
    }
    return false;
}

void TestStop::pagesStandStillAndMoveAgain_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::newRow("a recording") << QByteArray("replay");
    QTest::newRow("a receiver without a stop") << QByteArray("casic");
    QTest::newRow("a receiver of no known family") << QByteArray("none");
}

void TestStop::pagesStandStillAndMoveAgain()
{
    QFETCH(QByteArray, source);
    QVERIFY(hostd->start(plugIn(source)));
    QVERIFY2(viewer->start(), qPrintable(viewer->errorText()));
    QTRY_VERIFY_WITH_TIMEOUT(utc().startsWith(QStringLiteral("1200")), kLongMs);
    QVERIFY(viewer->showPage(Pages::kControlButton, Pages::kControl));
    QTRY_COMPARE_WITH_TIMEOUT(state(), QStringLiteral("Runing..."), kLongMs);

    QVERIFY2(pressStop(), qPrintable(state()));
    const QString utcBefore = utc();
    const QStringList timesBefore = timesDecoded();
    const auto moved = [&] {
        return utc() != utcBefore || state() != QStringLiteral("Idle") ||
               timesDecoded() != timesBefore;
    };
    QVERIFY2(!QTest::qWaitFor(moved, kSeveralEpochsMs), qPrintable(state()));

    QVERIFY(viewer->press(Pages::kControl, QStringLiteral("pushButton_start")));
    QTRY_COMPARE_WITH_TIMEOUT(state(), QStringLiteral("Runing..."), kLongMs);
    QTRY_VERIFY_WITH_TIMEOUT(utc().startsWith(QStringLiteral("1200")), kLongMs);
    const QString utcAfter = utc();
    QTRY_VERIFY_WITH_TIMEOUT(utc() > utcAfter, kLongMs);
    const int passed = static_cast<int>(timesDecoded().at(timesBefore.size()).toDouble() -
                                        timesBefore.constLast().toDouble());
    if (source == "replay")
        QCOMPARE(passed, 1); // on from where it stood
    else
        QVERIFY2(passed > 3, qPrintable(QString::number(passed))); // nothing of what was held back
}

QTEST_GUILESS_MAIN(TestStop)
#include "TestStop.moc"
