// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "base/ReceiverCommand.h"

#include "base/NmeaFraming.h"

namespace {

using Kind = tReceiverCommand::Kind;

struct tFixedCommand
{
    const char *text;
    Kind kind;
};

constexpr tFixedCommand kFixedCommands[] = {
    {"PPLMS,0", Kind::Start},     {"PPLMS,1", Kind::Stop},      {"PPLMG,1", Kind::HotStart},
    {"PPLMG,2", Kind::WarmStart}, {"PPLMG,3", Kind::ColdStart}, {"PPLMG,7", Kind::FactoryStart},
    {"PPLMT,0", Kind::StoreNvm},
};
struct tConstellationName
{
    unsigned bit;
    const char *name;
};

constexpr tConstellationName kConstellationNames[] = {
    {ConstellationMask::kGps, "GPS"},         {ConstellationMask::kGlonass, "GLONASS"},
    {ConstellationMask::kGalileo, "Galileo"}, {ConstellationMask::kBeiDou, "BeiDou"},
    {ConstellationMask::kSbas, "SBAS"},       {ConstellationMask::kQzss, "QZSS"},
};

constexpr char kMaskCommand[] = "PPLMB,70,";
constexpr int kMaxMaskDigits = 8;

} // namespace

bool isReset(tReceiverCommand::Kind kind)
{
    return kind == tReceiverCommand::Kind::HotStart || kind == tReceiverCommand::Kind::WarmStart ||
           kind == tReceiverCommand::Kind::ColdStart ||
           kind == tReceiverCommand::Kind::FactoryStart;
}

std::optional<tReceiverCommand> parseReceiverCommand(const QByteArray &sentence)
{
    const std::optional<NmeaFraming::tFramed> framed = NmeaFraming::unframed(sentence);
    if (!framed || !framed->behind.isEmpty())
        return std::nullopt;
    const QByteArray &body = framed->body;
    for (const tFixedCommand &command : kFixedCommands) {
        if (body == command.text)
            return tReceiverCommand{command.kind, 0};
    }
    if (!body.startsWith(kMaskCommand))
        return std::nullopt;
    const QByteArray digits = body.mid(static_cast<int>(sizeof(kMaskCommand)) - 1);
    if (!NmeaFraming::isHex(digits) || digits.size() > kMaxMaskDigits)
        return std::nullopt;
    return tReceiverCommand{Kind::SelectConstellations,
                            digits.toUInt(nullptr, 16) & ConstellationMask::kAll};
}

QStringList constellationNames(unsigned mask)
{
    QStringList names;
    for (const tConstellationName &entry : kConstellationNames) {
        if ((mask & entry.bit) != 0)
            names << QString::fromLatin1(entry.name);
    }
    return names;
}
