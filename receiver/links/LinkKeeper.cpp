// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/links/LinkKeeper.h"

#include "base/SystemHooks.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int kFirstPauseMs = 1000;
constexpr int kLongestPauseMs = 30000;
constexpr int kDoublings = 5; // enough to pass the longest pause

} // namespace

LinkKeeper::LinkKeeper(std::unique_ptr<ByteLink> keptLink, QObject *parent)
    : QObject(parent)
    , byteLink(std::move(keptLink))
{
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, byteLink.get(), &ByteLink::open);
    connect(byteLink.get(), &ByteLink::opened, this, &LinkKeeper::noteOpened);
    connect(byteLink.get(), &ByteLink::lost, this, &LinkKeeper::noteLost);
    connect(byteLink.get(), &ByteLink::bytesReceived, this, &LinkKeeper::passOn);
    connect(byteLink.get(), &ByteLink::appeared, this, &LinkKeeper::tryNow);
    connect(byteLink.get(), &ByteLink::notice, this, &LinkKeeper::notice);
}

LinkKeeper::~LinkKeeper()
{
    byteLink->disconnect(this);
}

void LinkKeeper::start()
{
    byteLink->open();
}

int LinkKeeper::pauseMs(int n)
{
    return std::min(kFirstPauseMs << std::min(n, kDoublings), kLongestPauseMs);
}

void LinkKeeper::tryNow()
{
    if (!timer.isActive())
        return;
    timer.stop();
    byteLink->open();
}

void LinkKeeper::noteOpened(const QString &how)
{
    up = true;
    const QString text = QStringLiteral("%1 is open").arg(byteLink->name()) +
                         (how.isEmpty() ? QString() : QLatin1Char(' ') + how);
    // Somebody who accepts and hangs up again and again is not worth a line each time.
    if (text != saidHow)
        emit notice(text);
    else
        emit detail(text);
    saidHow = text;
    emit cameUp();
}

void LinkKeeper::noteLost(const QString &reason)
{
    const int pause = pauseMs(tries++);
    const bool wasUp = std::exchange(up, false);
    const QString text = QStringLiteral("%1: %2").arg(byteLink->name(), reason);
    if (reason != saidReason) {
        emit notice(text + QStringLiteral("; trying again"));
        saidHow.clear();
    }
    emit detail(QStringLiteral("%1; next try in %2 s").arg(text).arg(pause / 1000));
    saidReason = reason;
    timer.start(SystemHooks::waitLength(pause));
    if (wasUp)
        emit wentDown();
}

// Only a link that brings something works; the next outage is a new one then.
void LinkKeeper::passOn(const QByteArray &bytes)
{
    tries = 0;
    saidReason.clear();
    saidHow.clear();
    emit bytesReceived(bytes);
}
