// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/families/ReceiverFamily.h"
#include "receiver/links/NetAddress.h"

#include <QString>

#include <optional>

/// Where a real receiver is and how it is treated.
struct tLiveSettings
{
    enum class Kind {
        Serial,
        Gpsd,
        Tcp, ///< NMEA over IP
    };

    Kind kind = Kind::Serial;
    QString device;          ///< path, only for Serial
    std::optional<int> baud; ///< bit/s, only for Serial; nothing to find it by trying
    tNetAddress address;     ///< not for Serial
    std::optional<ReceiverFamily::Family> family; ///< nothing to find it out
    QString recordFile;                           ///< empty for no recording
};
