// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "hostd/CommandLine.h"

/// Reads the arguments of the command of a real receiver: the program's own name, then what stands
/// behind the command.
tCommandLine parseLive(tLiveSettings::Kind kind, const QStringList &arguments);
