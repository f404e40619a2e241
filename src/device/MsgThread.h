// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gnss/InterruptibleSleep.h"

#include <QThread>

#include <atomic>
#include <mutex>

struct DBusConnection;

/// The link to the device's activity manager over the D-Bus system bus: tells the manager that the
/// window left full screen, and the window that the manager wants it back.
///
/// The object lives on the user-interface thread, which sends; the thread itself polls for what
/// comes in, once a second, and takes the link up again after the bus was away.
class MsgThread : public QThread
{
    Q_OBJECT

public:
    /// Connects to the system bus. Without one the thread asks once more when it starts, and ends
    /// when there still is none; a bus that does not answer within a second is waited for by the
    /// thread.
    explicit MsgThread(QObject *parent = nullptr);
    /// Stops the thread and waits for it without a bound: whoever must not wait for a bus that
    /// hangs waits with one before.
    ~MsgThread() override;

    /// Broadcasts the signal `member`, without arguments, to the activity manager. Does not wait
    /// for a bus that takes nothing; the message then leaves when the bus takes it. User-interface
    /// thread.
    void sendMsg(const char *member);

    /// Ends the thread soon, also while it sleeps, and also when it has not started yet. Any
    /// thread.
    void requestStop();

signals:
    void appResume(); ///< the activity manager wants the program in the foreground

public slots:
    /// Tells the activity manager that the program left the foreground.
    void onAppPaused();

protected:
    void run() override;

private:
    bool takeUpLink();
    void serveLink();
    bool handleMessage();
    void adopt(DBusConnection *bus);
    bool isLinkBroken() const;

    /// Of the whole process, and open until its end; null while there is no bus. Once the thread
    /// runs, only that replaces it.
    DBusConnection *connection = nullptr;
    /// Held while the connection is replaced, and while the user-interface thread uses it.
    std::mutex connectionMutex;
    InterruptibleSleep pause;
    std::atomic<bool> stopFlag = false;
};
