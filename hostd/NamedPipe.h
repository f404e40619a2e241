// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QString>

/// A named pipe in the file system. One that was made here can be read and written by every user
/// and is removed again by the destructor, unless the path names something else by then; one that
/// was there before is left alone.
class NamedPipe
{
public:
    enum class OrdinaryFile { Refuse, Replace };

    /// `path` in the local 8-bit encoding.
    explicit NamedPipe(const QByteArray &path);
    ~NamedPipe();
    NamedPipe(const NamedPipe &) = delete;
    NamedPipe &operator=(const NamedPipe &) = delete;

    const QByteArray &path() const { return pipePath; }

    /// Makes the pipe and the folders above it where they are absent. `ordinaryFile` says what
    /// happens to an ordinary file in its place; anything else there is an error. False with
    /// `error` set when there is no pipe afterwards; `notice` is set when a file was replaced.
    bool make(OrdinaryFile ordinaryFile, QString *error, QString *notice);

    /// Whether the path still names the pipe that the descriptor is open on.
    bool isOpenOn(int descriptor) const;

private:
    bool makeNew(QString *error);
    void holdMade();
    bool namesThePipeMadeHere() const;
    void letGo();

    QByteArray pipePath;
    // On the pipe that was made here, -1 without one. It neither reads nor writes: as long as it is
    // open, the file system cannot give the pipe's number to another file.
    int made = -1;
};
