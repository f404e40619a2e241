// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "gnss/ReadNMEAThread.h"

#include "config/DebugOutput.h"
#include "gnss/NmeaReader.h"

namespace {

constexpr int kOpenPeriodMs = 1000;

void trace(const QString &message)
{
    debugPrint(1, QStringLiteral("ReadNMEAThread"), message);
}

} // namespace

ReadNMEAThread::ReadNMEAThread(QObject *parent)
    : QThread(parent)
{
}

ReadNMEAThread::~ReadNMEAThread()
{
    requestStop();
    wait();
}

void ReadNMEAThread::stopReading()
{
    // The flag first: either the thread sees it, or the reader is already there to be interrupted.
    stopFlag = true;
    if (NmeaReader *const current = reader)
        current->interrupt();
}

void ReadNMEAThread::requestStop()
{
    stopReading();
    exitRequested = true;
    exit(0);
}

void ReadNMEAThread::clearBuffer()
{
    if (NmeaReader *const current = reader)
        current->clearBuf();
}

void ReadNMEAThread::run()
{
    trace(QStringLiteral("ReadNMEAThread run"));
    ownedReader = std::make_unique<NmeaReader>();
    reader = ownedReader.get();
    openInput();
    readInput();
    trace(QStringLiteral("ReadNMEAThread stopReading"));
    readingFlag = false;
    emit tryStart(false);
    // start() forgets an exit() that came before it, exec() would then never return.
    if (!exitRequested)
        exec();
}

void ReadNMEAThread::openInput()
{
    bool opened = false;
    while (!opened && !stopFlag) {
        trace(QStringLiteral("ReadNMEAThread try to start"));
        ownedReader->sleep(kOpenPeriodMs);
        if (stopFlag)
            return;
        emit tryStart(false);
        opened = ownedReader->notifier_start();
    }
}

void ReadNMEAThread::readInput()
{
    while (!stopFlag) {
        if (ownedReader->notifier_process(0) < 1)
            continue;
        readingFlag = true;
        emit tryStart(true);
    }
}
