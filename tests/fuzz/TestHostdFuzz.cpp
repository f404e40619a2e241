// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// The deterministic little brother of the host daemon's fuzz targets: the same checks on inputs
// that damage has been done to, the same in every run.

#include "fuzz/Damages.h"
#include "fuzz/HostdChecks.h"
#include "fuzz/HostdSeeds.h"

#include <QtTest>

namespace {

using Check = QString (*)(const QByteArray &bytes);

constexpr int kRounds = 200; ///< inputs of one kind of damage
constexpr quint32 kRandomSeed = 20260305;

struct tReader
{
    const char *name;
    Check check;
    QVector<NmeaSeed> seeds;
};

QVector<tReader> readers()
{
    return {
        {"dialect", HostdChecks::dialectFault, HostdSeeds::dialect()},
        {"family", HostdChecks::familyFault, HostdSeeds::families()},
        {"transfer log", HostdChecks::transferLogFault, HostdSeeds::transferLogs()},
        {"command", HostdChecks::commandFault, HostdSeeds::commands()},
    };
}

} // namespace

Q_DECLARE_METATYPE(tReader)

class TestHostdFuzz : public QObject
{
    Q_OBJECT

private slots:
    void standsSeedsDamageAndGarbage_data();
    void standsSeedsDamageAndGarbage();
};

void TestHostdFuzz::standsSeedsDamageAndGarbage_data()
{
    QTest::addColumn<tReader>("reader");
    for (const tReader &reader : readers())
        QTest::newRow(reader.name) << reader;
}

void TestHostdFuzz::standsSeedsDamageAndGarbage()
{
    QFETCH(tReader, reader);
    const auto fault = [&reader](const QByteArray &bytes) {
        const QString found = reader.check(bytes);
        return found.isEmpty() ? QByteArray()
                               : found.toUtf8() + "\nof " + bytes.toPercentEncoding("$,*.;:-+ ");
    };
    for (const NmeaSeed &seed : qAsConst(reader.seeds))
        QVERIFY2(fault(seed.bytes).isEmpty(), seed.name);
    Damages::Random random(kRandomSeed);
    for (const Damages::Named &damage : Damages::all()) {
        for (int round = 0; round < kRounds; ++round) {
            const QByteArray found =
                fault(damage.damage(reader.seeds.at(round % reader.seeds.size()).bytes, random));
            QVERIFY2(found.isEmpty(), damage.name + (' ' + found));
        }
    }
    for (int round = 0; round < kRounds; ++round) {
        const QByteArray found = fault(Damages::anyBytes(random.bounded(3000), random));
        QVERIFY2(found.isEmpty(), found);
    }
}

QTEST_GUILESS_MAIN(TestHostdFuzz)
#include "TestHostdFuzz.moc"
