// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "receiver/nmea/SentenceCutter.h"

namespace {

bool isLineEnd(char byte)
{
    return byte == '\r' || byte == '\n';
}

bool isPrintable(char byte)
{
    return byte >= 0x20 && byte < 0x7f;
}

} // namespace

QVector<tCutSentence> SentenceCutter::feed(const char *data, qint64 size)
{
    QVector<tCutSentence> out;
    for (qint64 i = 0; i < size; ++i)
        take(data[i], out);
    return out;
}

tCutSentence SentenceCutter::takeRest()
{
    tCutSentence rest{open, false};
    open.clear();
    return rest;
}

// Whether the byte belongs to a comment. A comment also ends at a control byte: binary data between
// the sentences must not hide the sentence after it.
bool SentenceCutter::passesOver(char byte)
{
    // Unsigned, because a plain char is signed on some machines and unsigned on others.
    const bool isControl = static_cast<unsigned char>(byte) < 0x20 && byte != '\t';
    if (comments == Comments::PassOver && atLineStart && byte == '#' && open.isEmpty())
        inComment = true;
    else if (inComment && isControl)
        inComment = false;
    atLineStart = isLineEnd(byte);
    return inComment;
}

void SentenceCutter::take(char byte, QVector<tCutSentence> &out)
{
    if (passesOver(byte))
        return;
    if (byte == '$') {
        if (!open.isEmpty())
            out.append({open, false});
        open = QByteArray(1, byte);
        return;
    }
    if (open.isEmpty()) {
        strays += isLineEnd(byte) ? 0 : 1;
        return;
    }
    if (!isPrintable(byte)) {
        out.append({open, isLineEnd(byte)});
        open.clear();
        strays += isLineEnd(byte) ? 0 : 1;
        return;
    }
    open.append(byte);
    if (open.size() > kMaxLength) {
        strays += open.size();
        open.clear();
    }
}
