// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QMetaType>
#include <QMutex>
#include <QObject>
#include <QString>

/// Room for satellites, over all constellations, in the model and in every list made from it.
constexpr int kMaxSatellites = 32;

/// A UTC date and time as RMC gives it.
struct tUTCTime
{
    qint16 year = 0;
    qint16 month = 0;    ///< 1..12
    qint16 day = 0;      ///< 1..31
    qint16 hour = 0;     ///< 0..23
    qint16 minute = 0;   ///< 0..59
    double second = 0.0; ///< with the fraction that the receiver sent
    qint32 reserved = 0; ///< written by nobody
    bool valid = false;  ///< taken from an RMC sentence that had a time
};

/// A position fix. Coordinates carry no sign: the hemisphere letters are not applied.
struct tGnssLocation
{
    qint32 status = 0;      ///< written by nobody
    double latitude = 0.0;  ///< degrees, 0..90
    double longitude = 0.0; ///< degrees, 0..180
    double altitude = 0.0;  ///< metres above mean sea level
    qint32 fix = 0;         ///< GGA fix quality; 0 is no fix, and always 0 from GNS
    float speed = 0.0F;     ///< written by nobody
    float pdop = 0.0F;
    float hdop = 0.0F;
    float vdop = 0.0F;
    double fixTime = 0.0; ///< the NMEA time field hhmmss.sss read as one number
};

/// One satellite in view.
struct tGnssSv
{
    qint32 prn = 0;         ///< satellite number as GSV gives it
    double snr = 0.0;       ///< carrier-to-noise density, dB-Hz
    double elevation = 0.0; ///< degrees, 0..90
    float azimuth = 0.0F;   ///< degrees from true north, 0..359
    bool usedInFix = false; ///< listed by a GSA sentence
};

/// The satellites in view, in the order of the GSV sentences.
struct tGnssSvStatus
{
    qint32 numSvs = 0; ///< entries of svList that count, 0..kMaxSatellites
    tGnssSv svList[kMaxSatellites] = {};
};

Q_DECLARE_METATYPE(tUTCTime)
Q_DECLARE_METATYPE(tGnssLocation)
Q_DECLARE_METATYPE(tGnssSvStatus)

/// All that the program knows of the receiver. One object for the whole process.
///
/// The reading thread writes it by direct calls, the user-interface thread reads it. Only the NMEA
/// text is guarded; the records are copied without a lock, so that a reader may see one half
/// written. Every page reads again at its next refresh, which repairs that.
///
/// The setters emit nothing: whoever writes emits the matching signal afterwards.
class GnssInfo : public QObject
{
    Q_OBJECT

public:
    /// The one instance, made on first use and never destroyed.
    static GnssInfo *instance();

    /// Longest NMEA text kept, in characters: nobody takes it while updates are disabled.
    static constexpr int kMaxNmeaText = 16 * 1024 * 1024;

signals:
    void dataReceived();   ///< a read brought data, whatever it was
    void utcUpdate();      ///< the UTC time was set
    void locationUpdate(); ///< the location was set
    void svStatusUpdate(); ///< emitted by nobody: the satellite views refresh on the timer
    void ttffUpdate();     ///< the time to first fix was set, or cleared by a page
    void nvmUpdate();      ///< the receiver's memory is due to be stored

public slots:
    /// Notes whether reads bring data.
    void setDataStatus(bool status);
    /// Keeps the current time as the previous one, then stores `utc`.
    void setUtcTime(tUTCTime utc);
    /// Replaces the location, with its DOPs and fix time.
    void setLocation(tGnssLocation loc);
    /// Replaces the satellites.
    void setSvStatus(tGnssSvStatus svs);
    /// Appends to the NMEA text. Beyond kMaxNmeaText characters the oldest text is dropped.
    void setNmeaData(QString str);
    /// Stores a time to first fix in seconds and marks it as set, 0 as well.
    void setTtff(uint time_to_fix);
    /// Notes whether the store of the receiver's memory was asked for.
    void setNvmStatus(bool st);
    tUTCTime getUtcTime();
    tGnssLocation getLocation();
    tGnssSvStatus getSvStatus();
    /// The NMEA text received since the last clear, at most its last kMaxNmeaText characters.
    QString getNmeaData();
    /// Time to first fix in seconds, 0 while none is set.
    uint getTtff();
    bool isDataReceived();
    bool isTtffSet();
    bool isNvmSaved();
    /// Whole seconds from the previous to the current UTC time. Where the hours differ by exactly
    /// 23 a single hour is added, not a day: midnight gives -82799, and the TTFF counts on that.
    int utcGap();
    void clearUtcTime();
    void clearLocation();
    void clearSvStatus();
    void clearNmeaData();
    void clearTtff();
    /// Clears location, satellites, NMEA text and TTFF. Data-received flag, both UTC times and the
    /// NVM-saved flag stay.
    void clearGnssInfo();

private:
    GnssInfo();

    bool dataReceivedFlag = false;
    tGnssLocation location;
    tUTCTime utcTime;
    tUTCTime previousUtcTime;
    tGnssSvStatus svStatus;
    quint32 ttff = 0;
    bool ttffSet = false;
    bool nvmSaved = false;
    QString nmeaData;
    QMutex nmeaMutex;
};
