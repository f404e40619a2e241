// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// What the daemon says to its user, on standard error. One thread.
namespace Report {

/// One line after the program's name; at once.
void line(const QString &text);

/// Whether detail() says anything; it does not at first.
void setVerbose(bool verbose);

/// A line that only a user who looks for a fault wants to see.
void detail(const QString &text);

/// Whether standard error is a terminal.
bool isTerminal();

/// Shows a text below all lines until the next one, on a terminal only, cut to its width; an empty
/// one takes it away.
void setStatus(const QString &text);

} // namespace Report
