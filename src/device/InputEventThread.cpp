// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "device/InputEventThread.h"

#include "base/SystemHooks.h"
#include "config/DebugOutput.h"

#include <array>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <linux/input-event-codes.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

constexpr const char *kDevice = "/dev/input/by-path/platform-10d80000.adc:adc-keys-event";
constexpr qint32 kReleased = 0;

/// Where the fields of a record are, in bytes. Not struct input_event: its time stamp is as wide
/// as the program's, which says nothing about the kernel's.
struct tRecordLayout
{
    std::size_t size;
    std::size_t type;
    std::size_t code;
    std::size_t value;
};
constexpr tRecordLayout kDeviceLayout = {16, 8, 10, 12};
constexpr tRecordLayout k64BitKernelLayout = {24, 16, 18, 20};

using Record = std::array<char, k64BitKernelLayout.size>;

template<typename T>
T fieldAt(const Record &record, std::size_t offset)
{
    T field;
    std::memcpy(&field, record.data() + offset, sizeof(field));
    return field;
}

/// Non-blocking, because nothing could end a wait within open() or read(): the waiting is done in
/// poll(). To others it looks like a blocking open, also of a named pipe: before its first writer
/// poll() waits, and what it says after the last one left reads as the end.
int openDevice()
{
    const QByteArray path = SystemHooks::systemPath(kDevice);
    return ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
}

} // namespace

InputEventThread::InputEventThread(QObject *parent)
    : QThread(parent)
    , stopDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

InputEventThread::~InputEventThread()
{
    requestStop();
    wait();
    if (descriptor >= 0)
        ::close(descriptor);
    if (stopDescriptor >= 0)
        ::close(stopDescriptor);
}

void InputEventThread::requestStop()
{
    // Full at worst, and then it is readable as well.
    static_cast<void>(::eventfd_write(stopDescriptor, 1));
}

void InputEventThread::run()
{
    debugMessage(QStringLiteral("InputEventThread start"));
    descriptor = openDevice();
    if (descriptor < 0) {
        consolePrint("Can't open the input file\n");
        return;
    }
    readKeys();
}

/// False once a stop was asked for.
bool InputEventThread::waitForInput() const
{
    std::array<pollfd, 2> waited = {{{stopDescriptor, POLLIN, 0}, {descriptor, POLLIN, 0}}};
    while (::poll(waited.data(), waited.size(), -1) < 0) {
        if (errno != EINTR)
            return false;
    }
    return waited[0].revents == 0;
}

void InputEventThread::readKeys()
{
    tRecordLayout layout = kDeviceLayout;
    while (waitForInput()) {
        Record record;
        const ssize_t count = ::read(descriptor, record.data(), layout.size);
        const int error = errno;
        if (count < 0 && (error == EINTR || error == EAGAIN))
            continue;
        // The event device of a 64-bit kernel refuses to hand out less than a whole record.
        if (count < 0 && error == EINVAL && layout.size != k64BitKernelLayout.size) {
            layout = k64BitKernelLayout;
            continue;
        }
        if (count <= 0)
            return;
        if (static_cast<std::size_t>(count) < layout.size)
            continue;
        handleEvent(fieldAt<quint16>(record, layout.type), fieldAt<quint16>(record, layout.code),
                    fieldAt<qint32>(record, layout.value));
    }
}

void InputEventThread::handleEvent(quint16 type, quint16 code, qint32 value)
{
    if (type != EV_KEY)
        return;
    debugMessage(QStringLiteral("event code: %1, event value: %2")
                     .arg(QString::number(code), QString::number(value)));
    // On release, so that holding the key, which repeats it, acts once.
    if (value == kReleased && code == KEY_HOMEPAGE)
        emit getEvent();
}
