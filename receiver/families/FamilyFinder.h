// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "receiver/families/ReceiverFamily.h"
#include "receiver/nmea/BinaryFrame.h"
#include "receiver/nmea/NmeaSentence.h"
#include "receiver/nmea/SentenceCutter.h"

#include <optional>

/// Tells the family of a receiver from what it sends: proprietary sentences, binary frames, start
/// banners, answers to the questions of queries(). Sends nothing itself. One thread at a time.
class FamilyFinder
{
public:
    using Family = ReceiverFamily::Family;

    /// Takes what the receiver sent.
    void feed(const QByteArray &bytes);

    /// The family, as soon as something tells it. May change while isCertain() is false.
    std::optional<Family> found() const;

    /// Whether the receiver has named itself, so that nothing more will change the family.
    bool isCertain() const { return certain; }

    /// What it has told of itself so far.
    const ReceiverFamily::tDetails &details() const { return known; }

    /// The answer that told the family, for the report; empty without one.
    QString evidence() const { return told; }

    /// Questions to send one after the other, with time for an answer after each, until found():
    /// for a family that is already known only those that its details() come from. None of them
    /// changes anything in a receiver of another family.
    static QVector<QByteArray> queries(std::optional<Family> family = std::nullopt);

private:
    enum class Strength { Hint, Certain };

    void take(const tCutSentence &cut);
    void takeText(const QByteArray &text);
    void takeProduct(const tNmeaSentence &sentence);
    void take(const tBinaryFrame &frame);
    void takeUbxVersion(const QByteArray &payload);
    void takeUbxExtension(const QByteArray &text);
    void takeVersionLine(char byte);
    void note(Family family, Strength strength, const QByteArray &evidence);

    SentenceCutter sentences;
    BinaryFrameCutter frames;
    QByteArray versionLine; // from a `#` on, empty outside: Unicore's version is no sentence
    std::optional<Family> family;
    bool certain = false;
    QString told;
    ReceiverFamily::tDetails known;
};
