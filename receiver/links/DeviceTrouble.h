// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// Why a device file cannot be used, in words that help the user on. Any thread.
namespace DeviceTrouble {

/// The processes, other than this one, that have the file open, "gpsd (812), cat (913)"; empty when
/// none is seen. Other users' processes are only seen by root.
QString holders(const QString &device);

/// Why the device cannot be read and written by this user, and what to do; empty when it can.
QString missingPermission(const QString &device);

/// The same for given facts: the file's group, whether the group may read and write it, and whether
/// this user is in the group.
QString permissionText(const QString &device, const QString &group, bool groupMay, bool inGroup);

} // namespace DeviceTrouble
