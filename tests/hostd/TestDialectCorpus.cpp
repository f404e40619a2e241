// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// Every epoch of every recording, through the dialect into the viewer's decoder.

#include "support/ReadSizes.h"
#include "support/Recordings.h"
#include "support/SourceOracle.h"
#include "support/ThroughDialect.h"

#include <QLoggingCategory>
#include <QtTest>

class TestDialectCorpus : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void showsEveryEpochOfARecording_data();
    void showsEveryEpochOfARecording();
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

void TestDialectCorpus::showsEveryEpochOfARecording_data()
{
    QTest::addColumn<QString>("file");
    const QStringList files = QDir(Recordings::folder()).entryList({QStringLiteral("*.log")});
    for (const QString &file : files)
        QTest::newRow(qPrintable(file)) << QDir(Recordings::folder()).filePath(file);
}

void TestDialectCorpus::showsEveryEpochOfARecording()
{
    QFETCH(QString, file);
    QFile stored(file);
    QVERIFY(stored.open(QIODevice::ReadOnly));
    const QVector<tSourceEpoch> expected = SourceOracle::read(stored.readAll());
    QVERIFY(expected.size() >= 10);

    const ReadSizes::Result result = ReadSizes::play(throughDialect(file), 4096);
    QCOMPARE(SourceOracle::faultOfDialect(expected, result.published), QString());
}

QTEST_GUILESS_MAIN(TestDialectCorpus)
#include "TestDialectCorpus.moc"
