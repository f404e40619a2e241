// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QVector>

/// A run of printable characters that began with `$`.
struct tCutSentence
{
    QByteArray text;         ///< from the `$`, without the line end
    bool terminated = false; ///< ended by CR or LF, not by another `$` or an unprintable byte
};

/// Cuts sentences out of bytes that arrive in any pieces, with anything between the sentences.
/// One thread at a time.
class SentenceCutter
{
public:
    /// Longest sentence that is kept together; a longer one is dropped.
    static constexpr int kMaxLength = 1024;

    /// Whether lines that begin with `#` are passed over whole.
    enum class Comments { Ordinary, PassOver };

    explicit SentenceCutter(Comments commentLines = Comments::Ordinary)
        : comments(commentLines)
    {
    }

    /// The sentences that these bytes complete. A sentence that they only begin is kept.
    QVector<tCutSentence> feed(const char *data, qint64 size);

    /// The sentence that is still open, for the end of the data; empty text when there is none.
    tCutSentence takeRest();

    /// Bytes so far that belonged to no sentence, line ends not counted.
    qint64 strayBytes() const { return strays; }

private:
    void take(char byte, QVector<tCutSentence> &out);

    bool passesOver(char byte);

    Comments comments;
    bool atLineStart = true;
    bool inComment = false;
    QByteArray open; // the sentence being collected, empty outside of one
    qint64 strays = 0;
};
