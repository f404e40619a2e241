// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

/// What keeps odd values of the receiver from harming the drawing. A text like "1e300" in a
/// sentence is a finite number; turned into a pixel position it would be no int, and not-a-number
/// would follow from it soon. Ordinary values pass through unchanged. Any thread.
namespace PaintLimits {

/// Farthest coordinate handed to a painter, in pixels or plot units: far outside every screen, yet
/// whole numbers up to it are exact in single precision.
constexpr double kFarthest = 16777216.0;

/// `value` brought into [-kFarthest, kFarthest]; not-a-number becomes 0.
double limited(double value);

/// limited(), then truncated towards zero.
int truncated(double value);

} // namespace PaintLimits
