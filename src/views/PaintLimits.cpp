// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "views/PaintLimits.h"

#include <algorithm>
#include <cmath>

namespace PaintLimits {

double limited(double value)
{
    return std::isnan(value) ? 0.0 : std::clamp(value, -kFarthest, kFarthest);
}

int truncated(double value)
{
    return static_cast<int>(limited(value));
}

} // namespace PaintLimits
