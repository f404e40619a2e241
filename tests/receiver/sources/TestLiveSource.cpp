// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/sources/LiveSource.h"

#include "base/SystemHooks.h"
#include "hostd/Dialect.h"
#include "receiver/links/BaudFinder.h"
#include "receiver/recordings/TransferLogReader.h"
#include "support/ScriptedReceiver.h"
#include "support/ShortWaits.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace {

/// A link that is open at once and keeps what is written.
class OpenLink : public ByteLink
{
public:
    QString name() const override { return QStringLiteral("link"); }
    void open() override { emit opened({}); }
    void close() override {}
    bool write(const QByteArray &bytes, QString *error) override
    {
        *error = refusal;
        if (refusal.isEmpty())
            written += bytes;
        return refusal.isEmpty();
    }

    QString refusal; ///< why it takes no bytes, empty when it does
    QByteArray written;
};

} // namespace

/// A real receiver's source, at real pseudo-terminals.
class TestLiveSource : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();
    void waitsForAPause_data();
    void waitsForAPause();
    void readsInAnyPieces_data();
    void readsInAnyPieces();
    void closesAnEpochAtThePause();
    void saysThatAnEpochHasBegun();
    void findsTheFamilyAndCommandsIt_data();
    void findsTheFamilyAndCommandsIt();
    void obeysTheOtherCommands_data();
    void obeysTheOtherCommands();
    void obeysNothingWithoutAFamily();
    void saysThatTheFamilyIsNotTold();
    void sendsOneCommandAfterTheOther();
    void findsTheSpeed_data();
    void findsTheSpeed();
    void findsTheSpeedAgainAfterAFactoryStart();
    void saysThatTheSpeedIsWrong();
    void returnsWithTheDevice();
    void returnsAfterARestartThatDropsTheLink();
    void asksAgainForDetailsThatTheLinkLost();
    void recordsEveryByteAndCommand();
    void refusesARecordingThatCannotBegin();
    void saysWhatCannotBeSent();
    void obeysNothingWhileTheReceiverIsAway();
    void forgetsTheSatellitesWithAReset_data();
    void forgetsTheSatellitesWithAReset();
    void asksOnlyWhereThereIsOnlyAReceiver_data();
    void asksOnlyWhereThereIsOnlyAReceiver();

private:
    void plugIn(const QByteArray &family, tLiveSettings settings = {});
    void listen(const tLiveSettings &settings);
    bool noticed(const QString &text) const;
    QStringList notices() const;

    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<ScriptedReceiver> receiver;
    std::unique_ptr<LiveSource> source;
    std::unique_ptr<QSignalSpy> epochs;
    std::unique_ptr<QSignalSpy> noticeSpy;
};

using Kind = tReceiverCommand::Kind;

void TestLiveSource::initTestCase()
{
    qRegisterMetaType<tEpoch>();
}

void TestLiveSource::init()
{
    folder = std::make_unique<QTemporaryDir>();
    // Long enough for the receiver to answer within a shortened wait.
    SystemHooks::setWaitLength([](int nominalMs) { return std::max(nominalMs / 10, 10); });
}

void TestLiveSource::cleanup()
{
    if (QTest::currentTestFailed())
        qInfo("%s", qPrintable(notices().join(QLatin1Char('\n'))));
    epochs.reset();
    noticeSpy.reset();
    source.reset();
    receiver.reset();
    SystemHooks::setWaitLength(nullptr);
}

// A receiver with ten epochs a second, and a source at it.
void TestLiveSource::plugIn(const QByteArray &family, tLiveSettings settings)
{
    receiver = std::make_unique<ScriptedReceiver>(ScriptedReceiver::script(family));
    receiver->setPeriodMs(100);
    settings.device = folder->filePath(QStringLiteral("ttyUSB0"));
    QVERIFY(receiver->plugIn(settings.device));
    listen(settings);
}

