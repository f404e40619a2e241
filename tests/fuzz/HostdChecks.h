// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QString>

/// What the host daemon's readers have to do with any input whatsoever. Each function returns an
/// empty text, or the first thing that is wrong.
namespace HostdChecks {

/// A receiver's bytes through the dialect: however they are cut the sentences are the same, and
/// every sentence is one that the device could have sent.
QString dialectFault(const QByteArray &bytes);

/// A receiver's bytes through the search for its family: however they are cut the result is the
/// same, and it can be commanded.
QString familyFault(const QByteArray &bytes);

/// A transfer log: however it is cut the records are the same, and writing them gives them again.
QString transferLogFault(const QByteArray &bytes);

/// The bytes of the command pipe: however they are cut the commands are the same, and all families
/// know what to do with them.
QString commandFault(const QByteArray &bytes);

} // namespace HostdChecks
