// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// Writes the inputs that fuzzing starts from, a file each, into the folder that is named: those of
// the viewer's reader, and in folders of their own beside it those of the host daemon's readers.

#include "fuzz/HostdSeeds.h"

#include <QDir>
#include <QFile>

#include <cstdio>

namespace {

bool write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush())
        return true;
    std::fprintf(stderr, "%s: %s\n", qPrintable(path), qPrintable(file.errorString()));
    return false;
}

bool writeAll(const QString &path, const QVector<NmeaSeed> &seeds)
{
    const QDir folder(path);
    if (!folder.mkpath(QStringLiteral("."))) {
        std::fprintf(stderr, "%s: cannot be made\n", qPrintable(path));
        return false;
    }
    bool written = true;
    for (const NmeaSeed &seed : seeds)
        written &= write(folder.filePath(QLatin1String(seed.name)), seed.bytes);
    return written;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: nmea-seeds FOLDER\n");
        return 2;
    }
    const QString folder = QFile::decodeName(argv[1]);
    const bool written = writeAll(folder, nmeaSeeds()) &&
                         writeAll(folder + "-dialect", HostdSeeds::dialect()) &&
                         writeAll(folder + "-family", HostdSeeds::families()) &&
                         writeAll(folder + "-transfer-log", HostdSeeds::transferLogs()) &&
                         writeAll(folder + "-command", HostdSeeds::commands());
    return written ? 0 : 1;
}
