// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

/// A root folder of its own for the system's paths while it lives, with the input pipe in it when
/// asked for, and the host daemon's end of that pipe.
class InputPipe
{
public:
    InputPipe()
    {
        QDir(root.path()).mkpath(QStringLiteral("tmp"));
        qputenv("TAVRIN_ROOT", QFile::encodeName(root.path()));
    }

    ~InputPipe()
    {
        closeWriter();
        qunsetenv("TAVRIN_ROOT");
    }

    InputPipe(const InputPipe &) = delete;
    InputPipe &operator=(const InputPipe &) = delete;

    QByteArray path() const { return QFile::encodeName(root.path()) + "/tmp/agiin"; }

    bool make() { return ::mkfifo(path().constData(), 0600) == 0; }

    bool remove() { return ::unlink(path().constData()) == 0; }

    /// Without blocking: fails while nobody reads the pipe.
    bool openWriter()
    {
        closeWriter();
        writer = ::open(path().constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        return writer >= 0;
    }

    void closeWriter()
    {
        if (writer >= 0)
            ::close(writer);
        writer = -1;
    }

    bool write(const QByteArray &bytes)
    {
        return ::write(writer, bytes.constData(), static_cast<std::size_t>(bytes.size())) ==
               bytes.size();
    }

private:
    QTemporaryDir root;
    int writer = -1;
};
