// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "base/SignalWatcher.h"

#include "base/SystemError.h"

#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

// A signal handler may do little more than write; the event loop reads the other end.
int selfPipe[2] = {-1, -1};

void onSignal(int /*number*/)
{
    const int saved = errno;
    const char byte = 0;
    // A full pipe already holds what the event loop needs to know.
    [[maybe_unused]] const ssize_t written = ::write(selfPipe[1], &byte, 1);
    errno = saved;
}

bool isIgnored(int number)
{
    struct sigaction action = {};
    return ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

SignalWatcher::SignalWatcher(QObject *parent)
    : QObject(parent)
{
}

SignalWatcher::~SignalWatcher()
{
    for (const tTaken &signal : taken)
        ::sigaction(signal.number, &signal.before, nullptr);
    notifier.reset();
    for (int &end : selfPipe) {
        if (end >= 0)
            ::close(end);
        end = -1;
    }
}

bool SignalWatcher::watch(QString *error)
{
    if (::pipe2(selfPipe, O_NONBLOCK | O_CLOEXEC) != 0) {
        const int reason = errno;
        *error = QStringLiteral("cannot watch for signals: %1").arg(systemErrorText(reason));
        return false;
    }
    notifier = std::make_unique<QSocketNotifier>(selfPipe[0], QSocketNotifier::Read);
    connect(notifier.get(), &QSocketNotifier::activated, this, &SignalWatcher::readPipe);
    take(SIGPIPE, SIG_IGN);
    take(SIGINT, onSignal);
    take(SIGTERM, onSignal);
    // Whoever starts the daemon with it ignored wants it to outlive the terminal.
    if (!isIgnored(SIGHUP))
        take(SIGHUP, onSignal);
    return true;
}

void SignalWatcher::take(int number, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    tTaken signal = {number, {}};
    if (::sigaction(number, &action, &signal.before) == 0)
        taken.push_back(signal);
}

void SignalWatcher::readPipe()
{
    char bytes[16];
    while (::read(selfPipe[0], bytes, sizeof(bytes)) > 0) {
    }
    emit endRequested();
}
