// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/ViewerProcess.h"

#include "support/BuiltProgram.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>

#include <algorithm>
#include <utility>

namespace {

constexpr int kStartMs = 30000;
constexpr int kAnswerMs = 20000;
constexpr int kRetryMs = 20;
constexpr int kIndicatorPixels = 8; ///< from a check box's edge to the middle of its indicator

QString readAll(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

ViewerProcess::ViewerProcess(QSize screen, const QString &root)
    : rootPath(root.isEmpty() ? temporaryDir.path() : root)
    , traceFile(temporaryDir.filePath(QStringLiteral("stderr")))
    , display(std::make_unique<VirtualDisplay>(screen))
{
    const double factor = qEnvironmentVariable("QT_SCALE_FACTOR").toDouble();
    if (factor > 0.0)
        scale = factor;
    makeFolders();
}

ViewerProcess::ViewerProcess(Offscreen)
    : rootPath(temporaryDir.path())
    , traceFile(temporaryDir.filePath(QStringLiteral("stderr")))
{
    makeFolders();
}

void ViewerProcess::makeFolders() const
{
    for (const QString &folder :
         {QStringLiteral("tmp"), QStringLiteral("etc"), QStringLiteral("log")})
        QDir(rootPath).mkpath(folder);
}

ViewerProcess::~ViewerProcess()
{
    if (viewer.state() == QProcess::NotRunning)
        return;
    viewer.terminate();
    if (!viewer.waitForFinished(5000)) {
        viewer.kill();
        viewer.waitForFinished(5000);
    }
}

bool ViewerProcess::start(const QStringList &arguments)
{
    if (display && !display->isRunning()) {
        failure = QStringLiteral("Xvfb did not start");
        return false;
    }
    viewer.setProcessEnvironment(environment());
    if (traceFile == QLatin1String("-"))
        viewer.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    else
        viewer.setStandardErrorFile(traceFile, QIODevice::Append);
    viewer.setStandardOutputFile(temporaryDir.filePath(QStringLiteral("stdout")));
    startBuilt(viewer, QStringLiteral(VIEWER_BINARY), arguments);
    if (!viewer.waitForStarted(kStartMs)) {
        failure = viewer.errorString();
        return false;
    }
    return connectProbe();
}

QString ViewerProcess::path(const QString &devicePath) const
{
    return rootPath + devicePath;
}

QVariant ViewerProcess::property(const QString &page, const QString &name, const char *property)
{
    return ask({{QStringLiteral("do"), QStringLiteral("property")},
                {QStringLiteral("page"), page},
                {QStringLiteral("name"), name},
                {QStringLiteral("property"), QString::fromLatin1(property)}})
        .value(QStringLiteral("value"))
        .toVariant();
}

QString ViewerProcess::text(const QString &page, const QString &name)
{
    return property(page, name, "text").toString();
}

bool ViewerProcess::isShown(const QString &page)
{
    return property(page, {}, "visible").toBool();
}

bool ViewerProcess::isExposed(const QString &window)
{
    return ask({{QStringLiteral("do"), QStringLiteral("exposed")},
                {QStringLiteral("page"), window}})
        .value(QStringLiteral("value"))
        .toBool();
}

QRect ViewerProcess::rect(const QString &page, const QString &name)
{
    const QJsonObject answer = ask({{QStringLiteral("do"), QStringLiteral("rect")},
                                    {QStringLiteral("page"), page},
                                    {QStringLiteral("name"), name}});
    return {answer.value(QStringLiteral("x")).toInt(), answer.value(QStringLiteral("y")).toInt(),
            answer.value(QStringLiteral("w")).toInt(), answer.value(QStringLiteral("h")).toInt()};
}

bool ViewerProcess::press(const QString &page, const QString &name, int presses)
{
    if (!display)
        return presses == 1 && pressWithin(page, name);
    const QRect place = rect(page, name);
    QPoint target = place.center();
    // Check boxes and radio buttons may be wider than what of them can be pressed.
    if (property(page, name, "checkable").toBool())
        target.setX(place.left() + kIndicatorPixels);
    return !place.isEmpty() && click(target, presses);
}

bool ViewerProcess::pressAt(const QString &page, const QString &name, QPointF share)
{
    const QRect place = rect(page, name);
    const QPointF target(place.x() + place.width() * share.x(),
                         place.y() + place.height() * share.y());
    return display && !place.isEmpty() && click(target.toPoint(), 1);
}

bool ViewerProcess::click(QPoint place, int presses) const
{
    return display->click((QPointF(place) * scale).toPoint(), presses);
}

/// By mouse events for the window, from within the program.
bool ViewerProcess::pressWithin(const QString &page, const QString &name)
{
    const QJsonObject answer = ask({{QStringLiteral("do"), QStringLiteral("press")},
                                    {QStringLiteral("page"), page},
                                    {QStringLiteral("name"), name}});
    return !answer.contains(QStringLiteral("error"));
}

QJsonArray ViewerProcess::layout(const QString &page)
{
    return ask({{QStringLiteral("do"), QStringLiteral("layout")}, {QStringLiteral("page"), page}})
        .value(QStringLiteral("widgets"))
        .toArray();
}

QSize ViewerProcess::fontMetrics(int pixelSize)
{
    const QJsonObject answer = ask(
        {{QStringLiteral("do"), QStringLiteral("metrics")}, {QStringLiteral("pixels"), pixelSize}});
    return {answer.value(QStringLiteral("letter")).toInt(),
            answer.value(QStringLiteral("height")).toInt()};
}

bool ViewerProcess::showPage(const QString &button, const QString &page)
{
    if (!pressMain(button))
        return false;
    QElapsedTimer timer;
    timer.start();
    while (!isShown(page)) {
        if (timer.elapsed() > kAnswerMs)
            return false;
        QThread::msleep(kRetryMs);
    }
    return true;
}

bool ViewerProcess::enterText(const QString &page, const QString &name, const QString &text)
{
    return display && press(page, name) && display->typeOver(text);
}

QImage ViewerProcess::screenshot()
{
    const QString file = temporaryDir.filePath(QStringLiteral("screen.png"));
    return saveScreenshot(file) ? QImage(file) : QImage();
}

bool ViewerProcess::saveScreenshot(const QString &file)
{
    const QJsonObject answer =
        ask({{QStringLiteral("do"), QStringLiteral("screenshot")}, {QStringLiteral("file"), file}});
    return !answer.contains(QStringLiteral("error"));
}

bool ViewerProcess::waitForEnd(int timeoutMs)
{
    return viewer.state() == QProcess::NotRunning || viewer.waitForFinished(timeoutMs);
}

int ViewerProcess::exitCode() const
{
    const bool ended =
        viewer.state() == QProcess::NotRunning && viewer.exitStatus() == QProcess::NormalExit;
    return ended ? viewer.exitCode() : -1;
}

QString ViewerProcess::standardError() const
{
    return readAll(traceFile);
}

QString ViewerProcess::standardOutput() const
{
    return readAll(temporaryDir.filePath(QStringLiteral("stdout")));
}

qint64 ViewerProcess::longestAnswerMs(int durationMs)
{
    QElapsedTimer timer;
    timer.start();
    do {
        isShown(QStringLiteral("MainWindow"));
        QThread::msleep(kRetryMs);
    } while (timer.elapsed() < durationMs);
    return std::exchange(longestMs, 0);
}

QJsonObject ViewerProcess::ask(const QJsonObject &request)
{
    const QJsonObject noAnswer{{QStringLiteral("error"), QStringLiteral("no answer")}};
    if (probe.state() != QLocalSocket::ConnectedState)
        return noAnswer;
    QElapsedTimer timer;
    timer.start();
    probe.write(QJsonDocument(request).toJson(QJsonDocument::Compact) + '\n');
    while (!probe.canReadLine()) {
        const bool arrived = probe.waitForReadyRead(kAnswerMs);
        longestMs = std::max(longestMs, timer.elapsed());
        if (!arrived)
            return noAnswer;
    }
    return QJsonDocument::fromJson(probe.readLine()).object();
}

QProcessEnvironment ViewerProcess::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TAVRIN_ROOT"), rootPath);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"),
                       display ? QStringLiteral("xcb") : QStringLiteral("offscreen"));
    if (display)
        environment.insert(QStringLiteral("DISPLAY"), display->name());
    environment.insert(QStringLiteral("QT_PLUGIN_PATH"), QStringLiteral(PROBE_PLUGIN_PATH));
    environment.insert(QStringLiteral("QT_QPA_GENERIC_PLUGINS"), QStringLiteral("viewerprobe"));
    environment.insert(QStringLiteral("TAVRIN_PROBE_SOCKET"),
                       temporaryDir.filePath(QStringLiteral("probe")));
    return environment;
}

bool ViewerProcess::connectProbe()
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < kStartMs && viewer.state() == QProcess::Running) {
        probe.connectToServer(temporaryDir.filePath(QStringLiteral("probe")));
        if (probe.waitForConnected(kStartMs) && isExposed(QStringLiteral("MainWindow")))
            return true;
        probe.abort();
        QThread::msleep(kRetryMs);
        viewer.waitForFinished(1);
    }
    failure = QStringLiteral("the viewer's window did not come up: ") + standardError();
    return false;
}
