// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/links/NetAddress.h"

#include <QHostAddress>

QString tNetAddress::text() const
{
    const QString shown =
        host.contains(QLatin1Char(':')) ? QLatin1Char('[') + host + QLatin1Char(']') : host;
    return QStringLiteral("%1:%2").arg(shown).arg(port);
}

std::optional<tNetAddress> parseNetAddress(const QString &text, quint16 usualPort)
{
    tNetAddress address;
    address.port = usualPort;
    QString behind; // from the colon before the port
    if (QHostAddress(text).protocol() == QAbstractSocket::IPv6Protocol) {
        address.host = text;
    } else if (text.startsWith(QLatin1Char('['))) {
        const int end = text.indexOf(QLatin1Char(']'));
        address.host = text.mid(1, end - 1);
        behind = text.mid(end + 1);
        if (end < 0 || QHostAddress(address.host).protocol() != QAbstractSocket::IPv6Protocol)
            return std::nullopt;
    } else {
        const int end = text.indexOf(QLatin1Char(':'));
        address.host = text.left(end);
        behind = end < 0 ? QString() : text.mid(end);
    }
    if (address.host.isEmpty() || (!behind.isEmpty() && !behind.startsWith(QLatin1Char(':'))))
        return std::nullopt;
    if (behind.isEmpty())
        return address;
    const QString port = behind.section(QLatin1Char(':'), 1, 1);
    address.rest = behind.section(QLatin1Char(':'), 2);
    bool ok = !port.isEmpty() && port[0].isDigit();
    if (ok)
        address.port = port.toUShort(&ok);
    if (!ok || address.port == 0)
        return std::nullopt;
    return address;
}
