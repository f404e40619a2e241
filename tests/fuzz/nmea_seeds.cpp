// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// Writes the inputs that fuzzing starts from, a file each, into the folder that is named.

#include "fuzz/NmeaSeeds.h"

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

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: nmea-seeds FOLDER\n");
        return 2;
    }
    const QDir folder(QFile::decodeName(argv[1]));
    if (!folder.mkpath(QStringLiteral("."))) {
        std::fprintf(stderr, "%s: cannot be made\n", argv[1]);
        return 1;
    }
    bool written = true;
    for (const NmeaSeed &seed : nmeaSeeds())
        written &= write(folder.filePath(QLatin1String(seed.name)), seed.bytes);
    return written ? 0 : 1;
}
