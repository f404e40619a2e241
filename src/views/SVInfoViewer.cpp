// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "views/SVInfoViewer.h"

#include <algorithm>

SVInfoViewer::SVInfoViewer(QWidget *parent)
    : QWidget(parent)
{
}

void SVInfoViewer::setSvInfo(const tSvInfo *entries, qint32 count)
{
    svCount = std::clamp<qint32>(count, 0, kMaxSatellites);
    std::copy_n(entries, svCount, svInfo);
}
