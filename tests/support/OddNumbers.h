// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>

/// Numbers that a broken or hostile sentence can bring to a page, and worse.
constexpr double kOddNumbers[] = {
    std::numeric_limits<double>::quiet_NaN(),
    std::numeric_limits<double>::infinity(),
    -std::numeric_limits<double>::infinity(),
    1e308,
    -1e308,
    2147483648.0,
    -2147483649.0,
    1e-308,
};
