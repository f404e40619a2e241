// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// Every epoch of every recording, through the dialect: what it writes, and what the viewer's
// decoder makes of that, against the recording itself.

#include "hostd/DialectChecker.h"
#include "support/EpochComparison.h"
#include "support/ReadSizes.h"
#include "support/RecordingReader.h"
#include "support/Recordings.h"
#include "support/ThroughDialect.h"

#include <QLoggingCategory>
#include <QtTest>

class TestDialectCorpus : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void tellsEveryEpochOfARecording_data();
    void tellsEveryEpochOfARecording();
};

void TestDialectCorpus::initTestCase()
{
    if (Recordings::folder().isEmpty())
        QSKIP(Recordings::kAbsent);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void TestDialectCorpus::cleanupTestCase()
{
    QLoggingCategory::setFilterRules(QString());
}

void TestDialectCorpus::tellsEveryEpochOfARecording_data()
{
    QTest::addColumn<QString>("file");
    const QStringList files = QDir(Recordings::folder()).entryList({QStringLiteral("*.log")});
    for (const QString &file : files)
        QTest::newRow(qPrintable(file)) << QDir(Recordings::folder()).filePath(file);
}

void TestDialectCorpus::tellsEveryEpochOfARecording()
{
    QFETCH(QString, file);
    QFile stored(file);
    QVERIFY(stored.open(QIODevice::ReadOnly));
    const QVector<tSourceEpoch> expected = RecordingReader::read(stored.readAll());
    QVERIFY(expected.size() >= 10);

    const QByteArray told = throughDialect(file);
    DialectChecker checker;
    checker.read(told);
    QCOMPARE(checker.error(), QString());
    const auto ofSentences = EpochComparison::ofCycles(expected, checker.cycles());
    QVERIFY2(ofSentences.faults.isEmpty(), qPrintable(ofSentences.faults.join('\n')));
    const auto ofViewer = EpochComparison::ofShown(expected, ReadSizes::play(told, 4096).published);
    QVERIFY2(ofViewer.faults.isEmpty(), qPrintable(ofViewer.faults.join('\n')));
}

QTEST_GUILESS_MAIN(TestDialectCorpus)
#include "TestDialectCorpus.moc"
