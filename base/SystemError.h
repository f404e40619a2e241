// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// What the system calls the error number `error`, an errno. Any thread.
QString systemErrorText(int error);
