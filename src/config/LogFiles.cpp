// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "config/LogFiles.h"

#include "config/ConfigFile.h"

#include <QDateTime>
#include <QTextStream>
#include <QTime>

#include <utility>

namespace {

QString configuredDirectory()
{
    return ConfigFile::instance()->settings()->directoryText();
}

bool stampConfigured()
{
    return ConfigFile::instance()->settings()->displayTime;
}

QString dateAndTime()
{
    return QDateTime::currentDateTime().toString(QStringLiteral("dd-MM-yyyy_HHmmss"));
}

QString timeOfDay()
{
    return QTime::currentTime().toString(QStringLiteral("hh:mm:ss.zzz"));
}

} // namespace

LogFiles *LogFiles::instance()
{
    static auto *const instance = new LogFiles;
    return instance;
}

void LogFiles::prepareDirectory()
{
    if (dir)
        return;
    dir = std::make_unique<QDir>(configuredDirectory());
    subDir = QStringLiteral("GNSS");
    dir->mkdir(subDir);
}

QString LogFiles::nmeaFileName() const
{
    return pathInSubDir(dateAndTime() + QStringLiteral("_nmea.log"));
}

QString LogFiles::ttffFileName() const
{
    return pathInSubDir(dateAndTime() + QStringLiteral("_ttff.log"));
}

QString LogFiles::ospFileName() const
{
    return pathInSubDir(QStringLiteral("osp.bin"));
}

QString LogFiles::navFileName() const
{
    return pathInSubDir(QStringLiteral("nav.log"));
}

QString LogFiles::sllFileName() const
{
    return pathInSubDir(QStringLiteral("sll.log"));
}

void LogFiles::openNmeaLog()
{
    const QString name = nmeaFileName();
    if (name.isEmpty())
        return;
    if (!nmeaFile)
        nmeaFile = std::make_unique<QFile>(name);
    // A file that could not be opened keeps its name and is tried again.
    if (!nmeaFile->isOpen())
        nmeaFile->open(QIODevice::WriteOnly | QIODevice::Text);
}

void LogFiles::closeNmeaLog()
{
    if (!nmeaFile)
        return;
    nmeaFile->close();
    retire(nmeaFile);
}

void LogFiles::openTtffLog()
{
    const QString name = ttffFileName();
    if (name.isEmpty())
        return;
    retire(ttffFile);
    ttffFile = std::make_unique<QFile>(name);
    ttffFile->open(QIODevice::WriteOnly | QIODevice::Text);
}

bool LogFiles::writeLine(File slot, const char *text, bool stamp)
{
    QFile *const target = file(slot).get();
    if (!target)
        return false;
    if (!target->isOpen())
        return true;

    QTextStream stream(target);
    if (stamp)
        stream << '[' << timeOfDay() << "] ";
    stream << QLatin1String(text);
    stream.flush();
    return true;
}

bool LogFiles::writeBinary(File slot, const QString &name, const char *data, qint64 length)
{
    std::unique_ptr<QFile> &target = file(slot);
    if (!target) {
        if (name.isEmpty())
            return false;
        target = std::make_unique<QFile>(name);
        target->open(QIODevice::WriteOnly);
    }
    if (!target->isOpen())
        return true;

    target->write(data, length);
    target->flush();
    return true;
}

bool LogFiles::writeNmea(const char *text)
{
    return writeLine(File::Nmea, text, false);
}

bool LogFiles::writeNav(const char *text)
{
    return writeLine(File::Nav, text, stampConfigured());
}

bool LogFiles::writeSll(const char *text)
{
    writeLine(File::Sll, text, stampConfigured());
    writeLine(File::Sll, "\n", false);
    return true;
}

bool LogFiles::writeTtff(const char *text)
{
    writeLine(File::Ttff, text, stampConfigured());
    writeLine(File::Ttff, "\n", false);
    return true;
}

bool LogFiles::writeOsp(const char *data, qint64 length)
{
    return writeBinary(File::Osp, ospFileName(), data, length);
}

std::unique_ptr<QFile> &LogFiles::file(File slot)
{
    switch (slot) {
    case File::Nmea:
        return nmeaFile;
    case File::Osp:
        return ospFile;
    case File::Nav:
        return navFile;
    case File::Sll:
        return sllFile;
    case File::Ttff:
        break;
    }
    return ttffFile;
}

QString LogFiles::pathInSubDir(const QString &fileName) const
{
    return configuredDirectory() + QLatin1Char('/') + subDir + QLatin1Char('/') + fileName;
}

void LogFiles::retire(std::unique_ptr<QFile> &slot)
{
    if (slot)
        retired.push_back(std::move(slot));
}
