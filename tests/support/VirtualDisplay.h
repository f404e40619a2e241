// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/BoundProcess.h"

#include <QPoint>
#include <QSize>

/// An X server without a screen to look at, for as long as the object lives.
class VirtualDisplay
{
public:
    explicit VirtualDisplay(QSize size);
    ~VirtualDisplay();

    bool isRunning() const { return !displayName.isEmpty(); }

    /// For the environment variable DISPLAY, ":7" for example; empty when the server did not start.
    QString name() const { return displayName; }

    /// Of the X server.
    qint64 processId() const { return server.processId(); }

    /// Moves the pointer to a place on the screen and presses the left button there, several times
    /// as fast as a finger can.
    bool click(QPoint place, int presses = 1) const;

    /// Selects all of the input field that has the focus and types `text` instead.
    bool typeOver(const QString &text) const;

    /// Asks the program on the screen to close its window, as a window manager does.
    bool requestClose() const;

    /// Whether the program's window tells window managers to draw no frame around it.
    bool isFrameless() const;

private:
    bool xdotool(const QStringList &arguments) const;

    BoundProcess server;
    QString displayName;
};
