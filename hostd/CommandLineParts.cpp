// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/CommandLineParts.h"

namespace CommandLineParts {

tCommandLine failed(const QString &text)
{
    tCommandLine result;
    result.action = tCommandLine::Action::Fail;
    result.text = text;
    return result;
}

tCommandLine shown(const QString &text)
{
    tCommandLine result;
    result.action = tCommandLine::Action::ShowText;
    result.text = text;
    return result;
}

QCommandLineOption helpOption()
{
    return {{QStringLiteral("h"), kHelp}, QStringLiteral("Displays this help.")};
}

QCommandLineOption verboseOption()
{
    return {kVerbose,
            QStringLiteral("Says everything that happens, and the counts every ten seconds.")};
}

QString helpOf(const QCommandLineParser &parser, const char *usage, const char *examples)
{
    QString help = parser.helpText();
    // The parser names the running file with its whole path, and knows nothing of commands.
    const int lineEnd = help.indexOf(QLatin1Char('\n'));
    return QStringLiteral("Usage: tavrin-hostd %1").arg(QString::fromLatin1(usage)) +
           help.mid(lineEnd) + QString::fromLatin1(examples);
}

} // namespace CommandLineParts
