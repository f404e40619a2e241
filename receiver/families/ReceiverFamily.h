// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "base/ReceiverCommand.h"

#include <QByteArray>
#include <QString>
#include <QVector>

#include <optional>

/// How a kind of receiver wants to be told what the viewer commands. Pure functions, any thread.
namespace ReceiverFamily {

/// The command languages of commodity receivers.
enum class Family {
    None,     ///< not known, or one that takes no commands
    Pmtk,     ///< MediaTek MT33xx
    Pair,     ///< Airoha AG33xx
    Pqtm,     ///< Quectel's own, LG290P and its relatives
    Ubx,      ///< u-blox
    Casic,    ///< Zhongke AT65xx
    Allystar, ///< Allystar, Cynosure
    Unicore,  ///< UM98x and UFirebird, two languages of one maker
    Sirf,     ///< SiRF III and IV, NMEA mode
};

/// The two languages within Family::Unicore.
enum class UnicoreKind {
    Unknown,
    HighPrecision, ///< UM98x, UM48x: ASCII lines
    Firebird,      ///< UM220, UC6580: sentences without an ordinary talker
};

/// What a receiver has told of itself, where the family alone does not settle the form of a
/// command.
struct tDetails
{
    int ubxProtocol = 0;         ///< u-blox protocol version times 100; 0 is unknown
    unsigned constellations = 0; ///< ConstellationMask bits that it can receive; 0 is unknown
    UnicoreKind unicore = UnicoreKind::Unknown;
};

/// Bytes for the receiver that belong together.
struct tFrame
{
    QByteArray bytes;
    int pauseMs = 0; ///< to leave after them before anything else is sent
};

/// A command in the language of a family.
struct tFamilyCommand
{
    bool supported = false;
    QVector<tFrame> frames;     ///< in the order of sending; empty when not supported
    QString text;               ///< what is sent, what of it is not supported, and why; one line
    bool mayChangeBaud = false; ///< the receiver may go back to its maker's baud rate
};

/// All families, None last.
QVector<Family> all();

/// The name on the command line, "pmtk" for instance, "none" for None.
QString name(Family family);

/// The family of such a name.
std::optional<Family> parse(const QString &name);

/// Bytes as a person can read them: text without its line end, everything else in hexadecimal.
QString readable(const QByteArray &bytes);

/// The command for a receiver of this family.
tFamilyCommand encode(Family family, const tReceiverCommand &command, const tDetails &details = {});

} // namespace ReceiverFamily
