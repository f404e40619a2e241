// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>

#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

/// A named pipe in the place of the key device below a root folder, and its writing end.
class KeyDevice
{
public:
    /// Where the fields of a record are, in bytes.
    struct Layout
    {
        int size;
        int type;
        int code;
        int value;
    };
    static constexpr Layout k32Bit = {16, 8, 10, 12};
    static constexpr Layout k64Bit = {24, 16, 18, 20};

    /// Makes the folders, not the device.
    explicit KeyDevice(const QString &root)
        : path(QFile::encodeName(
              root + QStringLiteral("/dev/input/by-path/platform-10d80000.adc:adc-keys-event")))
    {
        QDir().mkpath(QFileInfo(QFile::decodeName(path)).path());
    }

    ~KeyDevice() { closeWriter(); }

    KeyDevice(const KeyDevice &) = delete;
    KeyDevice &operator=(const KeyDevice &) = delete;

    const QByteArray &fileName() const { return path; }

    bool make() const { return ::mkfifo(path.constData(), 0600) == 0; }

    /// Without blocking: fails while nobody has opened the pipe for reading. Nothing happens when
    /// it is open, for QTRY_VERIFY() asks twice and a writer that goes ends the reader.
    bool openWriter()
    {
        if (writer >= 0)
            return true;
        writer = ::open(path.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        return writer >= 0;
    }

    void closeWriter()
    {
        if (writer >= 0)
            ::close(writer);
        writer = -1;
    }

    bool write(const QByteArray &bytes) const
    {
        return ::write(writer, bytes.constData(), static_cast<std::size_t>(bytes.size())) ==
               bytes.size();
    }

    /// A record whose time stamp is full of bytes that mean something elsewhere.
    static QByteArray record(int type, int code, int value, const Layout &layout = k32Bit)
    {
        QByteArray bytes(layout.size, '\x01');
        const auto type16 = static_cast<quint16>(type);
        const auto code16 = static_cast<quint16>(code);
        std::memcpy(bytes.data() + layout.type, &type16, sizeof(type16));
        std::memcpy(bytes.data() + layout.code, &code16, sizeof(code16));
        std::memcpy(bytes.data() + layout.value, &value, sizeof(value));
        return bytes;
    }

private:
    QByteArray path;
    int writer = -1;
};
