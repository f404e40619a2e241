// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// viewer-tour ROOT PICTURES WIDTH HEIGHT TRACES [SECONDS]: runs the viewer on a virtual display of
// that size with the receiver whose pipes are below ROOT, waits for its fix, saves a picture of
// every page, tab and dialog in the folder PICTURES and prints what the satellite page shows. The
// viewer's trace lines are put at the end of the file TRACES, those of "-" go to standard error.
// Ends with 0, with 1 when no fix came within SECONDS (120), with 2 when it was called wrongly.

#include "support/Pages.h"
#include "support/ViewerProcess.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTextStream>
#include <QThread>

#include <algorithm>
#include <csignal>
#include <utility>

#include <unistd.h>

namespace {

constexpr int kDefaultSeconds = 120;
constexpr int kPollMs = 200;
constexpr int kRefreshMs = 2500; // two refreshes of the pages
constexpr int kDialogMs = 5000;

const QString kTabBar = QStringLiteral("qt_tabwidget_tabbar");

struct Page
{
    QString button;
    QString page;
    QString picture;
};

const Page kPages[] = {
    {Pages::kControlButton, Pages::kControl, QStringLiteral("control.png")},
    {Pages::kTtffButton, Pages::kTtff, QStringLiteral("ttff-test.png")},
    {Pages::kLogButton, Pages::kLog, QStringLiteral("log.png")},
    {Pages::kConfigButton, Pages::kConfig, QStringLiteral("config.png")},
};

/// Satellites that the probe cannot see, as they are painted; the fix and a DOP tell of them.
bool hasFix(ViewerProcess &viewer)
{
    return viewer.text(Pages::kSatellite, QStringLiteral("label_fix")).toInt() > 0 &&
           viewer.text(Pages::kSatellite, QStringLiteral("label_pdop")).toDouble() > 0.0;
}

bool waitForFix(ViewerProcess &viewer, int seconds)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < seconds * 1000LL) {
        if (viewer.waitForEnd(0))
            return false;
        if (hasFix(viewer))
            return true;
        QThread::msleep(kPollMs);
    }
    return false;
}

void printSatellitePage(ViewerProcess &viewer, QTextStream &out)
{
    constexpr std::pair<const char *, const char *> kValues[] = {
        {"Lat:", "label_lat"},   {"Lon:", "label_lon"},     {"Alt:", "label_alt"},
        {"Fix:", "label_fix"},   {"Speed:", "label_speed"}, {"UTC:", "label_utc"},
        {"PDOP:", "label_pdop"}, {"HDOP:", "label_hdop"},   {"VDOP:", "label_vdop"}};
    out << "The satellite page shows:\n";
    for (const auto &[caption, label] : kValues)
        out << "  " << qSetFieldWidth(7) << Qt::left << caption << qSetFieldWidth(0)
            << viewer.text(Pages::kSatellite, QString::fromLatin1(label)) << '\n';
}

/// Shows a page by its button and takes its picture.
bool visit(ViewerProcess &viewer, const Page &page, const QDir &pictures)
{
    if (!viewer.showPage(page.button, page.page))
        return false;
    QThread::msleep(kPollMs);
    return viewer.saveScreenshot(pictures.filePath(page.picture));
}

bool waitUntilShown(ViewerProcess &viewer, const QString &page, bool shown)
{
    QElapsedTimer timer;
    timer.start();
    while (viewer.isShown(page) != shown) {
        if (timer.elapsed() > kDialogMs)
            return false;
        QThread::msleep(kPollMs);
    }
    return true;
}

/// Shows a tab of the configuration page, of the three, and takes its picture.
bool visitTab(ViewerProcess &viewer, int tab, const QString &file)
{
    if (!viewer.pressAt(Pages::kConfig, kTabBar, {(2 * tab + 1) / 6.0, 0.5}))
        return false;
    QThread::msleep(kPollMs);
    return viewer.saveScreenshot(file);
}

/// Takes the picture of a dialog that the configuration page opens, and leaves it by `button`.
bool visitDialog(ViewerProcess &viewer, const QString &dialog, const QString &button,
                 const QString &file)
{
    if (!waitUntilShown(viewer, dialog, true))
        return false;
    QThread::msleep(kPollMs);
    return viewer.saveScreenshot(file) && viewer.press(dialog, button) &&
           waitUntilShown(viewer, dialog, false);
}

