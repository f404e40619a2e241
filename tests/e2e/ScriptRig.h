// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/BoundProcess.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// Scripts of the project in a folder of their own, where they find the programs of this build. A
/// stand-in for dpkg-query says that every package is installed, so that no test installs one.
class ScriptRig
{
public:
    /// `folder`: the name of the folder, for which a build may mind what it is.
    explicit ScriptRig(const QString &folder = QStringLiteral("project"));

    /// Copies a script, or another file of the project, to its place in the folder.
    bool add(const QString &file) const;
    /// Puts a program of this build below build/release/bin.
    bool addProgram(const QString &program) const;
    /// Makes a shell script that is found before the machine's program of that name.
    bool addTool(const QString &name, const QByteArray &text) const;

    /// A file of the folder.
    QString path(const QString &file) const;

    /// A script of the folder, to be started from `caller`, with its output still to be read.
    void set(BoundProcess &script, const QString &file, const QStringList &arguments,
             const QString &caller) const;

private:
    QTemporaryDir directory;
    QString folderName;
};
