// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// How many epochs of recordings of real receivers the viewer shows rightly, fed with them as they
// are and fed with what tavrin-hostd makes of them, against a reading of the recordings that shares
// nothing with the programs. Recordings may be named; --faults prints what is not right.

#include "support/EpochComparison.h"
#include "support/ReadSizes.h"
#include "support/RecordingReader.h"
#include "support/Recordings.h"
#include "support/ThroughDialect.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QTextStream>

namespace {

using EpochComparison::tVerdict;

constexpr int kReadSize = 4096;

struct tShare
{
    tVerdict raw;
    tVerdict dialect;
};

/// Over all recordings.
class Total
{
public:
    void add(const tVerdict &verdict)
    {
        ++recordings;
        recordingsRight += verdict.faults.isEmpty() ? 1 : 0;
        epochs += verdict.epochs;
        epochsRight += verdict.right;
    }

    QString text() const
    {
        return QStringLiteral("%1 of %2 epochs right, all epochs of %3 of %4 recordings")
            .arg(epochsRight)
            .arg(epochs)
            .arg(recordingsRight)
            .arg(recordings);
    }

private:
    int recordings = 0;
    int recordingsRight = 0;
    int epochs = 0;
    int epochsRight = 0;
};

/// Right in what the sentences say and in what the viewer makes of them.
tVerdict ofDialect(const QVector<tSourceEpoch> &epochs, const QByteArray &told)
{
    DialectChecker checker;
    checker.read(told);
    tVerdict sentences = EpochComparison::ofCycles(epochs, checker.cycles());
    if (!checker.error().isEmpty())
        sentences.faults.prepend(checker.error());
    const tVerdict shown =
        EpochComparison::ofShown(epochs, ReadSizes::play(told, kReadSize).published);
    return sentences.right <= shown.right ? sentences : shown;
}

bool read(const QString &path, tShare *share)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray sent = RecordingReader::asSent(file.readAll());
    const QVector<tSourceEpoch> epochs = RecordingReader::read(sent);
    share->raw = EpochComparison::ofRaw(epochs, sent);
    share->dialect = ofDialect(epochs, throughDialect(path));
    return true;
}

QStringList recordings(const QStringList &named)
{
    if (!named.isEmpty())
        return named;
    QStringList paths;
    const QDir folder(Recordings::folder());
    const QStringList files = folder.entryList({QStringLiteral("*.log")});
    for (const QString &file : files)
        paths << folder.filePath(file);
    return paths;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    QTextStream out(stdout);
    QStringList named = QCoreApplication::arguments().mid(1);
    const bool tellsFaults = named.removeAll(QStringLiteral("--faults")) > 0;
    if (named.isEmpty() && Recordings::folder().isEmpty()) {
        out << Recordings::kAbsent << '\n';
        return 1;
    }
    Total raw;
    Total dialect;
    const QStringList paths = recordings(named);
    for (const QString &path : paths) {
        tShare share;
        if (!read(path, &share)) {
            out << path << ": cannot be read\n";
            return 1;
        }
        out << QFileInfo(path).fileName() << ": right as it is " << share.raw.right << " of "
            << share.raw.epochs << " epochs, through the dialect " << share.dialect.right << " of "
            << share.dialect.epochs << '\n';
        if (tellsFaults && !share.dialect.faults.isEmpty())
            out << "    " << share.dialect.faults.join(QStringLiteral("\n    ")) << '\n';
        raw.add(share.raw);
        dialect.add(share.dialect);
    }
    out << "as they are: " << raw.text() << "\nthrough the dialect: " << dialect.text() << '\n';
    return 0;
}
