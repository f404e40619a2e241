// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// Highest level that debugPrint() lets through. Read-only after start-up.
extern int debugLevel;

/// The tag of the main window and the satellite page: empty, and meant to stay so.
extern const QString TAG;

/// True when a debug message of the "default" category reaches standard error at all
/// (`QT_LOGGING_RULES=default.debug=false` silences it). Any thread.
bool debugStreamEnabled();

/// Writes a message of its own form, without tag and level, as `qDebug() << message` would: in
/// quotes, with what is not printable escaped. Any thread.
void debugMessage(const QString &message);

/// True when debugPrint() would print a message of this level; ask before building a costly one.
/// Any thread.
bool debugEnabled(int level);

/// Writes "d> tag: message" when `level` is at most debugLevel. Any thread.
void debugPrint(int level, const QString &tag, const QString &message);

/// Writes `text` to standard output as it is, at once. Any thread.
void consolePrint(const char *text);

/// Writes "E> tag: message". Any thread.
void errorPrint(const QString &tag, const QString &message);

/// Writes "W> tag: message". Any thread.
void warningPrint(const QString &tag, const QString &message);
