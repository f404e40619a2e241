// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/links/NetAddress.h"

#include <QtTest>

class TestNetAddress : public QObject
{
    Q_OBJECT
private slots:
    void reads_data();
    void reads();
    void refuses_data();
    void refuses();
};

void TestNetAddress::reads_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("host");
    QTest::addColumn<int>("port");
    QTest::addColumn<QString>("rest");
    QTest::addColumn<QString>("shown");
    QTest::newRow("name") << "gps.local"
                          << "gps.local" << 10110 << ""
                          << "gps.local:10110";
    QTest::newRow("name and port") << "gps.local:2000"
                                   << "gps.local" << 2000 << ""
                                   << "gps.local:2000";
    QTest::newRow("IPv4") << "192.168.4.1:1"
                          << "192.168.4.1" << 1 << ""
                          << "192.168.4.1:1";
    QTest::newRow("IPv6") << "::1"
                          << "::1" << 10110 << ""
                          << "[::1]:10110";
    QTest::newRow("IPv6 in brackets") << "[::1]"
                                      << "::1" << 10110 << ""
                                      << "[::1]:10110";
    QTest::newRow("IPv6 and port") << "[fe80::1%eth0]:65535"
                                   << "fe80::1%eth0" << 65535 << ""
                                   << "[fe80::1%eth0]:65535";
    QTest::newRow("device") << "localhost:2947:/dev/ttyUSB0"
                            << "localhost" << 2947 << "/dev/ttyUSB0"
                            << "localhost:2947";
    QTest::newRow("device with colons") << "[::1]:2947:/dev/serial/by-path/pci-0000:00"
                                        << "::1" << 2947 << "/dev/serial/by-path/pci-0000:00"
                                        << "[::1]:2947";
}

void TestNetAddress::reads()
{
    QFETCH(QString, text);
    const std::optional<tNetAddress> address = parseNetAddress(text, 10110);
    QVERIFY(address);
    QTEST(address->host, "host");
    QTEST(int(address->port), "port");
    QTEST(address->rest, "rest");
    QTEST(address->text(), "shown");
}

void TestNetAddress::refuses_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"", ":2000", "host:", "host:0", "host:65536", "host:-1", "host:x",
                             "host: 1", "host:+1", "[::1", "[host]:1", "[]:1", "[::1]2000"})
        QTest::newRow(*text != '\0' ? text : "nothing") << QString::fromLatin1(text);
}

void TestNetAddress::refuses()
{
    QFETCH(QString, text);
    QVERIFY(!parseNetAddress(text, 10110));
}

QTEST_GUILESS_MAIN(TestNetAddress)
#include "TestNetAddress.moc"