void TestLiveSource::listen(const tLiveSettings &settings)
{
    source = std::make_unique<LiveSource>(settings);
    epochs = std::make_unique<QSignalSpy>(source.get(), &ReceiverSource::epochReady);
    noticeSpy = std::make_unique<QSignalSpy>(source.get(), &ReceiverSource::notice);
    QString error;
    QVERIFY2(source->prepare(&error), qPrintable(error));
    source->start();
}

QStringList TestLiveSource::notices() const
{
    QStringList texts;
    for (int i = 0; noticeSpy && i < noticeSpy->size(); ++i)
        texts << noticeSpy->at(i).first().toString();
    return texts;
}

bool TestLiveSource::noticed(const QString &text) const
{
    return !notices().filter(text).isEmpty();
}

void TestLiveSource::waitsForAPause_data()
{
    QTest::addColumn<int>("cycleMs");
    QTest::addColumn<int>("pauseMs");
    QTest::newRow("1 Hz") << 1000 << 300;
    QTest::newRow("5 Hz") << 200 << 60;
    QTest::newRow("10 Hz") << 100 << 30;
    QTest::newRow("50 Hz") << 20 << 20;
    QTest::newRow("every ten seconds") << 10000 << 300;
}

void TestLiveSource::waitsForAPause()
{
    QFETCH(int, cycleMs);
    QTEST(LiveSource::pauseMs(cycleMs), "pauseMs");
}

void TestLiveSource::readsInAnyPieces_data()
{
    QTest::addColumn<int>("pieces");
    QTest::newRow("whole epochs") << 0;
    QTest::newRow("7 bytes") << 7;
    QTest::newRow("64 bytes") << 64;
    QTest::newRow("333 bytes") << 333;
}

void TestLiveSource::readsInAnyPieces()
{
    QFETCH(int, pieces);
    // Not shortened: a pause may not fall between two pieces.
    SystemHooks::setWaitLength(nullptr);
    tLiveSettings settings;
    settings.baud = 9600;
    settings.family = ReceiverFamily::Family::None;
    plugIn("ubx", settings);
    receiver->setPeriodMs(600);
    receiver->setPieces(pieces);
    QTRY_COMPARE_WITH_TIMEOUT(epochs->size(), 4, 20000);
    for (int i = 0; i < epochs->size(); ++i) {
        const auto epoch = epochs->at(i).first().value<tEpoch>();
        QVERIFY(epoch.valid);
        QCOMPARE(epoch.latitude.value_or(0), 48 * 600000 + 70381);
        QCOMPARE(epoch.longitude.value_or(0), 11 * 600000 + 310006);
        QCOMPARE(epoch.inView.size(), 5);
        QCOMPARE(epoch.used, QVector<int>({1, 2, 3, 4, 5}));
    }
    QCOMPARE(source->counters().brokenSentences, 0);
}

// Nothing else tells that the only epoch is complete.
void TestLiveSource::closesAnEpochAtThePause()
{
    tLiveSettings settings;
    settings.baud = 9600;
    settings.family = ReceiverFamily::Family::None; // its answer would be passed on as well
    plugIn("casic", settings);
    receiver->setPeriodMs(2000);
    QTRY_COMPARE(epochs->size(), 1);
    QCOMPARE(receiver->epochs(), 1);
}

void TestLiveSource::saysThatAnEpochHasBegun()
{
    tLiveSettings settings;
    settings.family = ReceiverFamily::Family::None;
    auto link = std::make_unique<OpenLink>();
    OpenLink *const opened = link.get();
    LiveSource live(settings, std::move(link));
    live.start();
    QVERIFY(!live.isMidEpoch());
    emit opened->bytesReceived(Dialect::sentence("GPRMC,120000.00,V,,,,,,,050321,,,N"));
    QVERIFY(live.isMidEpoch());
    QTRY_VERIFY(!live.isMidEpoch()); // after a pause
}

void TestLiveSource::findsTheFamilyAndCommandsIt_data()
{
    QTest::addColumn<QByteArray>("family");
    const QVector<tReceiverScript> &scripts = ScriptedReceiver::scripts();
    for (const tReceiverScript &script : scripts)
        QTest::newRow(script.family.constData()) << script.family;
}