/// The rest of the configuration page, which is shown. Nothing is saved.
bool visitConfigPage(ViewerProcess &viewer, const QDir &pictures)
{
    const QString chooser = QStringLiteral("QFileDialog");
    const QString question = QStringLiteral("QMessageBox");
    return viewer.press(Pages::kConfig, QStringLiteral("pushButton_logPathOpen")) &&
           visitDialog(viewer, chooser, QStringLiteral("Cancel"),
                       pictures.filePath(QStringLiteral("config-folder.png"))) &&
           viewer.press(Pages::kConfig, QStringLiteral("checkBox_debugText")) &&
           viewer.pressAt(Pages::kConfig, kTabBar, {0.5, 0.5}) &&
           visitDialog(viewer, question, QStringLiteral("No"),
                       pictures.filePath(QStringLiteral("config-question.png"))) &&
           visitTab(viewer, 1, pictures.filePath(QStringLiteral("config-nvm.png"))) &&
           visitTab(viewer, 2, pictures.filePath(QStringLiteral("config-about.png")));
}

bool visitAll(ViewerProcess &viewer, const QDir &pictures)
{
    const QString viewSwitch = QStringLiteral("pushButton_viewSwitch");
    QThread::msleep(kRefreshMs);
    if (!viewer.saveScreenshot(pictures.filePath(QStringLiteral("satellite-bars.png"))) ||
        !viewer.press(Pages::kSatellite, viewSwitch))
        return false;
    QThread::msleep(kRefreshMs);
    if (!viewer.saveScreenshot(pictures.filePath(QStringLiteral("satellite-sky.png"))) ||
        !viewer.press(Pages::kSatellite, viewSwitch))
        return false;
    return std::all_of(std::begin(kPages), std::end(kPages),
                       [&](const Page &page) { return visit(viewer, page, pictures); }) &&
           visitConfigPage(viewer, pictures);
}

int tour(ViewerProcess &viewer, const QDir &pictures, int seconds)
{
    QTextStream out(stdout);
    QTextStream err(stderr);
    if (!viewer.start()) {
        err << "viewer-tour: " << viewer.errorText() << '\n';
        return 1;
    }
    if (!waitForFix(viewer, seconds)) {
        err << "viewer-tour: the receiver had no fix within " << seconds << " seconds\n";
        printSatellitePage(viewer, err);
        return 1;
    }
    if (!visitAll(viewer, pictures)) {
        err << "viewer-tour: the pages could not be shown\n";
        return 1;
    }
    printSatellitePage(viewer, out);
    if (!viewer.pressMain(Pages::kExitButton) || !viewer.waitForEnd(5000) ||
        viewer.exitCode() != 0) {
        err << "viewer-tour: the viewer did not end cleanly\n";
        return 1;
    }
    return 0;
}

void endGroup(int number)
{
    static_cast<void>(std::signal(number, SIG_DFL));
    ::kill(0, number);
}

/// All that is started here forms a group, which a signal ends as a whole: a child that is not yet
/// the program that it will be would wait for this one for good.
void takeChildrenAlong()
{
    ::setpgid(0, 0);
    static_cast<void>(std::signal(SIGTERM, endGroup));
}

} // namespace

int main(int argc, char **argv)
{
    takeChildrenAlong();
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    const QSize screen(arguments.value(2).toInt(), arguments.value(3).toInt());
    const int seconds = arguments.size() == 6 ? arguments.at(5).toInt() : kDefaultSeconds;
    if (arguments.size() < 5 || arguments.size() > 6 || screen.isEmpty() || seconds < 1) {
        QTextStream(stderr) << "usage: viewer-tour ROOT PICTURES WIDTH HEIGHT TRACES [SECONDS]\n";
        return 2;
    }
    const QDir pictures(arguments.at(1));
    if (!pictures.mkpath(QStringLiteral("."))) {
        QTextStream(stderr) << "viewer-tour: cannot make " << pictures.path() << '\n';
        return 1;
    }
    ViewerProcess viewer(screen, arguments.at(0));
    viewer.setTraceFile(arguments.at(4));
    return tour(viewer, pictures, seconds);
}
