// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "e2e/TtffRig.h"

#include "support/NmeaSentences.h"
#include "support/Pages.h"
#include "support/SettingsFile.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QtTest>

#include <algorithm>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int kLongMs = 60000;

const QString kButton = QStringLiteral("pushButton_Test");
const QString kStopSentence = QStringLiteral("$PPLMS,1");

/// Then and there the six highest satellites, which make the first fix, are two each of GPS,
/// GLONASS and BeiDou: the store of the receiver's memory is asked for with the very first fix.
const QStringList kSky = {QStringLiteral("--position"),   QStringLiteral("48.1173,11.5167,545"),
                          QStringLiteral("--start-time"), QStringLiteral("2025-06-01T18:00:00Z"),
                          QStringLiteral("--seed"),       QStringLiteral("1")};

/// Writes into a pipe that has a reader already, as a second writer beside the usual one.
bool writeToPipe(const QString &path, const QByteArray &bytes)
{
    const int pipe = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (pipe < 0)
        return false;
    const ssize_t written = ::write(pipe, bytes.constData(), static_cast<size_t>(bytes.size()));
    ::close(pipe);
    return written == bytes.size();
}

} // namespace

TtffRig::TtffRig()
    : hostd(viewer.root())
{
}

bool TtffRig::start(const QString &ttff, bool stamped)
{
    if (!writeLogSettings(viewer.root(), stamped ? "Yes" : "No"))
        return warn("the settings could not be written");
    if (!startReceiver(ttff) || !sendStop())
        return warn("the receiver does not obey");
    silenced = true;
    return startViewer();
}

bool TtffRig::startWith(const QStringList &arguments)
{
    if (!writeLogSettings(viewer.root(), "Yes"))
        return warn("the settings could not be written");
    return (hostd.start(arguments) || warn("the daemon does not come up")) && startViewer();
}

bool TtffRig::startViewer()
{
    if (!viewer.start() || !viewer.showPage(Pages::kTtffButton, Pages::kTtff))
        return warn("the viewer does not come up");
    return true;
}

bool TtffRig::feedData()
{
    const QString seconds = QStringLiteral("RMC received V 175959.000");
    const auto fed = [this] {
        return writeToPipe(viewer.path(QStringLiteral("/tmp/agiin")),
                           NmeaSentences::sentence("GNRMC,175959.000,V,,,,,,,010625,,,N"));
    };
    if (!QTest::qWaitFor(fed, kLongMs) ||
        !QTest::qWaitFor([this, &seconds] { return traced(seconds) > 0; }, kLongMs))
        return warn("the viewer does not read");
    return true;
}

bool TtffRig::choose(const tTtffSetting &setting)
{
    const QString radioButton = QStringLiteral("radioButton_") + setting.type;
    if (!viewer.press(Pages::kTtff, radioButton) ||
        !enter(QStringLiteral("spinBox_TestTimes"), setting.loops) ||
        !enter(QStringLiteral("spinBox_TrackTime"), setting.trackingSeconds))
        return warn("the page does not take the settings");
    const auto checked = [this, &radioButton] {
        return viewer.property(Pages::kTtff, radioButton, "checked").toBool();
    };
    return QTest::qWaitFor(checked, kLongMs) || warn("the radio button cannot be pressed");
}

bool TtffRig::pressTest(int presses)
{
    return viewer.press(Pages::kTtff, kButton, presses);
}

QString TtffRig::buttonText()
{
    return viewer.text(Pages::kTtff, kButton);
}

QStringList TtffRig::shown()
{
    return viewer.property(Pages::kTtff, QStringLiteral("textBrowser"), "plainText")
        .toString()
        .split(QLatin1Char('\n'));
}

QStringList TtffRig::logNames() const
{
    QStringList names =
        QDir(viewer.path(QStringLiteral("/log/GNSS"))).entryList(QDir::Files, QDir::Name);
    std::sort(names.begin(), names.end(),
              [](const QString &a, const QString &b) { return timeInName(a) < timeInName(b); });
    return names;
}

QDateTime TtffRig::timeInName(const QString &name)
{
    return QDateTime::fromString(name, QStringLiteral("dd-MM-yyyy_HHmmss'_ttff.log'"));
}

QStringList TtffRig::log(const QString &name) const
{
    QFile file(viewer.path(QStringLiteral("/log/GNSS/")) + name);
    if (!file.open(QIODevice::ReadOnly))
        return {QStringLiteral("cannot read ") + name};
    QStringList lines = QString::fromLatin1(file.readAll()).split(QLatin1Char('\n'));
    if (lines.constLast().isEmpty())
        lines.removeLast();
    else
        lines.append(QString());
    return lines;
}

QStringList TtffRig::commands()
{
    return hostd.commands().mid(silenced ? 1 : 0); // without the one that silenced it
}

QList<double> TtffRig::announced()
{
    static const QRegularExpression kAnnounced(
        QStringLiteral("obeyed \\$PPLMG,\\d: .*first fix in about ([0-9.]+) s"));
    QList<double> seconds;
    const QStringList reports = hostd.reports();
    for (const QString &report : reports) {
        const QRegularExpressionMatch match = kAnnounced.match(report);
        if (match.hasMatch())
            seconds << match.captured(1).toDouble();
    }
    return seconds;
}

QString TtffRig::traces()
{
    return viewer.standardError().right(3000) + hostd.reports().join(QLatin1Char('\n')).right(2000);
}

bool TtffRig::startReceiver(const QString &ttff)
{
    const QStringList arguments = {QStringLiteral("simulate"), QStringLiteral("--ttff"), ttff,
                                   QStringLiteral("--time-scale"), QString::number(kTimeScale)};
    return hostd.start(arguments + kSky);
}

/// Before the viewer reads, so that nothing of the power-up reaches it.
bool TtffRig::sendStop()
{
    const auto sent = [this] {
        return writeToPipe(viewer.path(QStringLiteral("/tmp/agiout")),
                           kStopSentence.toLatin1() + "\r\n");
    };
    const auto obeyed = [this] {
        return hostd.commands() == QStringList(kStopSentence);
    };
    return QTest::qWaitFor(sent, kLongMs) && QTest::qWaitFor(obeyed, kLongMs);
}

bool TtffRig::enter(const QString &field, int value)
{
    const auto taken = [this, &field, value] {
        return viewer.property(Pages::kTtff, field, "value").toInt() == value;
    };
    return viewer.enterText(Pages::kTtff, field, QString::number(value)) &&
           QTest::qWaitFor(taken, kLongMs);
}

bool TtffRig::warn(const char *what)
{
    qWarning("%s: %s\n%s", what, qPrintable(viewer.errorText()), qPrintable(traces()));
    return false;
}
