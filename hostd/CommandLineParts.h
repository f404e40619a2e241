// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "hostd/CommandLine.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QLatin1String>

/// What the readers of the single commands share.
namespace CommandLineParts {

/// The class's own way of finding the length is no constant expression with every compiler.
template<std::size_t size>
constexpr QLatin1String latin1(const char (&text)[size])
{
    return QLatin1String(text, static_cast<int>(size) - 1);
}

constexpr QLatin1String kHelp = latin1("help");
constexpr QLatin1String kVerbose = latin1("verbose");

/// Wrong usage, with what is wrong.
tCommandLine failed(const QString &text);

/// A text for standard output.
tCommandLine shown(const QString &text);

/// The parser's own help option brings a second one that is about Qt.
QCommandLineOption helpOption();

QCommandLineOption verboseOption();

/// The help of a command: usage line, options, examples.
QString helpOf(const QCommandLineParser &parser, const char *usage, const char *examples);

} // namespace CommandLineParts
