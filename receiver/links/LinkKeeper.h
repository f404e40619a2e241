// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/links/ByteLink.h"

#include <QTimer>

#include <memory>

/// Keeps a link open: opens it again, after pauses that grow, when it could not be opened or was
/// lost, and says each reason once. Lives on the daemon's thread.
class LinkKeeper : public QObject
{
    Q_OBJECT
public:
    explicit LinkKeeper(std::unique_ptr<ByteLink> link, QObject *parent = nullptr);
    ~LinkKeeper() override;

    void start();
    bool isUp() const { return up; }
    ByteLink &link() { return *byteLink; }

    /// Pause before try `n`, counted from 0, of an outage: 1 s, doubled each time, up to 30 s.
    static int pauseMs(int n);

signals:
    void cameUp();
    void wentDown();
    void bytesReceived(const QByteArray &bytes);
    /// Something the user should know.
    void notice(const QString &text);
    /// What only a user who looks for a fault wants to know.
    void detail(const QString &text);

private slots:
    void tryNow();
    void noteOpened(const QString &how);
    void noteLost(const QString &reason);
    void passOn(const QByteArray &bytes);

private:
    std::unique_ptr<ByteLink> byteLink;
    QTimer timer;
    bool up = false;
    int tries = 0;      // of this outage
    QString saidReason; // of this outage
    QString saidHow;    // since the link last worked
};
