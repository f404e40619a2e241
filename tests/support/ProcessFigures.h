// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtGlobal>

#include <optional>

/// What the system counts for a running process. Nothing where the process is gone.
namespace ProcessFigures {

/// Memory that is in RAM, in kB.
struct tMemory
{
    qint64 residentKb = 0;
    qint64 privateKb = 0; ///< of it, what it has written itself: no other process can share that
};

/// Processor time of all threads so far, in seconds.
std::optional<double> processorTime(qint64 processId);

std::optional<tMemory> memory(qint64 processId);

/// Open file descriptors; 0 where the process is gone.
int openFiles(qint64 processId);

/// 0 where the process is gone.
int threads(qint64 processId);

} // namespace ProcessFigures
