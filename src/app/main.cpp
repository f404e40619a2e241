// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "app/MainWindow.h"
#include "app/TouchStyle.h"

#include <QApplication>
#include <QScreen>
#include <QSettings>

#include <csignal>
#include <memory>

#include <getopt.h>

namespace {

/// Steps over the options; none of them means anything here.
void skipOptions(int argc, char **argv)
{
    static const option kOptions[] = {
        // The long plugin takes a value and the short P takes none, which stays as it is.
        {"platform", required_argument, nullptr, 'p'},
        {"plugin", required_argument, nullptr, 'P'},
        {nullptr, 0, nullptr, 0},
    };
    while (getopt_long_only(argc, argv, "p:P", kOptions, nullptr) != -1) {
    }
}

void setUpApplication()
{
    QCoreApplication::setOrganizationDomain(QStringLiteral("Norvale"));
    QCoreApplication::setApplicationName(QStringLiteral("TavrinViewer"));
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope,
                       QStringLiteral("/data/.config/"));
    if (const QScreen *const screen = QGuiApplication::primaryScreen())
        TouchStyle::apply(screen->size());
    qApp->setStyleSheet(
        QStringLiteral("QGroupBox {  border: 1px solid gray; border-radius: 5px; }"));
}

// Some platforms go on without their device, but there can be no window without a screen. The line
// is no trace line: the packages switch those off.
bool hasScreen()
{
    if (QGuiApplication::primaryScreen())
        return true;
    qCritical(
        "no screen: the platform %s found none; set QT_QPA_PLATFORM to another device or platform",
        qPrintable(QGuiApplication::platformName()));
    return false;
}

} // namespace

int main(int argc, char **argv)
{
    // A host daemon that goes away while a command is written must not take the viewer with it.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    // Nothing here draws with OpenGL: not loading a driver saves 50 MB and 40 ms.
    if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION"))
        qputenv("QT_XCB_GL_INTEGRATION", "none");

    const QApplication application(argc, argv);
    setUpApplication();
    skipOptions(argc, argv);
    // The service tries again until there is one.
    if (!hasScreen())
        return 1;

    const auto window = std::make_unique<MainWindow>();
    MainWindow::setInstance(window.get());
    window->showFullScreen();
    window->move(0, 0);
    return window->isExitRequested() ? 0 : QApplication::exec();
}
