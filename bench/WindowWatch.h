// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>
#include <QString>

struct xcb_connection_t;

/// Another client of an X server, told by it when a program's window comes up.
class WindowWatch
{
public:
    /// Connects to a display, ":7" for example, and looks on from then on.
    explicit WindowWatch(const QString &display);
    ~WindowWatch();

    WindowWatch(const WindowWatch &) = delete;
    WindowWatch &operator=(const WindowWatch &) = delete;

    /// Waits until a window for a user, not one that a toolkit keeps for itself, is mapped. False
    /// when none is within `timeoutMs`.
    bool waitForWindow(int timeoutMs);

    /// What the screen shows, null when it cannot be had.
    QImage picture() const;

private:
    bool isForUser(quint32 window) const;

    xcb_connection_t *server;
};
