// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/BoundProcess.h"
#include "support/VirtualDisplay.h"

#include <QImage>
#include <QJsonArray>
#include <QLocalSocket>
#include <QPointF>
#include <QRect>
#include <QTemporaryDir>

#include <memory>

/// The real viewer in a real window on a virtual display, with a device root of its own. What it
/// shows is asked of the probe that the environment loads into it; presses go through the X server.
/// Where there can be no X server, the viewer runs offscreen and the probe presses, too. A whole or
/// broken QT_SCALE_FACTOR of the environment holds for the viewer: places are in the viewer's
/// pixels.
class ViewerProcess
{
public:
    struct Offscreen
    {
    };

    /// Makes the root's folders tmp, etc and log, starts nothing. `root` empty: a temporary one.
    explicit ViewerProcess(QSize screen = {800, 480}, const QString &root = {});
    /// Without a display: a viewer on Qt's offscreen platform, in a temporary root.
    explicit ViewerProcess(Offscreen);
    ~ViewerProcess();

    /// Before the start: what the viewer writes to standard error is put at the end of `file`; with
    /// "-" it goes to this program's own, and standardError() is empty.
    void setTraceFile(const QString &file) { traceFile = file; }

    /// Starts the viewer and waits until its window is on the screen. False, with errorText(), if
    /// it fails.
    bool start(const QStringList &arguments = {});

    /// Absolute path of a file of the device, "/tmp/agiin" for example, below the root.
    QString path(const QString &devicePath) const;
    QString root() const { return rootPath; }

    /// A property of the widget `name` on `page`, invalid when there is none.
    QVariant property(const QString &page, const QString &name, const char *property);
    /// The text of a label, button or box.
    QString text(const QString &page, const QString &name);
    /// Whether the page is what the window shows.
    bool isShown(const QString &page);
    /// Place of a widget, or of a page for an empty name, on the screen; null when there is none. A
    /// widget without a name is found by its class.
    QRect rect(const QString &page, const QString &name);

    /// What can be seen of a page, as the probe's request "layout" answers; empty when it is
    /// hidden.
    QJsonArray layout(const QString &page);

    /// Line height and width of "W" in the viewer's default font at a size in pixels.
    QSize fontMetrics(int pixelSize);

    /// Presses a widget in its middle, or on its indicator, by way of the X server; several times
    /// in quick succession if asked to, which cannot be had offscreen.
    bool press(const QString &page, const QString &name, int presses = 1);
    /// Presses a place of a widget: (0, 0) is its left upper corner and (1, 1) its right lower one.
    bool pressAt(const QString &page, const QString &name, QPointF share);
    /// Presses a button of the window's button column.
    bool pressMain(const QString &button) { return press(QStringLiteral("MainWindow"), button); }
    /// Presses a button of the column and waits until its page is shown.
    bool showPage(const QString &button, const QString &page);
    /// Presses an input field and replaces what it holds, by way of the X server only.
    bool enterText(const QString &page, const QString &name, const QString &text);

    /// The whole screen, null when it could not be taken.
    QImage screenshot();
    bool saveScreenshot(const QString &file);

    /// Waits for the end of the process. False when it goes on after `timeoutMs`.
    bool waitForEnd(int timeoutMs);
    /// Exit code of the ended process, -1 when it crashed or still runs.
    int exitCode() const;

    /// Everything written so far to standard error and standard output.
    QString standardError() const;
    QString standardOutput() const;

    /// Asks the window again and again for `durationMs`. The longest time in milliseconds that any
    /// answer since the last call took: for so long the screen stood still.
    qint64 longestAnswerMs(int durationMs = 0);

    QProcess &process() { return viewer; }
    /// The display; there is none offscreen.
    const VirtualDisplay &screen() const { return *display; }
    QString errorText() const { return failure; }

private:
    QJsonObject ask(const QJsonObject &request);
    QProcessEnvironment environment() const;
    void makeFolders() const;
    bool pressWithin(const QString &page, const QString &name);
    bool isExposed(const QString &window);
    bool connectProbe();

    bool click(QPoint place, int presses) const;

    QTemporaryDir temporaryDir;
    QString rootPath;
    QString traceFile;
    double scale = 1.0; ///< pixels of the screen in one of the viewer's
    std::unique_ptr<VirtualDisplay> display;
    BoundProcess viewer;
    QLocalSocket probe;
    qint64 longestMs = 0;
    QString failure;
};
