// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/PlainDecoder.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

double finite(double value)
{
    return std::isfinite(value) ? value : 0.0;
}

double toDouble(const QString &text)
{
    bool ok = false;
    const double value = text.toDouble(&ok);
    return ok ? finite(value) : 0.0;
}

float toFloat(const QString &text)
{
    const double value = toDouble(text);
    return std::fabs(value) > double(std::numeric_limits<float>::max()) ? 0.0F
                                                                        : static_cast<float>(value);
}

qint16 toShort(const QString &text)
{
    return static_cast<qint16>(text.toInt());
}

double toDegrees(const QString &text)
{
    const QString minutes = text.right(7);
    const QString degrees = text.left(text.size() - minutes.size());
    return finite(toDouble(minutes) / 60.0 + toDouble(degrees));
}

int slotOfTalker(const QString &address)
{
    const QStringList talkers[] = {{"$GP"}, {"$GL"}, {"$BD", "$GB"}, {"$GA"}, {"$QZ"}};
    for (int slot = 0; slot < 5; ++slot) {
        if (talkers[slot].contains(address.left(3)))
            return slot;
    }
    return -1;
}

long long secondOfDay(const tUTCTime &utc)
{
    const double second = std::min(std::max(utc.second, -2147483648.0), 2147483647.0);
    return utc.hour * 3600LL + utc.minute * 60LL + static_cast<long long>(second);
}

} // namespace

void PlainDecoder::read(const QByteArray &bytes)
{
    pending += bytes;
    for (;;) {
        const int start = pending.indexOf('$');
        if (start < 0) {
            pending.clear();
            return;
        }
        pending.remove(0, start);
        const int end = pending.indexOf('\r');
        longest = std::max(longest, end < 0 ? pending.size() : end);
        if (end < 0) {
            if (pending.size() > 1024)
                pending.clear();
            return;
        }
        decode(pending.left(end));
        pending.remove(0, end + 1);
    }
}

void PlainDecoder::clear()
{
    for (int slot = 0; slot < 5; ++slot) {
        inView[slot] = 0;
        first[slot] = last[slot] = false;
    }
    std::fill(gsvSeen, gsvSeen + 3, false);
    std::fill(gsaSeen, gsaSeen + 3, false);
    location = {};
    svStatus = {};
    timeCount = 0;
    model.nvmSaved = false;
    model.location = {};
    model.svStatus = {};
    model.ttff = 0;
    model.ttffSet = false;
}

QString PlainDecoder::element(int n) const
{
    const QString text = elements.value(n);
    const int asterisk = text.indexOf('*');
    return n == elements.size() - 1 && asterisk >= 0 ? text.left(asterisk) : text;
}

void PlainDecoder::decode(const QByteArray &bytes)
{
    const QString sentence = QString::fromLocal8Bit(bytes.constData(), bytes.size());
    elements = sentence.split(',');
    const QString type = sentence.left(6).right(3);
    if (type == "GGA" || type == "GNS")
        decodePosition(type);
    else if (type == "GSV")
        decodeGsv();
    else if (type == "GSA")
        decodeGsa();
    else if (type == "RMC")
        decodeRmc();
    else if (type == "GLL" && cycleComplete())
        model.svStatus = svStatus;
}

void PlainDecoder::decodePosition(const QString &type)
{
    location.fixTime = toDouble(element(1));
    location.latitude = toDegrees(element(2));
    location.longitude = toDegrees(element(4));
    location.altitude = toDouble(element(9));
    location.fix = element(6).toInt();
    noFix = type == "GNS" ? element(6) == "NNNN" : element(6).toInt() == 0;
}

