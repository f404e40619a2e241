// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/BoundProcess.h"

#include <QObject>
#include <QTemporaryDir>

#include <csignal>
#include <functional>
#include <memory>

/// The real program with pipes of its own, for each test function of a test that derives from this.
class HostdRig : public QObject
{
    Q_OBJECT
protected:
    /// How long a busy machine is waited for.
    static constexpr int kLongMs = 30000;

    static bool isPipe(const QString &path);

    /// Without what was cut off at the ends: a reader may come and leave in the middle of a cycle.
    static QByteArray wholeCycles(const QByteArray &bytes);

    /// Starts the daemon and waits for both pipes.
    bool start(const QStringList &arguments);
    bool startProgram(const QString &program, const QStringList &arguments);
    /// Waits until the daemon has said something.
    bool reported(const QString &text, int timeoutMs = kLongMs);
    int openReader();
    /// Reads from the daemon until it is enough.
    QByteArray readFor(int reader, const std::function<bool(const QByteArray &)> &enough,
                       int timeoutMs = kLongMs);
    /// Commands as the viewer does.
    void send(const QByteArray &command);
    /// Ends the daemon; its exit code, -1 when it crashed or stayed.
    int end(int signal = SIGTERM);
    QString path(const char *name) const;

    std::unique_ptr<QTemporaryDir> root;
    std::unique_ptr<BoundProcess> daemon;
    QString report;

protected slots:
    void init();
    void cleanup();
};