void TestLiveSource::findsTheFamilyAndCommandsIt()
{
    QFETCH(QByteArray, family);
    const tReceiverScript &script = ScriptedReceiver::script(family);
    plugIn(family);
    QTRY_VERIFY_WITH_TIMEOUT(noticed(QStringLiteral("family is ") + QString::fromLatin1(family)),
                             20000);
    // The questions that were still to be asked, and those about details.
    QTest::qWait(700);
    const struct
    {
        Kind kind;
        const char *name;
        const QByteArray &bytes;
    } starts[] = {{Kind::HotStart, "hot", script.hot},
                  {Kind::WarmStart, "warm", script.warm},
                  {Kind::ColdStart, "cold", script.cold},
                  {Kind::FactoryStart, "factory", script.factory}};
    QStringList expected;
    for (const auto &start : starts) {
        receiver->forgetReceived();
        const tCommandAnswer answer = source->obey({start.kind, 0});
        QCOMPARE(answer.obeyed, !start.bytes.isEmpty());
        if (!answer.obeyed) {
            QVERIFY2(answer.text.contains(QStringLiteral("not supported")),
                     qPrintable(answer.text));
            continue;
        }
        expected << QString::fromLatin1(start.name);
        QTRY_COMPARE(receiver->received(), start.bytes);
        QTRY_COMPARE(receiver->restarts(), expected);
        QTRY_VERIFY(!epochs->isEmpty() && !epochs->last().first().value<tEpoch>().valid);
        QTRY_VERIFY(epochs->last().first().value<tEpoch>().valid);
    }
}

void TestLiveSource::obeysTheOtherCommands_data()
{
    QTest::addColumn<QByteArray>("family");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QByteArray>("bytes"); // none for what the family cannot do
    const auto row = [](const char *family, Kind kind, const char *name, const QByteArray &bytes) {
        QTest::addRow("%s, %s", family, name)
            << QByteArray(family) << static_cast<int>(kind) << bytes;
    };
    row("pmtk", Kind::Stop, "stop", "$PMTK161,0*28\r\n");
    row("pmtk", Kind::SelectConstellations, "GPS, GLONASS", "$PMTK353,1,1,0,0,0*2B\r\n");
    row("pair", Kind::Stop, "stop", "$PAIR003*39\r\n");
    row("pair", Kind::Start, "start", "$PAIR002*38\r\n");
    row("pair", Kind::StoreNvm, "store", "$PAIR513*3D\r\n");
    row("pqtm", Kind::Stop, "stop", "$PQTMGNSSSTOP*09\r\n");
    row("pqtm", Kind::Start, "start", "$PQTMGNSSSTART*51\r\n");
    row("pqtm", Kind::StoreNvm, "store", "$PQTMSAVEPAR*5A\r\n");
    row("ubx", Kind::Stop, "stop", QByteArray::fromHex("b5620604040000000800 1674"));
    row("ubx", Kind::Start, "start", QByteArray::fromHex("b5620604040000000900 1776"));
    row("casic", Kind::Stop, "stop", {});
    row("casic", Kind::StoreNvm, "store", "$PCAS00*01\r\n");
    row("casic", Kind::SelectConstellations, "GPS, GLONASS", "$PCAS04,5*1C\r\n");
    row("allystar", Kind::Stop, "stop", QByteArray::fromHex("f1d90640010010 5731"));
    row("allystar", Kind::Start, "start", QByteArray::fromHex("f1d90640010011 5832"));
    row("sirf", Kind::Stop, "stop", {});
    row("sirf", Kind::SelectConstellations, "GPS, GLONASS", {});
}

void TestLiveSource::obeysTheOtherCommands()
{
    QFETCH(QByteArray, family);
    QFETCH(int, kind);
    QFETCH(QByteArray, bytes);
    tLiveSettings settings;
    settings.baud = 9600;
    settings.family = ReceiverFamily::parse(QString::fromLatin1(family));
    plugIn(family, settings);
    QTRY_VERIFY(!epochs->isEmpty());
    // Past the question for details.
    QTest::qWait(500);
    receiver->forgetReceived();
    const tCommandAnswer answer = source->obey(
        {static_cast<Kind>(kind), ConstellationMask::kGps | ConstellationMask::kGlonass});
    QCOMPARE(answer.obeyed, !bytes.isEmpty());
    QVERIFY2(answer.obeyed || answer.text.startsWith(QString::fromLatin1(family)),
             qPrintable(answer.text));
    QTRY_COMPARE(receiver->received(), bytes);
}

