// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>

/// Lets a receiver's bytes through or not, and changes from one to the other only between two
/// sentences. Bytes outside of any sentence are never waited for. One thread.
class SentenceGate
{
public:
    void setOpen(bool open) { wanted = open; }

    /// What of these bytes goes through.
    QByteArray passed(const QByteArray &bytes);

private:
    bool wanted = true;
    bool passing = true;
    int length = 0; // of the open sentence so far, 0 outside of one
};
