// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "e2e/LogFolder.h"
#include "support/NmeaPipe.h"
#include "support/NmeaSentences.h"
#include "support/Pages.h"
#include "support/Recordings.h"
#include "support/SettingsFile.h"
#include "support/ViewerProcess.h"

#include <QElapsedTimer>
#include <QtTest>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

constexpr int kLongMs = 30000;
constexpr int kReplayMs = 60000;
constexpr int kSentenceMs = 50;
const QString kBox = QStringLiteral("checkBox");

QByteArrayList linesOf(const QByteArray &text)
{
    QByteArrayList lines;
    for (int from = 0; from < text.size();) {
        const int end = text.indexOf('\n', from);
        const int next = end < 0 ? text.size() : end + 1;
        lines << text.mid(from, next - from);
        from = next;
    }
    return lines;
}

/// The sentences of a recording, each as a receiver sends it.
QByteArrayList sentencesOf(const QString &recording)
{
    QByteArrayList sentences;
    QFile file(QDir(Recordings::folder()).filePath(recording));
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : linesOf(file.readAll())) {
            if (line.startsWith('$'))
                sentences << line.trimmed() + "\r\n";
        }
    }
    return sentences;
}

/// Where a log lies in what was fed.
struct Alignment
{
    int first = -1;           ///< index of the sentence fed that the log begins with, -1: no such
    int end = 0;              ///< index after the last one
    std::vector<int> missing; ///< indices in between that the log lacks
    QByteArray fault;         ///< what of the log was never fed in that order
};

Alignment align(const QByteArrayList &logged, const QByteArrayList &fed, int from)
{
    Alignment result;
    constexpr int kSame = 20;
    for (int start = from; start + kSame <= fed.size() && logged.size() >= kSame; ++start) {
        if (std::equal(logged.begin(), logged.begin() + kSame, fed.begin() + start)) {
            result.first = start;
            break;
        }
    }
    if (result.first < 0)
        return result;
    int at = result.first;
    for (const QByteArray &line : logged) {
        while (at < fed.size() && fed[at] != line)
            result.missing.push_back(at++);
        if (at == fed.size()) {
            result.fault = line;
            return result;
        }
        ++at;
    }
    result.end = at;
    return result;
}

} // namespace

class TestLogPage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void whatIsFedIsLoggedByteForByte();
    void megabyteInASecondLeavesTheWindowResponsive();
    void faultInTheLogFolder_data();
    void faultInTheLogFolder();

private:
    void start();
    /// Feeds a sentence that no other is like, and waits until an update has shown it.
    void waitForUpdate();
    /// Ticks the box or takes the tick away, and waits until an update has seen it.
    void setRecording(bool on);
    QString shown() const
    {
        return viewer->property(Pages::kLog, "textEdit", "plainText").toString();
    }
    bool isTicked() const { return viewer->property(Pages::kLog, kBox, "checked").toBool(); }
    /// Indices of the reads that the trace shows right behind an update of the pages.
    std::vector<int> readsBehindAnUpdate() const;

    std::unique_ptr<QTemporaryDir> root;
    std::unique_ptr<LogFolder> folder;
    std::unique_ptr<ViewerProcess> viewer;
    std::unique_ptr<NmeaPipe> pipe;
    int markers = 0;
    QByteArrayList fed;
};

void TestLogPage::init()
{
    root = std::make_unique<QTemporaryDir>();
    folder = std::make_unique<LogFolder>(root->filePath("log"));
    QVERIFY(writeLogSettings(root->path()));
    fed.clear();
}

void TestLogPage::cleanup()
{
    if (QTest::currentTestFailed() && viewer)
        qInfo("%s", qPrintable(viewer->standardError().right(3000)));
    viewer.reset();
    pipe.reset();
    folder.reset();
}

void TestLogPage::start()
{
    viewer = std::make_unique<ViewerProcess>(QSize(800, 480), root->path());
    pipe = std::make_unique<NmeaPipe>(viewer->path("/tmp/agiin"));
    QVERIFY2(viewer->start(), qPrintable(viewer->errorText()));
    QVERIFY(viewer->showPage(Pages::kLogButton, Pages::kLog));
    viewer->longestAnswerMs();
}

void TestLogPage::waitForUpdate()
{
    const QByteArray marker = NmeaSentences::sentence("PTEST," + QByteArray::number(++markers));
    QVERIFY(pipe->write(marker));
    QTRY_VERIFY_WITH_TIMEOUT(shown().contains(QString::fromLatin1(marker.trimmed())), kLongMs);
}

void TestLogPage::setRecording(bool on)
{
    QVERIFY(isTicked() != on);
    QVERIFY(viewer->press(Pages::kLog, kBox));
    QTRY_COMPARE_WITH_TIMEOUT(isTicked(), on, kLongMs);
    waitForUpdate();
}

std::vector<int> TestLogPage::readsBehindAnUpdate() const
{
    std::vector<int> reads;
    int index = -1;
    bool updated = false;
    for (const QString &line : viewer->standardError().split('\n')) {
        if (line.contains(QLatin1String("updateSats")))
            updated = true;
        if (!line.startsWith(QLatin1String("\"read len ")))
            continue;
        ++index;
        if (updated)
            reads.push_back(index);
        updated = false;
    }
    return reads;
}

