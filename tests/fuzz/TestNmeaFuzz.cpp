// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// The deterministic little brother of fuzz-nmea-reader: the same check on inputs that damage has
// been done to, the same in every run.

#include "fuzz/Damages.h"
#include "fuzz/NmeaSeeds.h"
#include "support/ReadSizes.h"

#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QTextCodec>
#include <QtTest>

namespace {

constexpr int kRounds = 300; ///< inputs of one kind of damage
constexpr quint32 kRandomSeed = 20260304;

} // namespace

using Damages::Damage;
using Damages::Random;

Q_DECLARE_METATYPE(Damage)

class TestNmeaFuzz : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void readsSeedsTheSameInEveryReadSize_data();
    void readsSeedsTheSameInEveryReadSize();
    void readsDamagedInputTheSameInEveryReadSize_data();
    void readsDamagedInputTheSameInEveryReadSize();
    void readsGarbageTheSameInEveryReadSize();
};

void TestNmeaFuzz::initTestCase()
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    QLoggingCategory::setFilterRules("default.debug=false");
}

void TestNmeaFuzz::cleanupTestCase()
{
    QLoggingCategory::setFilterRules(QString());
}

void TestNmeaFuzz::readsSeedsTheSameInEveryReadSize_data()
{
    QTest::addColumn<QByteArray>("bytes");
    for (const NmeaSeed &seed : nmeaSeeds())
        QTest::newRow(seed.name) << seed.bytes;
}

void TestNmeaFuzz::readsSeedsTheSameInEveryReadSize()
{
    QFETCH(QByteArray, bytes);
    QCOMPARE(ReadSizes::fault(bytes), QString());
    QVERIFY(!ReadSizes::play(bytes, 1000).published.empty());
}

void TestNmeaFuzz::readsDamagedInputTheSameInEveryReadSize_data()
{
    QTest::addColumn<Damage>("damage");
    for (const Damages::Named &entry : Damages::all())
        QTest::newRow(entry.name) << entry.damage;
}

void TestNmeaFuzz::readsDamagedInputTheSameInEveryReadSize()
{
    QFETCH(Damage, damage);
    const QVector<NmeaSeed> seeds = nmeaSeeds();
    Random random(kRandomSeed);
    for (int round = 0; round < kRounds; ++round) {
        const QByteArray bytes = damage(seeds.at(round % seeds.size()).bytes, random);
        const QString fault = ReadSizes::fault(bytes);
        QVERIFY2(fault.isEmpty(), "round " + QByteArray::number(round) + ": " + fault.toUtf8() +
                                      "\nof " + bytes.toPercentEncoding("$,*.;:-+ "));
    }
}

void TestNmeaFuzz::readsGarbageTheSameInEveryReadSize()
{
    Random random(kRandomSeed);
    for (int round = 0; round < kRounds; ++round) {
        const QByteArray bytes = Damages::anyBytes(random.bounded(3000), random);
        QVERIFY2(ReadSizes::fault(bytes).isEmpty(), QByteArray::number(round));
    }
}

QTEST_GUILESS_MAIN(TestNmeaFuzz)
#include "TestNmeaFuzz.moc"
