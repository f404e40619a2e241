// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/Pty.h"

#include <QFile>

#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace {

struct tSpeed
{
    speed_t constant;
    int baud;
};

constexpr tSpeed kSpeeds[] = {{B4800, 4800},     {B9600, 9600},     {B19200, 19200},
                              {B38400, 38400},   {B57600, 57600},   {B115200, 115200},
                              {B230400, 230400}, {B460800, 460800}, {B921600, 921600}};

// Neither echo nor translation of line ends: what a receiver sends is for the program alone.
bool makeRaw(int descriptor)
{
    termios settings = {};
    if (::tcgetattr(descriptor, &settings) != 0)
        return false;
    ::cfmakeraw(&settings);
    return ::tcsetattr(descriptor, TCSANOW, &settings) == 0;
}

} // namespace

Pty::~Pty()
{
    unplug();
}

bool Pty::plugIn(const QString &path)
{
    unplug();
    char name[128] = {};
    master = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0 ||
        ::ptsname_r(master, name, sizeof(name)) != 0)
        return false;
    // Opened once: only then does this end see when nobody has the other one open.
    const int device = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    const bool fine = device >= 0 && makeRaw(device) && ::fchmod(device, 0666) == 0;
    if (device >= 0)
        ::close(device);
    link = path;
    return fine && QFile::link(QFile::decodeName(name), path);
}

void Pty::unplug()
{
    if (!link.isEmpty())
        QFile::remove(link);
    link.clear();
    if (master >= 0)
        ::close(master);
    master = -1;
}

bool Pty::isOpened() const
{
    pollfd state = {master, POLLOUT, 0};
    return master >= 0 && ::poll(&state, 1, 0) >= 0 && (state.revents & POLLHUP) == 0;
}

QByteArray Pty::read()
{
    QByteArray all;
    char buffer[4096];
    while (master >= 0) {
        // Fails while nobody has the device open.
        const ssize_t size = ::read(master, buffer, sizeof(buffer));
        if (size <= 0)
            break;
        all.append(buffer, static_cast<int>(size));
    }
    return all;
}

bool Pty::write(const QByteArray &bytes)
{
    return isOpened() && ::write(master, bytes.constData(), static_cast<size_t>(bytes.size())) ==
                             static_cast<ssize_t>(bytes.size());
}

int Pty::baud() const
{
    termios settings = {};
    if (master < 0 || ::tcgetattr(master, &settings) != 0)
        return 0;
    for (const tSpeed &speed : kSpeeds) {
        if (::cfgetospeed(&settings) == speed.constant)
            return speed.baud;
    }
    return 0;
}
