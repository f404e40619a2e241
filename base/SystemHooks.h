// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>

/// The places where the program meets the machine's paths and clock, gathered so that tests and
/// several receivers on one machine can have their own.
namespace SystemHooks {

/// The pipe with the receiver's NMEA text, for systemPath().
constexpr const char *kNmeaPipe = "/tmp/agiin";
/// The pipe for the commands to the receiver, for systemPath().
constexpr const char *kCommandPipe = "/tmp/agiout";

/// The path to use for one of the device's fixed absolute paths, in the local 8-bit encoding: the
/// value of the environment variable TAVRIN_ROOT, normally empty, put before it. Any thread.
QByteArray systemPath(const char *devicePath);

/// Real length, in milliseconds, of a wait that is nominally `nominalMs` long. The identity unless
/// a test replaced it with setWaitLength(). Any thread.
int waitLength(int nominalMs);

/// Replaces waitLength(); null restores the identity. For tests, before any thread runs.
void setWaitLength(int (*waitLength)(int nominalMs));

} // namespace SystemHooks
