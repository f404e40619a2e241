// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QMutex>
#include <QMutexLocker>

#include <array>
#include <atomic>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

/// The device's side of the command pipe: a thread of its own that reads a real FIFO and notes the
/// bytes of every open by a writer. It knows nothing of the code that writes.
class CommandPipeReader
{
public:
    /// Makes the FIFO when it is absent, counts the writers' opens from now on, and reads.
    explicit CommandPipeReader(QByteArray fifoPath)
        : path(std::move(fifoPath))
        , watch(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        mkfifo(path.constData(), 0600);
        // The opens are watched as well because equal events in a row would be merged into one.
        if (inotify_add_watch(watch, path.constData(), IN_OPEN | IN_CLOSE_WRITE) < 0)
            std::abort();
        thread = std::thread([this] { run(); });
    }

    ~CommandPipeReader()
    {
        stop = true;
        thread.join();
        close(watch);
    }

    CommandPipeReader(const CommandPipeReader &) = delete;
    CommandPipeReader &operator=(const CommandPipeReader &) = delete;

    /// What was read, an element for each time that all writers had gone.
    QByteArrayList sentences() const
    {
        const QMutexLocker locker(&mutex);
        // A copy of its own while the lock is held: what Qt shares is given up without it.
        QByteArrayList copy = finished;
        copy.detach();
        return copy;
    }

    int count() const { return sentences().size(); }

    /// How often a writer closed the FIFO, as the kernel counts it.
    int writerCloses()
    {
        alignas(inotify_event) std::array<char, 4096> buffer{};
        for (;;) {
            const ssize_t length = read(watch, buffer.data(), buffer.size());
            if (length <= 0)
                return closes;
            for (ssize_t at = 0; at < length;) {
                const auto *const event = reinterpret_cast<const inotify_event *>(
                    static_cast<const void *>(buffer.data() + at));
                closes += (event->mask & IN_CLOSE_WRITE) != 0 ? 1 : 0;
                at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            }
        }
    }

private:
    void run()
    {
        int pipe = openPipe();
        while (!stop) {
            readUntilWritersLeft(pipe);
            // Without a reader in between, the pipe would lose what a quick writer left in it.
            const int next = openPipe();
            close(pipe);
            pipe = next;
        }
        close(pipe);
    }

    int openPipe() const { return open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC); }

    void readUntilWritersLeft(int pipe)
    {
        QByteArray bytes;
        std::array<char, 4096> buffer{};
        while (!stop) {
            pollfd waiting{pipe, POLLIN, 0};
            // A writer that came and went before this descriptor was opened leaves its bytes but no
            // hang-up: then only a read tells that it has gone.
            if (poll(&waiting, 1, 5) <= 0 && bytes.isEmpty())
                continue;
            const ssize_t length = read(pipe, buffer.data(), buffer.size());
            if (length > 0) {
                bytes.append(buffer.data(), static_cast<int>(length));
                continue;
            }
            if (length == 0) {
                const QMutexLocker locker(&mutex);
                finished.append(bytes);
                return;
            }
        }
    }

    const QByteArray path;
    const int watch;
    int closes = 0;
    mutable QMutex mutex;
    QByteArrayList finished;
    std::atomic<bool> stop = false;
    std::thread thread;
};
