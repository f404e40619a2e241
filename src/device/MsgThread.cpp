// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "device/MsgThread.h"

#include "config/DebugOutput.h"

#include <QDeadlineTimer>

#include <chrono>
#include <future>
#include <thread>
#include <utility>

#include <dbus/dbus.h>

namespace {

constexpr int kPollPeriodMs = 1000;
/// The longest that the window is held up at the start by a bus that answers nothing.
constexpr std::chrono::milliseconds kLongestConnect(1000);
/// The longest that a press of the user waits for a bus that takes nothing.
constexpr int kLongestFlushMs = 200;

constexpr const char *kProgram = "TavrinDemo";
constexpr const char *kManagerPath = "/brel/activity/Ostrel";
constexpr const char *kManagerInterface = "brel.activity.manager.interface";
constexpr const char *kMinimizeMember = "minimize";
constexpr const char *kMatchRule = "type='signal',interface='brel.app.Ostrel.interface'";
constexpr const char *kResumeInterface = "brel.app.Ostrel.interface";
constexpr const char *kResumeMember = "resume";

QString threadTag()
{
    return QStringLiteral("MsgThread");
}

/// What went wrong in a call to the bus.
class BusError
{
public:
    BusError() { dbus_error_init(&error); }
    ~BusError() { dbus_error_free(&error); }

    BusError(const BusError &) = delete;
    BusError &operator=(const BusError &) = delete;

    DBusError *get() { return &error; }
    bool isSet() const { return dbus_error_is_set(&error) != 0; }

private:
    DBusError error = {};
};

/// A reference to the connection that the whole process shares, null without a bus.
DBusConnection *sharedSystemBus(BusError &error)
{
    DBusConnection *const bus = dbus_bus_get(DBUS_BUS_SYSTEM, error.get());
    // Otherwise the library ends the process together with the bus.
    if (bus)
        dbus_connection_set_exit_on_disconnect(bus, FALSE);
    return bus;
}

/// The same, but null as well when the bus takes too long: libdbus waits for one that hangs without
/// a limit. The thread that then goes on waiting ends with the bus's answer or with the process.
DBusConnection *sharedSystemBusInTime()
{
    std::promise<DBusConnection *> promise;
    std::future<DBusConnection *> bus = promise.get_future();
    std::thread([answer = std::move(promise)]() mutable {
        BusError error;
        answer.set_value(sharedSystemBus(error));
    }).detach();
    return bus.wait_for(kLongestConnect) == std::future_status::ready ? bus.get() : nullptr;
}

/// Null when `member` is no name for a signal: the library would end the process over it.
DBusMessage *newSignal(const char *member)
{
    if (!dbus_validate_member(member, nullptr))
        return nullptr;
    return dbus_message_new_signal(kManagerPath, kManagerInterface, member);
}

/// dbus_connection_flush() without its endless wait for a bus that takes nothing. What is left
/// leaves with the thread's next pass.
void flush(DBusConnection *bus)
{
    const QDeadlineTimer deadline(kLongestFlushMs);
    while (dbus_connection_has_messages_to_send(bus) && !deadline.hasExpired()) {
        if (!dbus_connection_read_write(bus, static_cast<int>(deadline.remainingTime())))
            return;
    }
}

} // namespace

MsgThread::MsgThread(QObject *parent)
    : QThread(parent)
{
    dbus_threads_init_default();
    connection = sharedSystemBusInTime();
    if (!connection)
        consolePrint((QByteArray(kProgram) + " dbus get error\n").constData());
}

MsgThread::~MsgThread()
{
    requestStop();
    wait();
    // Only the reference: the library keeps the connection for the whole process.
    adopt(nullptr);
}

void MsgThread::sendMsg(const char *member)
{
    const std::lock_guard<std::mutex> lock(connectionMutex);
    if (!connection) {
        qDebug("error: %s dbus connection is null\r\n", kProgram);
        return;
    }
    DBusMessage *const message = newSignal(member);
    if (!message) {
        qDebug("warning : msg is null for radio send %s to manager \r\n", member);
        return;
    }
    dbus_connection_send(connection, message, nullptr);
    flush(connection);
    qDebug("%s sent %s to launch\r\n", kProgram, member);
    dbus_message_unref(message);
}

void MsgThread::requestStop()
{
    stopFlag = true;
    pause.interrupt();
}

void MsgThread::onAppPaused()
{
    sendMsg(kMinimizeMember);
}

void MsgThread::run()
{
    // A bus that went away since the constructor will come back; one that never was, or that
    // refuses the match rule, will not be asked again.
    if (takeUpLink() || (connection && isLinkBroken()))
        serveLink();
    consolePrint("Radio recv dbus deamon exit ");
}

bool MsgThread::takeUpLink()
{
    BusError error;
    DBusConnection *const bus = sharedSystemBus(error);
    if (!bus) {
        qDebug("error: %s dbus connection is null\r\n", kProgram);
        return false;
    }
    dbus_bus_add_match(bus, kMatchRule, error.get());
    if (error.isSet()) {
        qDebug("error: %s dbus connection add match fail\r\n", kProgram);
        dbus_connection_unref(bus);
        return false;
    }
    adopt(bus);
    return true;
}

void MsgThread::serveLink()
{
    while (!stopFlag) {
        if (connection && handleMessage())
            continue;
        pause.sleep(kPollPeriodMs);
        if (stopFlag || !isLinkBroken())
            continue;
        if (connection)
            errorPrint(threadTag(), QStringLiteral("the system bus went away"));
        // The library hands out no broken connection, so this brings a new one or none.
        adopt(nullptr);
        if (takeUpLink())
            debugPrint(1, threadTag(), QStringLiteral("the system bus is back"));
    }
}

/// False when there is none.
bool MsgThread::handleMessage()
{
    dbus_connection_read_write(connection, 0);
    DBusMessage *const message = dbus_connection_pop_message(connection);
    if (!message)
        return false;
    if (dbus_message_is_signal(message, kResumeInterface, kResumeMember)) {
        qDebug("%s ---- received resume message\r\n", kProgram);
        emit appResume();
    } else {
        qDebug("warning unknown message.ignore..\r\n");
    }
    dbus_message_unref(message);
    return true;
}

/// Takes over the caller's reference and gives up the one held so far.
void MsgThread::adopt(DBusConnection *bus)
{
    const std::lock_guard<std::mutex> lock(connectionMutex);
    if (connection)
        dbus_connection_unref(connection);
    connection = bus;
}

bool MsgThread::isLinkBroken() const
{
    return !connection || !dbus_connection_get_is_connected(connection);
}
