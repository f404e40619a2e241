// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "base/Report.h"

#include <QByteArray>

#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr char kEraseLine[] = "\r\x1b[K";

bool verboseLines = false;
QByteArray &shownStatus()
{
    static QByteArray status;
    return status;
}

void write(const QByteArray &bytes)
{
    // Nobody is left to be told when this fails.
    static_cast<void>(std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stderr));
    static_cast<void>(std::fflush(stderr));
}

// A line that wraps could not be taken away again.
int terminalWidth()
{
    constexpr int kUsualWidth = 80;
    winsize size = {};
    const bool known = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    return known ? size.ws_col : kUsualWidth;
}

} // namespace

namespace Report {

void line(const QString &text)
{
    // One call a line, so that lines of two daemons on one terminal do not mix.
    const QByteArray whole = QByteArrayLiteral("tavrin-hostd: ") + text.toLocal8Bit() + '\n';
    write(shownStatus().isEmpty() ? whole : kEraseLine + whole + shownStatus());
}

void setVerbose(bool verbose)
{
    verboseLines = verbose;
}

void detail(const QString &text)
{
    if (verboseLines)
        line(text);
}

bool isTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}

void setStatus(const QString &text)
{
    if (!isTerminal() || (text.isEmpty() && shownStatus().isEmpty()))
        return;
    shownStatus() = text.left(terminalWidth() - 1).toLocal8Bit();
    write(kEraseLine + shownStatus());
}

} // namespace Report
