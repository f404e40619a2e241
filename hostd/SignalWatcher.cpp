// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/SignalWatcher.h"

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

void handle(int number, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    ::sigaction(number, &action, nullptr);
}

} // namespace

SignalWatcher::SignalWatcher(QObject *parent)
    : QObject(parent)
{
    handle(SIGPIPE, SIG_IGN);
    if (::pipe2(selfPipe, O_NONBLOCK | O_CLOEXEC) != 0)
        return;
    notifier = std::make_unique<QSocketNotifier>(selfPipe[0], QSocketNotifier::Read);
    connect(notifier.get(), &QSocketNotifier::activated, this, &SignalWatcher::readPipe);
    handle(SIGINT, onSignal);
    handle(SIGTERM, onSignal);
}

SignalWatcher::~SignalWatcher()
{
    handle(SIGINT, SIG_DFL);
    handle(SIGTERM, SIG_DFL);
    notifier.reset();
    for (int &end : selfPipe) {
        if (end >= 0)
            ::close(end);
        end = -1;
    }
}

void SignalWatcher::readPipe()
{
    char bytes[16];
    while (::read(selfPipe[0], bytes, sizeof(bytes)) > 0) {
    }
    emit endRequested();
}
