// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>

#include <atomic>

class GnssInfo;

/// Has the receiver store its non-volatile memory, 36 seconds after the model reports that the
/// store is due. User-interface thread; the model's signal arrives queued from the reading thread.
class NVMWriter : public QObject
{
    Q_OBJECT

public:
    explicit NVMWriter(QObject *parent = nullptr);
    ~NVMWriter() override;

    /// The program is about to end: a command that is due is sent at once, now and from here on.
    /// Any thread.
    void requestStop();

public slots:
    /// Waits, with the events going on, then sends the command. A call that arrives during the wait
    /// runs a wait of its own inside it; each sends one command, the innermost first.
    void nvmStoreToFlash();

private:
    std::atomic<qint32> stopFlag = 0; ///< 1 once the wait is to be cut short
    GnssInfo *gnssInfo = nullptr;     ///< the process-wide model, not owned
};
