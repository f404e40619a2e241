// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "control/NVMWriter.h"

#include "config/DebugOutput.h"
#include "control/CommandChannel.h"
#include "control/EventWait.h"
#include "gnss/GnssInfo.h"

#include <QAbstractEventDispatcher>
#include <QThread>

namespace {

/// Time that the receiver is given after its first fix to collect what is worth storing.
constexpr int kStoreDelayMs = 36000;

} // namespace

NVMWriter::NVMWriter(QObject *parent)
    : QObject(parent)
    , gnssInfo(GnssInfo::instance())
{
    connect(gnssInfo, &GnssInfo::nvmUpdate, this, &NVMWriter::nvmStoreToFlash);
}

NVMWriter::~NVMWriter()
{
    disconnect(gnssInfo, nullptr, this, nullptr);
}

void NVMWriter::requestStop()
{
    stopFlag = 1;
    if (QAbstractEventDispatcher *const dispatcher = QAbstractEventDispatcher::instance(thread()))
        dispatcher->wakeUp();
}

void NVMWriter::nvmStoreToFlash()
{
    debugPrint(1, QStringLiteral("nvmStoreToFlash"), QStringLiteral("nvmStoreToFlash run!"));
    waitProcessingEvents(kStoreDelayMs, [this] { return stopFlag == 1; });
    sendNvmStore();
}
