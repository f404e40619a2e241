// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "fuzz/NmeaSeeds.h"

#include "support/NmeaSentences.h"

using NmeaSentences::epochOf31Satellites;
using NmeaSentences::sentence;

namespace {

QByteArray rmc(const QByteArray &time, char status)
{
    return sentence("GNRMC," + time + ',' + status + ",4807.0380,N,01131.0000,E,0,0,311299,,,A");
}

QByteArray coldStart()
{
    QByteArray bytes = sentence("GNRMC,,V,,,,,,,,,,N");
    for (const char *time : {"235958.000", "235959.000"})
        bytes += rmc(time, 'V');
    return bytes + rmc("000000.000", 'A') + rmc("000001.000", 'A');
}

/// The fix comes and goes, in GNS and in GGA.
QByteArray lostFix()
{
    return sentence("GNGNS,100000.000,4807.0380,S,01131.0000,W,ANNA,08,0.9,545.4,46.9,,") +
           sentence("GPGSV,1,1,02,05,40,083,46,17,17,308,41") +
           sentence("GPGSA,A,3,05,17,,,,,,,,,,,1.5,0.9,1.2") + rmc("100000.000", 'A') +
           sentence("GNGNS,100001.000,,,,,NNNN,00,,,,,") + sentence("GPGSA,A,1,05,17") +
           sentence("GPGGA,100002.000,,,,,0,00,,,M,,M,,") + sentence("GPGSA,A,1") +
           rmc("100002.000", 'V');
}

/// Padded groups, a signal id, QZSS, a talker that is counted nowhere, an SNR without a value.
QByteArray satelliteSets()
{
    return sentence("GPGSV,2,1,05,01,10,010,30,02,20,020,31,,,,,03,30,030,32") +
           sentence("GPGSV,2,2,05,04,40,040,,05,50,050,33,1") +
           sentence("QZGSV,1,1,01,193,60,060,34") + sentence("GNGSV,1,1,01,99,70,070,35") +
           sentence("GLGSV,1,1,00") + sentence("BDGSV,1,1,01,121,80,080,36") +
           sentence("GNGSA,A,3,01,65,121,193,,,,,,,,,9,8,7") +
           sentence("GNGLL,4807.0380,N,01131.0000,E,100000.000,A,A") + rmc("100000.000", 'A');
}

QByteArray oddNumbers()
{
    QByteArray bytes;
    for (const char *number : {"1e308", "-1e308", "nan", "inf", "0x10", "99999999999999999999",
                               "-0", "+7", " 8 ", "1.2.3", "2147483648", "1e-400", "."}) {
        const QByteArray n = number;
        bytes += sentence("GPGGA," + n + ',' + n + ",N," + n + ",E," + n + ",08,0.9," + n + ",M");
        bytes += sentence("GPGSV," + n + ",1," + n + ',' + n + ',' + n + ',' + n + ',' + n);
        bytes += sentence("GPGSA,A,3," + n + ",,,,,,,,,,,," + n + ',' + n + ',' + n);
        bytes += sentence("GPRMC," + n + ",A,,,,,,," + n + ",,,A");
    }
    return bytes;
}

/// Cut, merged and empty sentences, line feeds alone, binary data between them.
QByteArray damaged()
{
    return ",A*00\r\n$GPGGA,1$" + rmc("100000.000", 'A') + "$\r\n$*\r$,\r$GPRMC\r\n$GPRMC,1,A\n" +
           QByteArray("\xd3\x00\x13$\x00\xff\x0d", 7) + rmc("100001.000", 'A') + "$GPGSV,1,1";
}

/// Characters of several bytes, whole and broken, and the byte order mark.
QByteArray otherThanAscii()
{
    return "\xef\xbb\xbf$GPRMC,1000\xc3\xa4"
           "1.000,A,,,,,,,311299\r\n\xe2\x82\xac\xf0\x9f\x9b\xb0"
           "$\xe2\x82\xacGGA,1,\xe2\x88\x92"
           "4807.0380,N,1\xc2\xa0,E,1\r\n"
           "$GPGSV,1,1,01,1,2,3,\xe2\x82\xac"
           "5\r\n\xff\xfe\xc3$GPGGA,\xe0\x80,\xed\xa0\x80\r\n" +
           rmc("100000.000", 'A') + "\xf0\x9f";
}

/// At the limit of what is kept from read to read, and beyond it.
QByteArray overlong()
{
    QByteArray bytes;
    for (const int length : {1022, 1023, 1024})
        bytes += "$GPRMC,100000.000,A" + QByteArray(length - 19, ',') + '\r';
    return bytes + rmc("100001.000", 'A');
}

} // namespace

QVector<NmeaSeed> nmeaSeeds()
{
    return {
        {"epoch", epochOf31Satellites(0)},
        {"cold-start", coldStart()},
        {"lost-fix", lostFix()},
        {"satellite-sets", satelliteSets()},
        {"odd-numbers", oddNumbers()},
        {"damaged", damaged()},
        {"other-than-ascii", otherThanAscii()},
        {"overlong", overlong()},
    };
}
