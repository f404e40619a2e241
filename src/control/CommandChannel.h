// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// Writes one command sentence to the receiver's command pipe, in an open of its own: the reader
/// takes one sentence per open. `command` is the whole sentence with its line end; an empty one
/// still opens and closes the pipe. `debugText` is traced with `logTag` after a successful open,
/// its "%1" replaced by the command; a failed open is traced as "File (path): reason". The caller
/// is told nothing and carries on either way.
///
/// The open blocks, without a limit, until a reader has the pipe open. User-interface thread.
void sendCommand(const QString &command, const QString &logTag, const QString &debugText);

/// Asks the receiver to store its memory, with a trace under the tag "NVM Store". As sendCommand().
void sendNvmStore();

/// The program is about to end: a command that waits for a reader of the pipe, or will, goes on
/// without one after a second. What is written then reaches nobody, but the program can end even
/// where the receiver's side is gone. Where the pipe must not be read, which that takes, the
/// process ends with 0 half a second later. User-interface thread.
void limitCommandWaits();