void TestLiveSource::obeysNothingWithoutAFamily()
{
    tLiveSettings settings;
    settings.baud = 9600;
    plugIn("ubx", settings);
    QTRY_VERIFY(!epochs->isEmpty());
    const tCommandAnswer unknown = source->obey({Kind::ColdStart, 0});
    QVERIFY(!unknown.obeyed);
    QVERIFY2(unknown.text.contains(QStringLiteral("no family known")), qPrintable(unknown.text));

    settings.family = ReceiverFamily::Family::None;
    plugIn("ubx", settings);
    QTRY_VERIFY(!epochs->isEmpty());
    const tCommandAnswer none = source->obey({Kind::ColdStart, 0});
    QVERIFY(!none.obeyed);
    QVERIFY2(none.text.contains(QStringLiteral("--family none")), qPrintable(none.text));
    QTest::qWait(600);
    QCOMPARE(receiver->received(), QByteArray());
}

void TestLiveSource::saysThatTheFamilyIsNotTold()
{
    receiver = std::make_unique<ScriptedReceiver>(tReceiverScript{"dumb", "?", "", "", "", "", ""});
    tLiveSettings settings;
    settings.device = folder->filePath(QStringLiteral("ttyUSB0"));
    QVERIFY(receiver->plugIn(settings.device));
    receiver->setPeriodMs(100);
    listen(settings);
    QTRY_VERIFY_WITH_TIMEOUT(noticed(QStringLiteral("does not tell its family")), 20000);
    const QVector<QByteArray> questions = FamilyFinder::queries();
    for (const QByteArray &question : questions)
        QTRY_COMPARE(receiver->received().count(question), 1);
}

void TestLiveSource::sendsOneCommandAfterTheOther()
{
    tLiveSettings settings;
    settings.baud = 9600;
    settings.family = ReceiverFamily::Family::Pqtm;
    plugIn("pqtm", settings);
    QTRY_VERIFY(!epochs->isEmpty());
    QVERIFY(source->obey({Kind::FactoryStart, 0}).obeyed);
    QVERIFY(source->obey({Kind::HotStart, 0}).obeyed);
    QTRY_COMPARE(receiver->received(),
                 QByteArray("$PQTMRESTOREPAR*13\r\n$PQTMSRR*4B\r\n$PQTMHOT*4B\r\n"));
    int obeyed = 0;
    while (obeyed < 1000 && source->obey({Kind::FactoryStart, 0}).obeyed)
        ++obeyed;
    QVERIFY2(obeyed >= 20 && obeyed < 100, qPrintable(QString::number(obeyed)));
}

void TestLiveSource::findsTheSpeed_data()
{
    QTest::addColumn<int>("baud");
    for (const int baud : BaudFinder::kRates)
        QTest::addRow("%d", baud) << baud;
}

void TestLiveSource::findsTheSpeed()
{
    QFETCH(int, baud);
    if (baud > 460800 && sizeof VIEWER_EMULATOR > 1)
        QSKIP("the emulator hands no higher speed on to the kernel");
    receiver = std::make_unique<ScriptedReceiver>(ScriptedReceiver::script("casic"));
    receiver->setPeriodMs(40);
    receiver->setBaud(baud);
    tLiveSettings settings;
    settings.device = folder->filePath(QStringLiteral("ttyUSB0"));
    QVERIFY(receiver->plugIn(settings.device));
    listen(settings);
    QTRY_VERIFY_WITH_TIMEOUT(noticed(QStringLiteral("is open at %1 baud").arg(baud)), 20000);
    QTRY_VERIFY(!epochs->isEmpty());
    QTRY_VERIFY_WITH_TIMEOUT(noticed(QStringLiteral("family is casic")), 20000);
    QVERIFY(source->obey({Kind::ColdStart, 0}).obeyed);
    QTRY_COMPARE(receiver->restarts(), QStringList(QStringLiteral("cold")));
}

