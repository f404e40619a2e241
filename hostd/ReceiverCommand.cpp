// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/ReceiverCommand.h"

#include "gnss/NmeaFraming.h"

#include <cctype>

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
constexpr char kMaskCommand[] = "PPLMB,70,";
constexpr int kMaxMaskDigits = 8;

bool isHex(const QByteArray &text)
{
    for (const char digit : text) {
        if (!std::isxdigit(static_cast<unsigned char>(digit)))
            return false;
    }
    return !text.isEmpty();
}

} // namespace

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
    if (!isHex(digits) || digits.size() > kMaxMaskDigits)
        return std::nullopt;
    return tReceiverCommand{Kind::SelectConstellations,
                            digits.toUInt(nullptr, 16) & ConstellationMask::kAll};
}
