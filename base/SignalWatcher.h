// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QString>

#include <csignal>
#include <memory>
#include <vector>

class QSocketNotifier;

/// Turns SIGINT, SIGTERM and SIGHUP into a Qt signal on the thread that made it, and ignores
/// SIGPIPE. A SIGHUP that was ignored before, as nohup has it, stays ignored. At most one at a
/// time.
class SignalWatcher : public QObject
{
    Q_OBJECT
public:
    explicit SignalWatcher(QObject *parent = nullptr);

    /// Gives the signals back to those who had them.
    ~SignalWatcher() override;

    /// Begins to watch. False with `error` set on failure; the signals are then as they were.
    bool watch(QString *error);

signals:
    void endRequested();

private slots:
    void readPipe();

private:
    void take(int number, void (*handler)(int));

    struct tTaken
    {
        int number;
        struct sigaction before;
    };

    std::unique_ptr<QSocketNotifier> notifier;
    std::vector<tTaken> taken;
};
