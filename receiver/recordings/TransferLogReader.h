// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/recordings/TransferLog.h"

#include <QVector>

/// One entry of a transfer log.
struct tTransferRecord
{
    TransferLog::Kind kind = TransferLog::Kind::Remark;
    qint64 timeUs = 0; ///< since the recording began
    QByteArray bytes;
};

/// Reads transfer logs from bytes that come in any pieces. One thread at a time.
class TransferLogReader
{
public:
    /// Most bytes of one record.
    static constexpr int kMaxRecord = 65536;

    /// Whether a file that begins with these bytes is a transfer log. Give it at least as many as
    /// the signature and one more, or the whole of a shorter file.
    static bool isLog(const QByteArray &head);

    /// The records that these bytes complete. After something that is no record there are none.
    QVector<tTransferRecord> feed(const QByteArray &bytes);

    /// Whether something was met that is no record. A record that is only begun is none of it.
    bool isBroken() const { return broken; }

private:
    enum class Step { Taken, NeedsMore, Broken };

    Step takeHead();
    Step takeRecord(QVector<tTransferRecord> &out);

    QByteArray open; // from `at` on not yet taken
    int at = 0;
    bool inHead = true;
    bool broken = false;
};
