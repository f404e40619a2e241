// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/links/SerialLink.h"

#include "base/SystemHooks.h"
#include "receiver/links/DeviceTrouble.h"

#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace {

// Longer than the usual cycle of a second, so that each rate is listened to for a whole burst.
constexpr int kListenMs = 1300;
// So much without anything that is right shows a wrong rate, also where binary data lies between.
constexpr int kMostWrongBytes = 1500;
// A receiver that vanishes with a restart is back before it sends; what it sends while nobody has
// opened it is lost to a measurement.
constexpr int kLookMs = 200;
// What the receiver still sends before it starts anew has the rate of before.
constexpr int kDoubtMs = 1000;
constexpr int kHintBytes = 4096;

} // namespace

SerialLink::SerialLink(const QString &devicePath, const std::optional<int> &baud, QObject *parent)
    : ByteLink(parent)
    , device(devicePath)
    , givenBaud(baud)
{
    for (const int rate : BaudFinder::kRates)
        rates << rate;
    lookTimer.setInterval(kLookMs);
    connect(&lookTimer, &QTimer::timeout, this, &SerialLink::lookForDevice);
    doubtTimer.setSingleShot(true);
    connect(&doubtTimer, &QTimer::timeout, this, &SerialLink::beginSearch);
    rateTimer.setSingleShot(true);
    connect(&rateTimer, &QTimer::timeout, this, &SerialLink::tryNextRate);
    connect(&port, &QSerialPort::readyRead, this, &SerialLink::readAvailable);
    // Queued: the port may not be closed from within its own signal.
    connect(&port, &QSerialPort::errorOccurred, this, &SerialLink::handleError,
            Qt::QueuedConnection);
}

void SerialLink::open()
{
    close();
    port.setPortName(device);
    port.setBaudRate(givenBaud.value_or(rates.first()));
    if (!QFileInfo::exists(device)) {
        lookTimer.start();
        emit lost(QStringLiteral("there is no such device; is it plugged in?"));
        return;
    }
    if (!port.open(QIODevice::ReadWrite)) {
        const QString why = whyNotOpened();
        close();
        emit lost(why);
        return;
    }
    const QString others = DeviceTrouble::holders(device);
    if (!others.isEmpty())
        emit notice(
            QStringLiteral("%1 is also open in %2: each will miss bytes").arg(device, others));
    finder.restart();
    hinted = false;
    if (givenBaud) {
        announced = true;
        emit opened(QStringLiteral("at %1 baud").arg(*givenBaud));
    } else {
        beginSearch();
    }
}

void SerialLink::close()
{
    lookTimer.stop();
    seen = false;
    doubtTimer.stop();
    rateTimer.stop();
    searching = false;
    announced = false;
    heard.clear();
    if (port.isOpen())
        port.close();
    port.clearError();
}

QString SerialLink::whyNotOpened() const
{
    QString permission = DeviceTrouble::missingPermission(device);
    if (!permission.isEmpty())
        return permission;
    if (port.error() == QSerialPort::PermissionError) {
        const QString others = DeviceTrouble::holders(device);
        return others.isEmpty()
                   ? QStringLiteral("the device is busy; 'sudo fuser -v %1' tells who has it")
                         .arg(device)
                   : QStringLiteral("the device is busy: %1 has it").arg(others);
    }
    return port.errorString();
}

bool SerialLink::write(const QByteArray &bytes, QString *error)
{
    if (!announced || searching) {
        *error = searching ? QStringLiteral("the speed of %1 is not found yet").arg(device)
                           : QStringLiteral("%1 is not open").arg(device);
        return false;
    }
    return writeTo(port, bytes, error);
}

void SerialLink::doubtSpeed()
{
    if (!port.isOpen() || givenBaud || searching)
        return;
    doubtTimer.start(SystemHooks::waitLength(kDoubtMs));
}

void SerialLink::beginSearch()
{
    doubtTimer.stop();
    searching = true;
    rateIndex = -1;
    tryNextRate();
}

void SerialLink::tryNextRate()
{
    if (++rateIndex == rates.size()) {
        rateIndex = 0;
        if (!hinted)
            emit notice(
                QStringLiteral("%1: no speed from %2 to %3 baud gives NMEA sentences or binary "
                               "frames; trying on")
                    .arg(device)
                    .arg(*std::min_element(rates.cbegin(), rates.cend()))
                    .arg(*std::max_element(rates.cbegin(), rates.cend())));
        hinted = true;
    }
    useRate(rates[rateIndex]);
}

void SerialLink::useRate(int rate)
{
    heard.clear();
    finder.restart();
    port.setBaudRate(rate);
    // What came at the rate before is not what was sent.
    port.clear(QSerialPort::Input);
    rateTimer.start(SystemHooks::waitLength(kListenMs));
}

// The rate that was right is the first that is tried the next time.
void SerialLink::endSearch()
{
    searching = false;
    rateTimer.stop();
    hinted = false;
    rates.move(rateIndex, 0);
    rateIndex = 0;
    announced = true;
    emit opened(QStringLiteral("at %1 baud").arg(rates.first()));
    const QByteArray bytes = std::exchange(heard, {});
    emit bytesReceived(bytes);
}

void SerialLink::readAvailable()
{
    const QByteArray bytes = port.readAll();
    if (bytes.isEmpty())
        return;
    const bool right = finder.feed(bytes);
    if (searching) {
        heard += bytes;
        if (right)
            endSearch();
        else if (finder.bytesSinceRight() > kMostWrongBytes)
            tryNextRate();
        return;
    }
    emit bytesReceived(bytes);
    lookAtSpeed();
}

void SerialLink::lookAtSpeed()
{
    if (finder.bytesSinceRight() < kHintBytes || hinted || !port.isOpen())
        return;
    if (!givenBaud) {
        emit notice(
            QStringLiteral("%1: nothing readable any more; trying other speeds").arg(device));
        beginSearch();
        return;
    }
    hinted = true;
    emit notice(QStringLiteral("%1: nothing readable at %2 baud; --baud auto finds the speed")
                    .arg(device)
                    .arg(*givenBaud));
}

void SerialLink::handleError(QSerialPort::SerialPortError error)
{
    // What was queued before the port was closed or opened anew is no longer its error.
    if (error == QSerialPort::NoError || error == QSerialPort::TimeoutError ||
        error != port.error() || !port.isOpen())
        return;
    const QString reason =
        QFileInfo::exists(device) ? port.errorString() : QStringLiteral("the device is gone");
    close();
    lookTimer.start();
    emit lost(reason);
}

// Twice in a row: the system gives the device its group only after it has made it.
void SerialLink::lookForDevice()
{
    const bool seenBefore = std::exchange(seen, QFileInfo::exists(device));
    if (!seen || !seenBefore)
        return;
    lookTimer.stop();
    emit appeared();
}
