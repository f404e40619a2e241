// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "config/ConfigFile.h"

#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>
#include <QXmlStreamReader>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace {

// Written for the pages that once had settings of their own; their content is not read.
constexpr const char *kEmptySections[] = {"common", "control", "map", "satellite", "ttff", "test"};

// Settings take less than a kilobyte. More is no settings file, and a device has little memory.
constexpr qint64 kMaxFileSize = 1 << 20;
// A document is given up by recursion, which a stack bears only so often.
constexpr int kMaxDepth = 100;

void printError(const QString &message)
{
    QTextStream(stderr) << message << '\n';
}

bool isYes(const QString &text)
{
    return text.toUpper() == QStringLiteral("YES");
}

QString yesOrNo(bool on)
{
    return on ? QStringLiteral("Yes") : QStringLiteral("No");
}

void printFileError(const char *what, const QFile &file, const QString &reason)
{
    printError(QStringLiteral("Error: cannot %1 file %2: %3")
                   .arg(QString::fromLatin1(what), file.fileName(), reason));
}

/// What is not a file or a folder may be a pipe without a writer, whose open would never return.
bool isSpecialFile(const QFile &file)
{
    const QFileInfo info(file);
    return info.exists() && !info.isFile() && !info.isDir();
}

/// Opens the file. False after a line about why it cannot be had.
bool openFile(QFile &file, QIODevice::OpenMode mode)
{
    const bool special = isSpecialFile(file);
    if (!special && file.open(mode | QIODevice::Text))
        return true;
    printFileError(mode == QIODevice::ReadOnly ? "read" : "write", file,
                   special ? QStringLiteral("Not a regular file") : file.errorString());
    return false;
}

/// The whole content; nothing after a line about why it cannot be had.
std::optional<QByteArray> contentOf(QFile &file)
{
    if (!openFile(file, QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray content = file.read(kMaxFileSize + 1);
    if (file.error() != QFileDevice::NoError)
        printFileError("read", file, file.errorString());
    else if (content.size() > kMaxFileSize)
        printFileError("read", file, QStringLiteral("File too large"));
    else
        return content;
    return std::nullopt;
}

/// Stops the reader with an error at an element below kMaxDepth others.
void limitDepth(QXmlStreamReader &reader)
{
    int depth = 0;
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::StartElement && ++depth > kMaxDepth)
            reader.raiseError(QStringLiteral("elements are nested too deeply"));
        else if (token == QXmlStreamReader::EndElement)
            --depth;
    }
}

/// The document in `content`, a null one after a line about what is wrong with it.
QDomDocument parsed(const QByteArray &content)
{
    QXmlStreamReader depthReader(content);
    depthReader.setNamespaceProcessing(false);
    limitDepth(depthReader);
    QString message = depthReader.errorString();
    auto line = static_cast<int>(depthReader.lineNumber());
    auto column = static_cast<int>(depthReader.columnNumber());

    QDomDocument document;
    QXmlStreamReader reader(content);
    if (!depthReader.hasError() && document.setContent(&reader, false, &message, &line, &column))
        return document;
    printError(QStringLiteral("Error : parse error at line %1, %2: %3")
                   .arg(QString::number(line), QString::number(column), message));
    return {};
}

void appendTextElement(QDomElement &parent, const QString &name, const QString &text)
{
    QDomDocument document = parent.ownerDocument();
    QDomElement element = document.createElement(name);
    element.appendChild(document.createTextNode(text));
    parent.appendChild(element);
}

QDomElement logElement(QDomDocument &document, const ConfigSettings &settings)
{
    QDomElement log = document.createElement(QStringLiteral("log"));
    appendTextElement(log, QStringLiteral("directory"), QString::fromLocal8Bit(settings.directory));
    appendTextElement(log, QStringLiteral("displayTime"), yesOrNo(settings.displayTime));
    appendTextElement(log, QStringLiteral("textDebug"), yesOrNo(settings.textDebug));
    appendTextElement(log, QStringLiteral("navDebug"), yesOrNo(settings.navDebug));
    return log;
}

void readLogElement(const QDomElement &log, ConfigFile &config)
{
    for (QDomElement e = log.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        if (e.tagName() == QStringLiteral("directory"))
            config.setDirectory(e.text().toLocal8Bit().constData());
        else if (e.tagName() == QStringLiteral("displayTime"))
            config.setDisplayTime(isYes(e.text()));
        else if (e.tagName() == QStringLiteral("textDebug"))
            config.settings()->textDebug = isYes(e.text());
        else if (e.tagName() == QStringLiteral("navDebug"))
            config.settings()->navDebug = isYes(e.text());
    }
}

} // namespace

ConfigFile *ConfigFile::instance()
{
    static auto *const instance = new ConfigFile;
    return instance;
}

ConfigSettings *ConfigFile::settings()
{
    return &record;
}

bool ConfigFile::read(const char *path)
{
    fileName = path;
    QFile file(QFile::decodeName(fileName));
    const std::optional<QByteArray> content = contentOf(file);
    if (!content)
        return false;
    const QDomDocument document = parsed(*content);
    if (document.isNull())
        return false;

    const QDomElement root = document.documentElement();
    if (root.tagName() != QStringLiteral("configuration")) {
        printError(QStringLiteral("Error: Not a configuration file"));
        return false;
    }

    for (QDomElement e = root.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        if (e.tagName() == QStringLiteral("log"))
            readLogElement(e, *this);
    }
    return true;
}

bool ConfigFile::write()
{
    QFile file(QFile::decodeName(fileName));
    if (!openFile(file, QIODevice::WriteOnly))
        return false;

    QDomDocument document;
    QDomElement root = document.createElement(QStringLiteral("configuration"));
    document.appendChild(root);
    for (const char *section : kEmptySections)
        root.appendChild(document.createElement(QString::fromLatin1(section)));
    root.appendChild(logElement(document, record));

    QTextStream stream(&file);
    document.save(stream, 4);
    stream.flush();
    if (!file.flush())
        printFileError("write", file, file.errorString());
    return true;
}

void ConfigFile::setDirectory(const char *text)
{
    const std::size_t length = std::strlen(text);
    if (length >= sizeof record.directory) {
        static_cast<void>(
            std::fprintf(stderr, "Error: the log directory takes at most %zu bytes, not %zu: %s\n",
                         sizeof record.directory - 1, length, text));
        std::_Exit(EXIT_FAILURE);
    }
    std::memcpy(record.directory, text, length + 1);
}

void ConfigFile::setDisplayTime(bool on)
{
    record.displayTime = on;
}
