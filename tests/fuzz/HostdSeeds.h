// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "fuzz/NmeaSeeds.h"

/// Inputs for the host daemon's readers, one for each thing that they treat in its own way.
namespace HostdSeeds {

/// Receivers of many makers.
QVector<NmeaSeed> dialect();

/// Banners, version answers and binary frames of every family.
QVector<NmeaSeed> families();

QVector<NmeaSeed> transferLogs();

QVector<NmeaSeed> commands();

} // namespace HostdSeeds