void TestLiveSource::findsTheSpeedAgainAfterAFactoryStart()
{
    receiver = std::make_unique<ScriptedReceiver>(ScriptedReceiver::script("pmtk"));
    receiver->setPeriodMs(40);
    receiver->setBaud(115200);
    receiver->setFactoryBaud(9600);
    tLiveSettings settings;
    settings.family = ReceiverFamily::Family::Pmtk;
    settings.device = folder->filePath(QStringLiteral("ttyUSB0"));
    QVERIFY(receiver->plugIn(settings.device));
    listen(settings);
    QTRY_VERIFY_WITH_TIMEOUT(noticed(QStringLiteral("at 115200 baud")), 20000);
    QTRY_VERIFY(!epochs->isEmpty());
    QVERIFY(source->obey({Kind::FactoryStart, 0}).obeyed);
    QTRY_COMPARE(receiver->restarts(), QStringList(QStringLiteral("factory")));
    QTRY_VERIFY_WITH_TIMEOUT(noticed(QStringLiteral("at 9600 baud")), 20000);
    epochs->clear();
    QTRY_VERIFY(!epochs->isEmpty());
    QVERIFY(source->obey({Kind::ColdStart, 0}).obeyed);
    QTRY_COMPARE(receiver->restarts().last(), QStringLiteral("cold"));
}

void TestLiveSource::saysThatTheSpeedIsWrong()
{
    tLiveSettings settings;
    settings.baud = 4800;
    plugIn("ubx", settings);
    receiver->setBaud(9600);
    receiver->setPeriodMs(20);
    QTRY_VERIFY_WITH_TIMEOUT(noticed(QStringLiteral("--baud auto finds the speed")), 20000);
    QCOMPARE(notices().filter(QStringLiteral("nothing readable")).size(), 1);
    QVERIFY(epochs->isEmpty());
}

void TestLiveSource::returnsWithTheDevice()
{
    tLiveSettings settings;
    settings.baud = 9600;
    settings.device = folder->filePath(QStringLiteral("ttyUSB0"));
    listen(settings); // before there is a device
    QTRY_VERIFY(noticed(QStringLiteral("there is no such device")));
    receiver = std::make_unique<ScriptedReceiver>(ScriptedReceiver::script("ubx"));
    receiver->setPeriodMs(50);
    for (int round = 1; round <= 3; ++round) {
        QTest::qWait(100); // some tries more, of which nothing is said
        QVERIFY(receiver->plugIn(settings.device));
        epochs->clear();
        QTRY_VERIFY_WITH_TIMEOUT(epochs->size() >= 3, 20000);
        receiver->unplug();
        QTRY_COMPARE(notices().filter(QStringLiteral("the device is gone")).size(), round);
    }
    QCOMPARE(notices().filter(QStringLiteral("is open at 9600 baud")).size(), 3);
    QVERIFY(notices().filter(QStringLiteral("no such device")).size() <= 4);
}

void TestLiveSource::returnsAfterARestartThatDropsTheLink()
{
    tLiveSettings settings;
    settings.family = ReceiverFamily::Family::Pqtm;
    plugIn("pqtm", settings);
    receiver->setVanishMs(250);
    QTRY_VERIFY_WITH_TIMEOUT(!epochs->isEmpty(), 20000);
    QVERIFY(source->obey({Kind::ColdStart, 0}).obeyed);
    QTRY_VERIFY(noticed(QStringLiteral("the device is gone")));
    epochs->clear();
    QTRY_VERIFY_WITH_TIMEOUT(!epochs->isEmpty(), 20000);
    QVERIFY(source->obey({Kind::HotStart, 0}).obeyed);
    QTRY_COMPARE(receiver->restarts(), QStringList({"cold", "hot"}));
}

