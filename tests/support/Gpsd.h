// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/BoundProcess.h"

#include <QStringList>

/// A gpsd of one's own, beside whichever the machine runs.
class Gpsd
{
public:
    Gpsd() = default;
    ~Gpsd();
    Q_DISABLE_COPY(Gpsd)

    /// A port that nobody listens on; a server that takes it at once is all that could be in the
    /// way. 0 when there is none.
    static quint16 freePort();

    /// Starts it with its receiver among the arguments and waits until it takes clients at the
    /// port. False when there is no gpsd.
    bool start(quint16 port, const QStringList &arguments);

    /// Ends it as the system does, and waits for its end.
    bool stop();

    /// Satellites in the latest list that it has of its receiver; 0 when it does not tell.
    int satellitesInView() const;

    qint64 processId() const { return daemon.processId(); }

private:
    BoundProcess daemon;
    quint16 clientPort = 0;
};