// One sentence is one write, and at this pace one read: what the log lacks are whole sentences.
void TestLogPage::whatIsFedIsLoggedByteForByte()
{
    if (Recordings::folder().isEmpty())
        QSKIP(Recordings::kAbsent);
    const QByteArrayList sentences = sentencesOf("signalk-gps.log");
    QVERIFY(sentences.size() > kReplayMs / kSentenceMs);
    start();
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i * kSentenceMs < kReplayMs; ++i) {
        // On and off twice: at 5 s, 25 s, 35 s and 55 s.
        if (i * kSentenceMs == 5000 || i * kSentenceMs == 25000 || i * kSentenceMs == 35000 ||
            i * kSentenceMs == 55000)
            QVERIFY(viewer->press(Pages::kLog, kBox));
        QVERIFY(pipe->write(sentences[i]));
        fed << sentences[i];
        QTest::qWait(std::max<int>(0, (i + 1) * kSentenceMs - static_cast<int>(clock.elapsed())));
    }
    QVERIFY(!isTicked());

    const QRegularExpression name("^\\d\\d-\\d\\d-\\d{4}_\\d{6}_nmea\\.log$");
    QCOMPARE(folder->names().size(), 2);
    const std::vector<int> racing = readsBehindAnUpdate();
    int from = 0;
    for (int i = 0; i < 2; ++i) {
        QVERIFY2(name.match(folder->names()[i]).hasMatch(), qPrintable(folder->names()[i]));
        const Alignment found = align(linesOf(folder->content(i)), fed, from);
        QVERIFY(found.first >= 0);
        QVERIFY2(found.fault.isEmpty(), found.fault);
        qInfo("log %d: sentences %d to %d of those fed, %d missing", i + 1, found.first,
              found.end - 1, static_cast<int>(found.missing.size()));
        // From the update after the tick to the one after the next, 20 s, give or take what a busy
        // machine is late.
        QVERIFY(std::abs((found.end - found.first) * kSentenceMs - 20000) <= 8000);
        for (const int index : found.missing)
            QVERIFY(std::find(racing.begin(), racing.end(), index) != racing.end());
        from = found.end;
    }
    QCOMPARE(viewer->standardError().count("QIODevice"), 0);
    QCOMPARE(viewer->standardError().count("QFile"), 0);
}

void TestLogPage::megabyteInASecondLeavesTheWindowResponsive()
{
    QVERIFY(folder->make());
    start();
    setRecording(true);
    const QByteArray block = NmeaSentences::epochOf31Satellites(43200);
    QElapsedTimer burst;
    burst.start();
    int fedBytes = 0;
    while (fedBytes < 1000000) {
        if (pipe->write(block))
            fedBytes += block.size();
        else
            QTest::qSleep(1);
    }
    const qint64 fedMs = burst.elapsed();
    const qint64 longestMs = viewer->longestAnswerMs(4000);
    qInfo("a megabyte in %lld ms; longest answer %lld ms", static_cast<long long>(fedMs),
          static_cast<long long>(longestMs));
    QVERIFY(longestMs < HANG_MS);
    waitForUpdate();
    QVERIFY(folder->content(0).contains(block.repeated(3)));
    QVERIFY(folder->content(0).count(block) * block.size() > 900000);
}

void TestLogPage::faultInTheLogFolder_data()
{
    QTest::addColumn<QString>("fault");
    for (const char *fault : {"absent", "unwritable", "removed while logging", "full"})
        QTest::newRow(fault) << QString::fromLatin1(fault);
}

void TestLogPage::faultInTheLogFolder()
{
    QFETCH(QString, fault);
    if (fault == "unwritable" && !(QDir().mkpath(folder->path()) && folder->forbidWriting()))
        QSKIP("this process may not mount");
    if (fault == "full" && !folder->mountSmall(64 * 1024))
        QSKIP("this process may not mount");
    if (fault == "removed while logging" || fault == "full")
        QVERIFY(folder->make());

    start();
    setRecording(true);
    if (fault == "removed while logging")
        QVERIFY(folder->remove());
    if (fault == "full")
        QVERIFY(folder->fill());
    const QByteArray before = folder->content(0);
    for (int i = 0; i < 2; ++i) {
        QVERIFY(pipe->write(NmeaSentences::epochOf31Satellites(43200 + i)));
        waitForUpdate();
    }
    QVERIFY(folder->names().size() <= 1);
    // A full disk leaves what was written, and may still have had room within a block.
    QVERIFY(fault != "full" || folder->content(0).startsWith(before));
    QCOMPARE(viewer->text(Pages::kSatellite, "label_utc"), QString("120001.000"));

    setRecording(false);
    const int old = folder->names().size();
    if (fault == "unwritable")
        QVERIFY(folder->allowWriting());
    QVERIFY(fault == "full" ? folder->empty() : folder->make());
    // The names are made of seconds.
    const QDateTime ticked = QDateTime::currentDateTime();
    QTRY_VERIFY(QDateTime::currentDateTime().toSecsSinceEpoch() > ticked.toSecsSinceEpoch());
    setRecording(true);
    const QByteArray epoch = NmeaSentences::epochOf31Satellites(43210);
    QVERIFY(pipe->write(epoch));
    QTRY_VERIFY_WITH_TIMEOUT(folder->content(old).contains(epoch), RECOVERY_MS);
    QCOMPARE(folder->names().size(), old + 1);
    QVERIFY(viewer->longestAnswerMs() < HANG_MS);
    QCOMPARE(viewer->standardError().count("QIODevice"), 0);
    QCOMPARE(viewer->standardError().count("QFile"), 0);
}

QTEST_GUILESS_MAIN(TestLogPage)
#include "TestLogPage.moc"