// Without them a u-blox could not be told its constellations for as long as the daemon runs.
void TestLiveSource::asksAgainForDetailsThatTheLinkLost()
{
    tLiveSettings settings;
    settings.family = ReceiverFamily::Family::Ubx;
    auto link = std::make_unique<OpenLink>();
    OpenLink *const opened = link.get();
    LiveSource asking(settings, std::move(link));
    const QVector<QByteArray> questions = FamilyFinder::queries(settings.family);
    asking.start();
    QTRY_COMPARE(opened->written.count(questions.first()), 1);
    emit opened->lost(QStringLiteral("gone"));
    QTRY_COMPARE(opened->written.count(questions.first()), 2);
}

void TestLiveSource::recordsEveryByteAndCommand()
{
    tLiveSettings settings;
    settings.baud = 9600;
    settings.family = ReceiverFamily::Family::Casic;
    settings.recordFile = folder->filePath(QStringLiteral("drive.tlog"));
    plugIn("casic", settings);
    QTRY_VERIFY(epochs->size() >= 3);
    source->noteCommand("$PPLMG,3");
    QVERIFY(source->obey({Kind::ColdStart, 0}).obeyed);
    QTRY_COMPARE(receiver->restarts().size(), 1);
    receiver->setSilent(true);
    QTest::qWait(100);
    const QByteArray sent = receiver->sent();
    epochs.reset();
    noticeSpy.reset();
    source.reset();

    QFile file(settings.recordFile);
    QVERIFY(file.open(QIODevice::ReadOnly));
    TransferLogReader reader;
    QByteArray in;
    QByteArray out;
    QByteArray commands;
    qint64 lastUs = 0;
    const QVector<tTransferRecord> records = reader.feed(file.readAll());
    for (const tTransferRecord &record : records) {
        QVERIFY(record.timeUs >= lastUs);
        lastUs = record.timeUs;
        if (record.kind == TransferLog::Kind::FromReceiver)
            in += record.bytes;
        else if (record.kind == TransferLog::Kind::ToReceiver)
            out += record.bytes;
        else if (record.kind == TransferLog::Kind::Command)
            commands += record.bytes;
    }
    QVERIFY(!reader.isBroken());
    QCOMPARE(in, sent);
    QCOMPARE(out, QByteArray("$PCAS10,2*1E\r\n"));
    QCOMPARE(commands, QByteArray("$PPLMG,3"));
}

void TestLiveSource::refusesARecordingThatCannotBegin()
{
    tLiveSettings settings;
    settings.recordFile = folder->filePath(QStringLiteral("absent/drive.tlog"));
    LiveSource recorder(settings);
    QString error;
    QVERIFY(!recorder.prepare(&error));
    QVERIFY2(error.contains(settings.recordFile), qPrintable(error));
}

void TestLiveSource::saysWhatCannotBeSent()
{
    tLiveSettings settings;
    settings.family = ReceiverFamily::Family::Casic;
    auto link = std::make_unique<OpenLink>();
    OpenLink *const opened = link.get();
    LiveSource live(settings, std::move(link));
    QSignalSpy said(&live, &ReceiverSource::notice);
    live.start();
    opened->refusal = QStringLiteral("the speed is not found yet");
    const tCommandAnswer refused = live.obey({Kind::ColdStart, 0});
    QVERIFY(!refused.obeyed);
    QCOMPARE(refused.text, opened->refusal);
    QCOMPARE(said.last().first().toString(),
             QStringLiteral("not sent to the receiver: the speed is not found yet"));
    opened->refusal.clear();
    QVERIFY(live.obey({Kind::ColdStart, 0}).obeyed);
    QCOMPARE(opened->written, QByteArray("$PCAS10,2*1E\r\n"));
}

void TestLiveSource::obeysNothingWhileTheReceiverIsAway()
{
    tLiveSettings settings;
    settings.family = ReceiverFamily::Family::Casic;
    auto link = std::make_unique<OpenLink>();
    OpenLink *const opened = link.get();
    LiveSource live(settings, std::move(link));
    live.start();
    emit opened->lost(QStringLiteral("pulled out"));
    const tCommandAnswer answer = live.obey({Kind::ColdStart, 0});
    QVERIFY(!answer.obeyed);
    QCOMPARE(answer.text, QStringLiteral("the receiver is not there"));
    QVERIFY(opened->written.isEmpty());
}

