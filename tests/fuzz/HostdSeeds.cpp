// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "fuzz/HostdSeeds.h"

#include "support/NmeaSentences.h"

using NmeaSentences::sentence;

namespace {

/// Four constellations with a second signal each, in a u-blox's order and digits.
QByteArray severalSignals()
{
    return sentence("GNRMC,001036.00,A,4552.65393,S,17030.00667,E,0.01,,220222,,,A,V") +
           sentence("GNGGA,001036.00,4552.65393,S,17030.00667,E,1,12,0.6,48.2,M,3.1,M,,") +
           sentence("GNGSA,A,3,05,07,,,,,,,,,,,1.1,0.6,0.9,1") +
           sentence("GNGSA,A,3,01,33,,,,,,,,,,,1.1,0.6,0.9,3") +
           sentence("GPGSV,2,1,05,05,06,110,19,07,10,200,33,10,,,,13,20,300,40,1") +
           sentence("GPGSV,2,2,05,122,30,010,35,1") + sentence("GPGSV,1,1,01,05,06,110,31,6") +
           sentence("GAGSV,1,1,02,01,40,050,42,33,62,034,08,7") +
           sentence("GBGSV,1,1,02,06,40,050,42,40,62,034,44,1") +
           sentence("GQGSV,1,1,01,02,40,050,42,1") + sentence("GNGLL,,,,,001036.00,V,N") +
           sentence("GNRMC,001037.00,V,,,,,,,220222,,,N,V");
}

QByteArray roundedWithCarry()
{
    return sentence(
               "GPGGA,235959.9996,8959.99996,N,17959.99996,W,4,31,0.5,-12.34,M,46.9,M,1,0001") +
           sentence("GPRMC,235959.9996,A,8959.99996,N,17959.99996,W,999.99,359.99,311299,,");
}

QByteArray otherSentences()
{
    return sentence("GPRMC,120000,A,4807.0380,N,01131.0000,E,,,010125,,") +
           sentence("GPVTG,89.68,T,,M,0.00,N,0.0,K") + sentence("PUBX,00,081350.00") +
           sentence("PGRMC,A,220.5,100,,,,A,3,1,1,4") + "$GPXTE,A,A,0.67,L,N\r\n" +
           sentence("GNTXT,01,01,02,u-blox ag") + sentence("GIGSV,1,1,01,03,10,100,30") +
           sentence("GPGSV,1,1,01,05,10,100,30") + sentence("GPGSV,1,1,01,05,10,100,31") +
           sentence("PQGSV,1,1,01,14,10,100,30") + sentence("GPGLL,,,,,120001,V,N");
}

QByteArray frame(const char *hex)
{
    return QByteArray::fromHex(hex);
}

} // namespace

namespace HostdSeeds {

QVector<NmeaSeed> dialect()
{
    QVector<NmeaSeed> seeds = nmeaSeeds();
    seeds.append({"several-signals", severalSignals()});
    seeds.append({"rounded-with-carry", roundedWithCarry()});
    seeds.append({"other-sentences", otherSentences()});
    seeds.append({"binary-between", frame("B5620501020006040D2B") + severalSignals() +
                                        frame("D30013243ED7D30202") + roundedWithCarry()});
    return seeds;
}

QVector<NmeaSeed> families()
{
    return {
        {"pmtk", sentence("PMTK010,001") + sentence("PMTK705,AXN_5.1.6_3333,0001,L76B,1.0")},
        {"pair", sentence("PAIR021,AG3335M_V2.5.0") + sentence("PAIR001,004,0")},
        {"pqtm", sentence("PQTMEPE,2,1,2,3") + sentence("PQTMVERNO,LG290P03AANR01A03S,2024/04/30")},
        {"pqtm-airoha", sentence("PQTMVERNO,LC29HAANR01A04S,2022/07/26")},
        {"ubx-frames", frame("B56205010200060414 3D B5620A0400000E34 B562060404000000020010 68")},
        {"ubx-text", sentence("GNTXT,01,01,02,u-blox ag - www.u-blox.com") +
                         sentence("GNTXT,01,01,02,PROTVER=32.01")},
        {"ubx-version",
         frame("B5620A046400524F4D20434F524520332E30312028313037383838290000000000000000"
               "30303038303030300000"
               "50524F545645523D31382E303000000000000000000000000000000000000000"
               "4750533B474C4F3B47414C3B42445300000000000000000000000000000000 00")},
        {"casic", sentence("GPTXT,01,01,02,MA=CASIC") + sentence("GPTXT,01,01,02,SW=URANUS5,V5.2")},
        {"allystar", frame("F1D90501020006404E77F1D90A0400000E34")},
        {"unicore", sentence("PDTINFO,UC6580I-00,G1B1L1E1,V00") +
                        "#VERSIONA,COM1,0,80.0,FINE,2400;\"UM982\",\"R4.10\"*23abc4dc\r\n" +
                        "$command,VERSION,response: OK*04\r\n"},
        {"sirf", sentence("PSRF195,GSD4e_4.1.2-P1") + sentence("PSRF150,1")},
    };
}

QVector<NmeaSeed> transferLogs()
{
    const QByteArray head = "#tavrin-hostd transfer log 1\n# serial /dev/ttyUSB0, part 1\n";
    return {
        {"records", head + "< 0.000001 3\nabc\n> 0.000002 2\nde\n! 1.500000 8\n$PPLMG,1\n"},
        {"line-feeds", head + "< 12.345678 5\n\n< \n0\n= 99999.999999 0\n\n"},
        {"cut", head + "< 0.000001 3\nabc\n< 0.000002 99\nab"},
        {"broken", head + "< 0.000001 3\nabcd\n< 0.000002 2\nab\n"},
        {"head-only", head},
    };
}

QVector<NmeaSeed> commands()
{
    return {
        {"all", "$PPLMS,0\r\n$PPLMS,1\r\n$PPLMG,1\r\n$PPLMG,2\r\n$PPLMG,3\r\n$PPLMG,7\r\n"
                "$PPLMT,0\r\n"},
        {"masks", "$PPLMB,70,0\r\n$PPLMB,70,3f\r\n$PPLMB,70,FFFFFFFF\r\n$PPLMB,70,100000000\r\n"},
        {"checksums", sentence("PPLMG,3") + "$PPLMG,3*00\r\n$PPLMG,3*\r\n"},
        {"cut", "$PPLMG,\x01$PPLM$PPLMG,3\n$PPLMB,70,\r\ngarbage\r\n$PPLMG,3"},
    };
}

} // namespace HostdSeeds
