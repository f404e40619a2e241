// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// What the daemon says to its user.
namespace Report {

/// One line on standard error, after the program's name; at once.
void line(const QString &text);

} // namespace Report
