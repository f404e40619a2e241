// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/links/GpsdLink.h"

#include "base/SystemHooks.h"

#include <QJsonDocument>

namespace {

constexpr int kAnswerMs = 10000;
// gpsd's answers are shorter; anything longer is no line of its.
constexpr int kMostPending = 65536;

QByteArray request(const char *name, const QJsonObject &parameters)
{
    return QByteArray("?") + name + '=' + QJsonDocument(parameters).toJson(QJsonDocument::Compact) +
           ";\n";
}

} // namespace

GpsdLink::GpsdLink(const tNetAddress &gpsdAddress, QObject *parent)
    : ByteLink(parent)
    , address(gpsdAddress)
    , link(gpsdAddress)
{
    answerTimer.setSingleShot(true);
    connect(&answerTimer, &QTimer::timeout, this,
            [this] { giveUp(QStringLiteral("no answer; is it a gpsd?")); });
    connect(&link, &ByteLink::opened, this, &GpsdLink::watch);
    connect(&link, &ByteLink::bytesReceived, this, &GpsdLink::take);
    connect(&link, &ByteLink::lost, this, &GpsdLink::giveUp);
}

QString GpsdLink::name() const
{
    const QString server = QStringLiteral("gpsd at %1").arg(address.text());
    return address.rest.isEmpty() ? server : server + QStringLiteral(", %1").arg(address.rest);
}

void GpsdLink::open()
{
    close();
    link.open();
}

void GpsdLink::close()
{
    answerTimer.stop();
    link.close();
    pending.clear();
    greeted = false;
    recognised = false;
    device.clear();
}

void GpsdLink::giveUp(const QString &reason)
{
    close();
    emit lost(reason);
}

void GpsdLink::watch()
{
    QJsonObject parameters{{QStringLiteral("enable"), true}, {QStringLiteral("nmea"), true}};
    if (!address.rest.isEmpty())
        parameters.insert(QStringLiteral("device"), address.rest);
    QString error;
    link.write(request("WATCH", parameters), &error);
    answerTimer.start(SystemHooks::waitLength(kAnswerMs));
}

bool GpsdLink::write(const QByteArray &bytes, QString *error)
{
    if (!greeted)
        *error = QStringLiteral("%1 is not connected").arg(name());
    else if (device.isEmpty())
        *error = QStringLiteral("%1 has no receiver").arg(name());
    else if (!recognised)
        *error = QStringLiteral("%1 has not recognised the receiver yet").arg(name());
    if (!error->isEmpty())
        return false;
    return link.write(request("DEVICE", {{QStringLiteral("path"), device},
                                         {QStringLiteral("hexdata"),
                                          QString::fromLatin1(bytes.toHex().toUpper())}}),
                      error);
}

void GpsdLink::take(const QByteArray &bytes)
{
    pending += bytes;
    for (int end = pending.indexOf('\n'); end >= 0; end = pending.indexOf('\n')) {
        const QByteArray line = pending.left(end + 1);
        pending.remove(0, end + 1);
        takeLine(line);
    }
    if (pending.size() > kMostPending)
        giveUp(QStringLiteral("this is no gpsd"));
}

void GpsdLink::takeLine(const QByteArray &line)
{
    if (line.startsWith('{')) {
        takeAnswer(QJsonDocument::fromJson(line).object());
        return;
    }
    if (!greeted) {
        giveUp(QStringLiteral("this is no gpsd"));
        return;
    }
    recognised = true;
    emit bytesReceived(line);
}

void GpsdLink::takeAnswer(const QJsonObject &answer)
{
    const QString kind = answer.value(QLatin1String("class")).toString();
    if (kind == QLatin1String("VERSION")) {
        answerTimer.stop();
        greeted = true;
        emit opened(
            QStringLiteral("release %1").arg(answer.value(QLatin1String("release")).toString()));
    } else if (kind == QLatin1String("DEVICES")) {
        takeDevices(answer.value(QLatin1String("devices")).toArray());
    } else if (kind == QLatin1String("DEVICE")) {
        takeDevice(answer);
    } else if (kind == QLatin1String("ERROR")) {
        const QString message = answer.value(QLatin1String("message")).toString();
        // Without the device that was asked for, gpsd sends nothing on this connection ever.
        if (device.isEmpty() && !address.rest.isEmpty())
            giveUp(message);
        else
            emit notice(QStringLiteral("%1: %2").arg(name(), message));
    }
}

void GpsdLink::takeDevices(const QJsonArray &devices)
{
    for (const QJsonValue &one : devices)
        takeDevice(one.toObject());
    if (device.isEmpty() && !absentSaid)
        emit notice(QStringLiteral("%1 has no receiver yet").arg(name()));
    absentSaid = device.isEmpty();
}

// A device that is not active has the number 0 in place of a time.
void GpsdLink::takeDevice(const QJsonObject &one)
{
    const QString path = one.value(QLatin1String("path")).toString();
    if (path.isEmpty())
        return;
    const QJsonValue activated = one.value(QLatin1String("activated"));
    const bool active = !activated.isDouble() || activated.toDouble() > 0.0;
    const bool isAskedFor = address.rest.isEmpty() || path == address.rest;
    if (active && device.isEmpty() && isAskedFor) {
        device = path;
        emit notice(QStringLiteral("%1: receiver at %2").arg(name(), path));
    } else if (!active && device == path) {
        device.clear();
        recognised = false;
        emit notice(QStringLiteral("%1: the receiver at %2 is gone").arg(name(), path));
    }
}