void PlainDecoder::decodeGsa()
{
    if (noFix) {
        for (tGnssSv &sv : svStatus.svList)
            sv.usedInFix = false;
        noFix = false;
    }
    for (int n = 3; n <= 14; ++n) {
        if (element(n).isEmpty())
            continue;
        const int number = element(n).toInt();
        for (int i = 0; i < stored; ++i) {
            if (svStatus.svList[i].prn == number) {
                svStatus.svList[i].usedInFix = true;
                break;
            }
        }
        gsaSeen[0] |= number >= 1 && number <= 32;
        gsaSeen[1] |= number >= 65 && number <= 88;
        gsaSeen[2] |= number >= 121 && number <= 157;
    }
    location.pdop = toFloat(element(15));
    location.hdop = toFloat(element(16));
    location.vdop = toFloat(element(17));
}

void PlainDecoder::decodeGsv()
{
    const int slot = slotOfTalker(elements.first());
    if (slot >= 0 && slot < 3)
        gsvSeen[slot] = true;
    if (slot >= 0 && element(2).toInt() == 1) {
        inView[slot] = std::min(std::max(element(3).toInt(), 0), 999);
        totalInView += inView[slot];
        first[slot] = true;
    }
    if (slot >= 0 && element(1).toInt() == element(2).toInt())
        last[slot] = true;

    for (int n = 4; n + 3 < elements.size(); n += 4) {
        if (elements[n].isEmpty() || stored == 32)
            continue;
        tGnssSv sv;
        sv.prn = elements[n].toInt();
        sv.elevation = toDouble(elements[n + 1]);
        sv.azimuth = toFloat(elements[n + 2]);
        sv.snr = toDouble(n + 3 == elements.size() - 1 ? elements[n + 3].left(2) : elements[n + 3]);
        svStatus.svList[stored++] = sv;
    }
}

bool PlainDecoder::cycleComplete()
{
    const long long announced = totalInView;
    totalInView = 0;
    stored = 0;
    long long total = 0;
    bool allOk = true;
    for (int slot = 0; slot < 5; ++slot) {
        allOk = allOk && first[slot] == last[slot];
        total += inView[slot];
    }
    if (announced == 0 || announced != total || !allOk)
        return false;
    svStatus.numSvs = static_cast<int>(std::min(announced, 32LL));
    return true;
}

long long PlainDecoder::utcGap() const
{
    const long long gap = secondOfDay(model.utc) - secondOfDay(previousUtc);
    const bool overMidnight = std::abs(model.utc.hour - previousUtc.hour) == 23;
    return gap + (overMidnight ? 3600 : 0);
}

void PlainDecoder::decodeRmc()
{
    const QString time = element(1);
    const QString date = element(9);
    utc.second = toDouble(time.right(6));
    utc.minute = toShort(time.right(8).left(2));
    utc.hour = toShort(time.right(10).left(2));
    utc.day = toShort(date.left(2));
    utc.month = toShort(date.left(4).right(2));
    utc.year = static_cast<qint16>(2000 + date.right(2).toInt());
    if (!time.isEmpty()) {
        utc.valid = true;
        previousUtc = model.utc;
        model.utc = utc;
        ++model.utcUpdates;
    }

    updateTtff();

    if (cycleComplete())
        model.svStatus = svStatus;
    for (int slot = 0; slot < 5; ++slot) {
        inView[slot] = 0;
        first[slot] = last[slot] = false;
    }

    if (model.ttffSet && !model.nvmSaved && std::equal(gsvSeen, gsvSeen + 3, gsaSeen)) {
        ++model.nvmUpdates;
        model.nvmSaved = true;
        std::fill(gsvSeen, gsvSeen + 3, false);
        std::fill(gsaSeen, gsaSeen + 3, false);
    }

    location.fixTime = toDouble(time);
    model.location = location;
    list.push_back(model);
}

void PlainDecoder::updateTtff()
{
    const long long gap = utcGap();
    if (model.ttffSet) {
        timeCount = 0;
    } else if (element(2) != "A") {
        ++timeCount;
    } else if ((gap != 0 && gap != 1) || timeCount != 0) {
        model.ttff = timeCount + 1;
        model.ttffSet = true;
        ++model.ttffUpdates;
        timeCount = 0;
    }
}
