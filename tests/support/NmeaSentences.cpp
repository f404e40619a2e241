// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/NmeaSentences.h"

#include <QTime>

namespace {

struct Constellation
{
    const char *talker;
    int firstNumber;
    int count;
    int firstAzimuth;
};

constexpr Constellation kConstellations[] = {
    {"GP", 1, 10, 5}, {"GL", 65, 7, 20}, {"GA", 301, 7, 35}, {"GB", 121, 7, 50}};

QVector<NmeaSentences::Satellite> satellitesOf(const Constellation &constellation)
{
    QVector<NmeaSentences::Satellite> satellites;
    for (int i = 0; i < constellation.count; ++i)
        satellites.append({constellation.firstNumber + i, 10 + 7 * i,
                           (constellation.firstAzimuth + 40 * i) % 360, 30 + 2 * i});
    return satellites;
}

QByteArray gsa(const Constellation &constellation)
{
    QByteArray body = QByteArray(constellation.talker) + "GSA,A,3";
    for (int i = 0; i < 12; ++i)
        body +=
            ',' + (i < constellation.count - 1 ? QByteArray::number(constellation.firstNumber + i)
                                               : QByteArray());
    return NmeaSentences::sentence(body + ",1.5,0.9,1.2");
}

} // namespace

namespace NmeaSentences {

QByteArray gsvSet(const QByteArray &talker, const QVector<Satellite> &satellites)
{
    const int messages = (satellites.size() + 3) / 4;
    QByteArray set;
    for (int message = 1; message <= messages; ++message) {
        QByteArray body = talker + "GSV," + QByteArray::number(messages) + ',' +
                          QByteArray::number(message) + ',' + QByteArray::number(satellites.size());
        for (const Satellite &sv : satellites.mid(4 * (message - 1), 4))
            body += ',' + QByteArray::number(sv.number).rightJustified(2, '0') + ',' +
                    QByteArray::number(sv.elevation).rightJustified(2, '0') + ',' +
                    QByteArray::number(sv.azimuth).rightJustified(3, '0') + ',' +
                    QByteArray::number(sv.snr).rightJustified(2, '0');
        set += sentence(body);
    }
    return set;
}

QByteArray epochOf31Satellites(int second, int millisecond)
{
    const QTime ofDay = QTime(0, 0).addSecs(second).addMSecs(millisecond);
    const QByteArray time = ofDay.toString(QStringLiteral("hhmmss.zzz")).toLatin1();
    QByteArray epoch =
        sentence("GNGGA," + time + ",4807.0380,N,01131.0000,E,1,27,0.9,545.4,M,46.9,M,,");
    for (const Constellation &constellation : kConstellations)
        epoch += gsvSet(constellation.talker, satellitesOf(constellation));
    for (const Constellation &constellation : kConstellations)
        epoch += gsa(constellation);
    epoch += sentence("GNGLL,4807.0380,N,01131.0000,E," + time + ",A,A");
    epoch += sentence("GNRMC," + time + ",A,4807.0380,N,01131.0000,E,0.02,84.40,050321,,,A");
    return epoch;
}

} // namespace NmeaSentences