void TestLiveSource::forgetsTheSatellitesWithAReset_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("inView"); // in a cycle with a GSA only
    QTest::newRow("hot") << static_cast<int>(Kind::HotStart) << 0;
    QTest::newRow("warm") << static_cast<int>(Kind::WarmStart) << 0;
    QTest::newRow("cold") << static_cast<int>(Kind::ColdStart) << 0;
    QTest::newRow("factory") << static_cast<int>(Kind::FactoryStart) << 0;
    QTest::newRow("no reset") << static_cast<int>(Kind::StoreNvm) << 1;
}

void TestLiveSource::forgetsTheSatellitesWithAReset()
{
    QFETCH(int, kind);
    QFETCH(int, inView);
    tLiveSettings settings;
    settings.family = ReceiverFamily::Family::Casic;
    auto link = std::make_unique<OpenLink>();
    OpenLink *const opened = link.get();
    LiveSource live(settings, std::move(link));
    QSignalSpy delivered(&live, &ReceiverSource::epochReady);
    live.start();
    emit opened->bytesReceived(Dialect::sentence("GPRMC,120000.00,A,,,,,,,050321,,,A") +
                               Dialect::sentence("GPGSV,1,1,01,05,40,100,40"));
    QTRY_COMPARE(delivered.size(), 1);
    QVERIFY(live.obey({static_cast<Kind>(kind), 0}).obeyed);
    emit opened->bytesReceived(Dialect::sentence("GPRMC,120001.00,V,,,,,,,050321,,,N") +
                               Dialect::sentence("GPGSA,A,1,,,,,,,,,,,,,,,"));
    QTRY_COMPARE(delivered.size(), 2);
    QCOMPARE(delivered.last().first().value<tEpoch>().inView.size(), inView);
}

void TestLiveSource::asksOnlyWhereThereIsOnlyAReceiver_data()
{
    using Family = ReceiverFamily::Family;
    using LinkKind = tLiveSettings::Kind;
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("family"); // -1 for none given
    QTest::addColumn<int>("questions");
    const int all = FamilyFinder::queries().size();
    QTest::newRow("serial") << static_cast<int>(LinkKind::Serial) << -1 << all;
    QTest::newRow("gpsd") << static_cast<int>(LinkKind::Gpsd) << -1 << all;
    QTest::newRow("an address, which may have other devices")
        << static_cast<int>(LinkKind::Tcp) << -1 << 0;
    QTest::newRow("an address whose receiver the user knows")
        << static_cast<int>(LinkKind::Tcp) << static_cast<int>(Family::Ubx) << 1;
    QTest::newRow("a family without details")
        << static_cast<int>(LinkKind::Serial) << static_cast<int>(Family::Casic) << 0;
}

void TestLiveSource::asksOnlyWhereThereIsOnlyAReceiver()
{
    QFETCH(int, kind);
    QFETCH(int, family);
    QFETCH(int, questions);
    const ShortWaits waits(1);
    tLiveSettings settings;
    settings.kind = static_cast<tLiveSettings::Kind>(kind);
    if (family >= 0)
        settings.family = static_cast<ReceiverFamily::Family>(family);
    auto link = std::make_unique<OpenLink>();
    OpenLink *const opened = link.get();
    LiveSource live(settings, std::move(link));
    live.start();
    const std::optional<ReceiverFamily::Family> &known = settings.family;
    QByteArray expected;
    const QVector<QByteArray> asked = FamilyFinder::queries(known);
    for (const QByteArray &question : asked)
        expected += questions > 0 ? question : QByteArray();
    QCOMPARE(questions > 0 ? asked.size() : 0, questions);
    QTRY_COMPARE(opened->written, expected);
    QTest::qWait(20); // more than all that was shortened
    QCOMPARE(opened->written, expected);
}

QTEST_GUILESS_MAIN(TestLiveSource)
#include "TestLiveSource.moc"
