// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// The settings file under libFuzzer: no file may make the reader fail, and what it read can be
// written and read again.

#include "config/ConfigFile.h"
#include "config/XmlLimits.h"

#include <QDomDocument>
#include <QFile>
#include <QTextCodec>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/mman.h>

namespace {

/// Whether there is text enough for a directory that does not fit, which ends the process on
/// purpose.
bool mayEndTheProcess(const QByteArray &content)
{
    // Read as text, a file loses each CR.
    const QByteArray read = QByteArray(content).replace('\r', "");
    QDomDocument document;
    if (findXmlLimitError(read) || !document.setContent(read, false))
        return false;
    const QByteArray text = document.documentElement().text().toLocal8Bit();
    return static_cast<std::size_t>(text.size()) >= sizeof ConfigSettings::directory;
}

/// A file in memory, and the path under which it can be opened.
const QByteArray &memoryFile()
{
    static const QByteArray path =
        "/proc/self/fd/" + QByteArray::number(::memfd_create("settings", 0));
    return path;
}

void store(const QByteArray &content)
{
    QFile file(QFile::decodeName(memoryFile()));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        std::abort();
}

/// The parser drops text of nothing but blanks, and reading as text drops each CR.
bool isLost(const QByteArray &directory)
{
    return directory.contains('\r') && QString::fromLocal8Bit(directory).trimmed().isEmpty();
}

bool isSame(const ConfigSettings &a, const ConfigSettings &b)
{
    return std::strcmp(a.directory, b.directory) == 0 && a.displayTime == b.displayTime &&
           a.textDebug == b.textDebug && a.navDebug == b.navDebug;
}

bool survivesReading(const QByteArray &content)
{
    store(content);
    ConfigFile *const config = ConfigFile::instance();
    *config->settings() = ConfigSettings();
    if (!config->read(memoryFile().constData()) || isLost(config->settings()->directory))
        return true;
    const ConfigSettings first = *config->settings();
    return config->write() && config->read(memoryFile().constData()) &&
           isSame(first, *config->settings());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    const QByteArray content(reinterpret_cast<const char *>(data), static_cast<int>(size));
    if (!mayEndTheProcess(content) && !survivesReading(content))
        std::abort();
    return 0;
}
