// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// What decoding a sentence costs, as a ratio to the least that any reader has to do with the same
// bytes, and to Qt Positioning's NMEA sources. The latter are of Qt 6 (Qt 5.15 has no public
// satellite source), so that they run as a second process: `decode-peer`, on the same stream.

#include "gnss/NmeaReader.h"
#include "support/NmeaSentences.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QProcess>
#include <QTemporaryFile>
#include <QTextStream>

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int kEpochs = 4000;
constexpr int kBouts = 6;
constexpr int kRounds = 9;
constexpr int kSentences = kEpochs * NmeaSentences::kSentencesAnEpoch;
// The log page takes the text once a second; so often is generous for a stream this fast.
constexpr std::size_t kTextTakenEvery = 65536;

QByteArray makeStream()
{
    QByteArray stream;
    for (int second = 0; second < kEpochs; ++second)
        stream += NmeaSentences::epochOf31Satellites(second);
    return stream;
}

/// Calls `read` with pieces of the stream and `takeText` whenever enough of it has gone by.
void play(std::string_view stream, std::size_t readSize,
          const std::function<void(std::string_view)> &read, const std::function<void()> &takeText)
{
    std::size_t sinceTaken = 0;
    for (std::size_t at = 0; at < stream.size(); at += readSize) {
        const std::string_view piece = stream.substr(at, readSize);
        read(piece);
        sinceTaken += piece.size();
        if (sinceTaken >= kTextTakenEvery) {
            takeText();
            sinceTaken = 0;
        }
    }
}

/// Copies, searches and converts every byte, and does nothing with the sentences.
class Floor
{
public:
    void read(std::string_view piece)
    {
        std::memcpy(buffer.data(), piece.data(), piece.size());
        text += QString::fromLocal8Bit(buffer.data(), static_cast<int>(piece.size()));
        const char *at = buffer.data();
        const char *const end = at + piece.size();
        while (at != end) {
            const void *const start = std::memchr(at, '$', std::size_t(end - at));
            if (!start)
                return;
            at = static_cast<const char *>(start);
            const void *const stop = std::memchr(at, '\r', std::size_t(end - at));
            if (!stop)
                return;
            at = static_cast<const char *>(stop) + 1;
            ++sentences;
        }
    }
    void takeText() { text.clear(); }

    int sentences = 0;

private:
    std::vector<char> buffer = std::vector<char>(102400);
    QString text;
};

double nanosecondsASentence(const std::function<void()> &run)
{
    QElapsedTimer timer;
    timer.start();
    run();
    return double(timer.nsecsElapsed()) / kSentences;
}

/// Nanoseconds a sentence, the best so far.
struct Measurement
{
    double floor = 1e9;
    double quiet = 1e9;
    double traced = 1e9;
};

void setTrace(bool on)
{
    QLoggingCategory::setFilterRules(
        QStringLiteral("default.debug=%1")
            .arg(on ? QStringLiteral("true") : QStringLiteral("false")));
}

/// Several rounds that take turns, so that a busy moment hits all three alike; keeps the best.
void measure(std::string_view stream, std::size_t readSize, Measurement &best)
{
    NmeaReader reader;
    Floor floor;
    const auto decode = [&] {
        play(
            stream, readSize, [&](std::string_view piece) { reader.feed(piece); },
            [] { GnssInfo::instance()->clearNmeaData(); });
    };
    for (int round = 0; round < kRounds; ++round) {
        best.floor =
            std::min(best.floor, nanosecondsASentence([&] {
                         play(
                             stream, readSize, [&](std::string_view piece) { floor.read(piece); },
                             [&] { floor.takeText(); });
                     }));
        setTrace(false);
        best.quiet = std::min(best.quiet, nanosecondsASentence(decode));
        setTrace(true);
        best.traced = std::min(best.traced, nanosecondsASentence(decode));
    }
    if (floor.sentences == 0 || GnssInfo::instance()->getSvStatus().numSvs != 31)
        qFatal("the stream was not decoded");
}

/// Nanoseconds a sentence that the peer printed, 0 when there is no peer.
double measurePeer(const QByteArray &stream, std::size_t readSize)
{
    QTemporaryFile file;
    if (!file.open() || file.write(stream) != stream.size() || !file.flush())
        return 0.0;
    QProcess peer;
    peer.start(QCoreApplication::applicationDirPath() + QStringLiteral("/decode-peer"),
               {file.fileName(), QString::number(readSize)});
    if (!peer.waitForFinished(120000) || peer.exitCode() != 0)
        return 0.0;
    return peer.readAllStandardOutput().trimmed().toDouble();
}

void printRow(QTextStream &out, const QString &name, double ns, const Measurement &m, double peer)
{
    out << QStringLiteral("| %1 | %2 | %3 | %4 |\n")
               .arg(name, -24)
               .arg(ns, 8, 'f', 0)
               .arg(ns / m.floor, 7, 'f', 2)
               .arg(peer > 0.0 ? QString::number(ns / peer, 'f', 4) : QStringLiteral("-"), 7);
}

void sendTraceNowhere()
{
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0 || ::dup2(nowhere, STDERR_FILENO) < 0)
        qFatal("cannot open /dev/null");
    ::close(nowhere);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QTextStream out(stdout);
    const QByteArray stream = makeStream();
    const std::string_view bytes(stream.constData(), std::size_t(stream.size()));
    sendTraceNowhere();

    for (const std::size_t readSize : {std::size_t(65536), std::size_t(1000)}) {
        // In turns with the peer as well: a virtual machine has slow seconds.
        Measurement m;
        double peer = std::numeric_limits<double>::max();
        for (int bout = 0; bout < kBouts; ++bout) {
            measure(bytes, readSize, m);
            peer = std::min(peer, measurePeer(stream, readSize));
        }
        out << QStringLiteral("reads of %1 bytes, %2 sentences, best of %3 rounds\n\n")
                   .arg(readSize)
                   .arg(kSentences)
                   .arg(kBouts * kRounds)
            << "|                          | ns/sent. | x floor | x Qt    |\n"
            << "|--------------------------|---------:|--------:|--------:|\n";
        printRow(out, QStringLiteral("floor"), m.floor, m, peer);
        printRow(out, QStringLiteral("reader, without trace"), m.quiet, m, peer);
        printRow(out, QStringLiteral("reader, with trace"), m.traced, m, peer);
        if (peer > 0.0)
            printRow(out, QStringLiteral("Qt Positioning"), peer, m, peer);
        else
            out << "Qt Positioning was not measured: decode-peer did not run\n";
        out << '\n';
        out.flush();
    }
    return 0;
}
