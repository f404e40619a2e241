// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Publications.h"

#include <QByteArray>
#include <QString>

#include <vector>

/// Feeds NmeaReader with the same bytes cut in different ways: what is published must not depend on
/// how the pipe happened to deliver them.
namespace ReadSizes {

/// The sizes that every input is read in; the last one is that of the program's own reads of a
/// busy pipe.
constexpr int kAll[] = {1, 7, 1000, 65536};

/// What one reading of all bytes left behind.
struct Result
{
    std::vector<Publication> published;
    Publication last;
    QString text;
};

/// Reads `bytes` from the state in which the program starts.
Result play(const QByteArray &bytes, int readSize);

/// Empty when the reader does what it must with `bytes`, however they are cut: agrees with
/// PlainDecoder, keeps the same text, and publishes the same unless a sentence is too long to be
/// kept from read to read. Otherwise tells the first difference.
QString fault(const QByteArray &bytes);

} // namespace ReadSizes
