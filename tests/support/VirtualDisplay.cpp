// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/VirtualDisplay.h"

namespace {

constexpr int kStartMs = 20000;

} // namespace

VirtualDisplay::VirtualDisplay(QSize size)
{
    // The server picks a free display and writes its number to standard output.
    server.setStandardErrorFile(QProcess::nullDevice());
    server.start(QStringLiteral("Xvfb"),
                 {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                  QStringLiteral("0"),
                  QStringLiteral("%1x%2x24").arg(size.width()).arg(size.height()),
                  QStringLiteral("-nolisten"), QStringLiteral("tcp")});
    QByteArray number;
    while (!number.endsWith('\n')) {
        if (!server.waitForReadyRead(kStartMs))
            return;
        number += server.readAllStandardOutput();
    }
    displayName = QLatin1Char(':') + QString::fromLatin1(number.trimmed());
}

VirtualDisplay::~VirtualDisplay()
{
    server.terminate();
    if (!server.waitForFinished(5000))
        server.kill();
    server.waitForFinished(5000);
}

bool VirtualDisplay::click(QPoint place) const
{
    QProcess xdotool;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), displayName);
    xdotool.setProcessEnvironment(environment);
    xdotool.start(QStringLiteral("xdotool"),
                  {QStringLiteral("mousemove"), QString::number(place.x()),
                   QString::number(place.y()), QStringLiteral("click"), QStringLiteral("1")});
    return xdotool.waitForFinished(10000) && xdotool.exitStatus() == QProcess::NormalExit &&
           xdotool.exitCode() == 0;
}
