// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <optional>

/// Where a server is.
struct tNetAddress
{
    QString host;
    quint16 port = 0;
    QString rest; ///< what stands behind the port and a further colon

    /// "host:port", an IPv6 address in brackets.
    QString text() const;
};

/// Reads HOST[:PORT[:REST]]; an IPv6 address with a port stands in brackets, one without a port may
/// stand alone. Nothing when it is none.
std::optional<tNetAddress> parseNetAddress(const QString &text, quint16 usualPort);
