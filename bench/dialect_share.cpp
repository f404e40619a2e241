// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// Which recordings of real receivers the viewer shows rightly, fed with them as they are and fed
// with what tavrin-hostd makes of them: position, time, satellites and those in use, of every
// epoch.

#include "support/ReadSizes.h"
#include "support/Recordings.h"
#include "support/SourceOracle.h"
#include "support/ThroughDialect.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QTextStream>

namespace {

constexpr int kReadSize = 4096;

QString verdict(const QString &fault)
{
    return fault.isEmpty() ? QStringLiteral("right") : fault;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    QTextStream out(stdout);
    const QDir folder(Recordings::folder());
    if (Recordings::folder().isEmpty()) {
        out << Recordings::kAbsent << '\n';
        return 1;
    }
    int recordings = 0;
    int raw = 0;
    int dialect = 0;
    const QStringList files = folder.entryList({QStringLiteral("*.log")});
    for (const QString &name : files) {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QByteArray stored = file.readAll();
        const QVector<tSourceEpoch> epochs = SourceOracle::read(stored);
        const QString ofRaw = SourceOracle::faultOfRaw(
            epochs, ReadSizes::play(SourceOracle::asSent(stored), kReadSize).published);
        const QString ofDialect = SourceOracle::faultOfDialect(
            epochs, ReadSizes::play(throughDialect(file.fileName()), kReadSize).published);
        out << name << ": " << epochs.size() << " epochs; as it is: " << verdict(ofRaw)
            << "; through the dialect: " << verdict(ofDialect) << '\n';
        ++recordings;
        raw += ofRaw.isEmpty() ? 1 : 0;
        dialect += ofDialect.isEmpty() ? 1 : 0;
    }
    out << "shown rightly of " << recordings << " recordings: " << raw << " as they are, "
        << dialect << " through the dialect\n";
    return 0;
}
