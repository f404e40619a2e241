// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/Report.h"

#include <cstdio>

namespace Report {

void line(const QString &text)
{
    // One call a line, so that lines of two daemons on one terminal do not mix.
    const QByteArray bytes = QByteArrayLiteral("tavrin-hostd: ") + text.toLocal8Bit() + '\n';
    // Nobody is left to be told when this fails.
    static_cast<void>(std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stderr));
    static_cast<void>(std::fflush(stderr));
}

} // namespace Report
