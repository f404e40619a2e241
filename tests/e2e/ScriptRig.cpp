// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "e2e/ScriptRig.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcessEnvironment>

namespace {

bool makeFolderOf(const QString &file)
{
    return QDir().mkpath(QFileInfo(file).path());
}

} // namespace

ScriptRig::ScriptRig(const QString &folder)
    : folderName(folder)
{
    addTool(QStringLiteral("dpkg-query"), "echo installed");
}

bool ScriptRig::add(const QString &file) const
{
    return makeFolderOf(path(file)) &&
           QFile::copy(QStringLiteral(PROJECT_FOLDER "/") + file, path(file));
}

bool ScriptRig::addProgram(const QString &program) const
{
    const QString place =
        path(QStringLiteral("build/release/bin/") + QFileInfo(program).fileName());
    return makeFolderOf(place) && QFile::link(program, place);
}

bool ScriptRig::addTool(const QString &name, const QByteArray &text) const
{
    QFile tool(directory.filePath(QStringLiteral("tools/") + name));
    return makeFolderOf(tool.fileName()) && tool.open(QIODevice::WriteOnly) &&
           tool.write("#!/bin/sh\n" + text + '\n') > 0 &&
           tool.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

QString ScriptRig::path(const QString &file) const
{
    return directory.filePath(folderName + QLatin1Char('/') + file);
}

void ScriptRig::set(BoundProcess &script, const QString &file, const QStringList &arguments,
                    const QString &caller) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("PATH"), directory.filePath(QStringLiteral("tools:")) +
                                                   environment.value(QStringLiteral("PATH")));
    script.setProcessEnvironment(environment);
    script.setWorkingDirectory(caller);
    script.setProgram(path(file));
    script.setArguments(arguments);
}
