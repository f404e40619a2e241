// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Bits of the mask with which the viewer chooses the receiver's constellations.
namespace ConstellationMask {

constexpr unsigned kGps = 0x01;
constexpr unsigned kGlonass = 0x02;
constexpr unsigned kGalileo = 0x04;
constexpr unsigned kBeiDou = 0x08;
constexpr unsigned kSbas = 0x10;
constexpr unsigned kQzss = 0x20;
constexpr unsigned kAll = 0x3f;
/// Those that make a fix by themselves; SBAS and QZSS only assist.
constexpr unsigned kCore = kGps | kGlonass | kGalileo | kBeiDou;
/// Those of a receiver as it comes from the factory.
constexpr unsigned kDefault = kCore;

} // namespace ConstellationMask
