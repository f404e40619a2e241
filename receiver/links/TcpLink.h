// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/links/ByteLink.h"
#include "receiver/links/NetAddress.h"

#include <QTcpSocket>
#include <QTimer>

/// A receiver, or a server that passes its bytes on, behind a TCP connection. Notices within half a
/// minute when the network is gone.
class TcpLink : public ByteLink
{
    Q_OBJECT
public:
    explicit TcpLink(const tNetAddress &address, QObject *parent = nullptr);
    ~TcpLink() override;

    QString name() const override { return address.text(); }
    void open() override;
    void close() override;
    bool write(const QByteArray &bytes, QString *error) override;

private slots:
    void greet();
    void fail();
    void takeReceived();

private:
    tNetAddress address;
    QTcpSocket socket;
    QTimer connectTimer;
    int attempt = 0; // tells what was queued for an earlier connection
};
