// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>

#include <memory>

class QSocketNotifier;

/// Turns SIGINT and SIGTERM into a Qt signal on the thread that made it, and ignores SIGPIPE. At
/// most one at a time.
class SignalWatcher : public QObject
{
    Q_OBJECT
public:
    explicit SignalWatcher(QObject *parent = nullptr);
    ~SignalWatcher() override;

signals:
    void endRequested();

private slots:
    void readPipe();

private:
    std::unique_ptr<QSocketNotifier> notifier;
};
