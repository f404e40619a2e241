// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/BoundProcess.h"

#include <QString>
#include <QStringList>

/// The real host daemon, as the device runs it beside the viewer.
class HostdProcess
{
public:
    /// Serves the pipes of the device root `root`; starts nothing yet.
    explicit HostdProcess(const QString &root);
    ~HostdProcess();

    /// Starts it with these arguments and waits until it runs.
    bool start(const QStringList &arguments);

    /// Ends it as the device does, by a signal, and waits for its clean end.
    bool stop();

    /// Ends it without giving it a chance to notice.
    void kill();

    qint64 processId() const { return daemon.processId(); }

    /// What it has reported on standard error so far, line by line.
    QStringList reports();
    /// The sentences of the commands that it has reported so far, without line ends.
    QStringList commands();

private:
    BoundProcess daemon;
    QString root;
    QByteArray reported;
};
