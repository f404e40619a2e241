// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// decode-peer FILE READSIZE: feeds a recording to Qt Positioning's NMEA position and satellite
// sources in real-time mode and prints the nanoseconds that a sentence cost.

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QNmeaPositionInfoSource>
#include <QNmeaSatelliteInfoSource>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int kRounds = 3;

/// A device that has what it was last given.
class PieceDevice : public QIODevice
{
public:
    void give(const QByteArray &piece)
    {
        pending += piece;
        emit readyRead();
    }
    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override { return pending.size() + QIODevice::bytesAvailable(); }
    bool canReadLine() const override { return pending.contains('\n') || QIODevice::canReadLine(); }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        const qint64 count = std::min<qint64>(maxSize, pending.size());
        std::copy_n(pending.constData(), count, data);
        pending.remove(0, count);
        return count;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray pending;
};

/// Nanoseconds for the whole stream; 0 when the sources reported nothing.
double play(const QByteArray &stream, int readSize)
{
    PieceDevice positionDevice;
    PieceDevice satelliteDevice;
    positionDevice.open(QIODevice::ReadOnly);
    satelliteDevice.open(QIODevice::ReadOnly);
    QNmeaPositionInfoSource positions(QNmeaPositionInfoSource::RealTimeMode);
    QNmeaSatelliteInfoSource satellites(QNmeaSatelliteInfoSource::UpdateMode::RealTimeMode);
    positions.setDevice(&positionDevice);
    satellites.setDevice(&satelliteDevice);
    int updates = 0;
    QObject::connect(&positions, &QGeoPositionInfoSource::positionUpdated, [&] { ++updates; });
    positions.startUpdates();
    satellites.startUpdates();

    QElapsedTimer timer;
    timer.start();
    for (qsizetype at = 0; at < stream.size(); at += readSize) {
        const QByteArray piece = stream.mid(at, readSize);
        positionDevice.give(piece);
        satelliteDevice.give(piece);
        QCoreApplication::processEvents();
    }
    const auto elapsed = double(timer.nsecsElapsed());
    return updates > 0 ? elapsed : 0.0;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const int readSize = argc == 3 ? QByteArray(argv[2]).toInt() : 0;
    QFile file(argc == 3 ? QString::fromLocal8Bit(argv[1]) : QString());
    if (readSize < 1 || !file.open(QIODevice::ReadOnly)) {
        std::fputs("usage: decode-peer FILE READSIZE\n", stderr);
        return 2;
    }
    const QByteArray stream = file.readAll();
    double best = 0.0;
    for (int round = 0; round < kRounds; ++round) {
        const double elapsed = play(stream, readSize);
        if (elapsed <= 0.0) {
            std::fputs("decode-peer: the sources reported nothing\n", stderr);
            return 1;
        }
        best = best > 0.0 ? std::min(best, elapsed) : elapsed;
    }
    std::printf("%f\n", best / double(stream.count('$')));
    return 0;
}
