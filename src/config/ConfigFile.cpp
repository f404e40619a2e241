// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "config/ConfigFile.h"

#include "config/XmlLimits.h"

#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QTextCodec>
#include <QTextStream>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace {

// Written for the pages that once had settings of their own; their content is not read.
constexpr const char *kEmptySections[] = {"common", "control", "map", "satellite", "ttff", "test"};

// Settings take less than a kilobyte. More is no settings file, and a device has little memory.
constexpr qint64 kMaxFileSize = 1 << 20;
// This and the one behind it stand for the end of data and document within the parser.
constexpr QChar kEndOfData(0xfffe);

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

void printParseError(const QString &message, int line, int column)
{
    printError(QStringLiteral("Error : parse error at line %1, %2: %3")
                   .arg(QString::number(line), QString::number(column), message));
}

/// The document in `content`; nothing after a line about what is wrong with it.
std::optional<QDomDocument> parsed(const QByteArray &content)
{
    if (const std::optional<XmlLimitError> limit = findXmlLimitError(content)) {
        printParseError(limit->message, limit->line, limit->column);
        return std::nullopt;
    }
    QDomDocument document;
    QString message;
    int line = 0;
    int column = 0;
    if (document.setContent(content, false, &message, &line, &column))
        return document;
    printParseError(message, line, column);
    return std::nullopt;
}

/// Text in a form that the parser reads back as it was.
void appendText(QDomElement &element, const QString &text)
{
    QDomDocument document = element.ownerDocument();
    if (!text.isEmpty() && text.trimmed().isEmpty()) {
        // The parser drops text of nothing but blanks.
        element.appendChild(document.createCDATASection(text));
        return;
    }
    QString plain;
    for (const QChar c : text) {
        if (c < kEndOfData) {
            plain += c;
            continue;
        }
        element.appendChild(document.createTextNode(plain));
        element.appendChild(document.createEntityReference(
            QStringLiteral("#x%1").arg(static_cast<uint>(c.unicode()), 0, 16)));
        plain.clear();
    }
    element.appendChild(document.createTextNode(plain));
}

void appendTextElement(QDomElement &parent, const QString &name, const QString &text)
{
    QDomElement element = parent.ownerDocument().createElement(name);
    appendText(element, text);
    parent.appendChild(element);
}

QDomElement logElement(QDomDocument &document, const ConfigSettings &settings)
{
    QDomElement log = document.createElement(QStringLiteral("log"));
    appendTextElement(log, QStringLiteral("directory"), settings.directoryText());
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

QString ConfigSettings::directoryText() const
{
    // QString::fromLocal8Bit() takes a U+FEFF at the beginning for a mark and drops it.
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    return QTextCodec::codecForLocale()->toUnicode(
        directory, static_cast<int>(std::strlen(directory)), &state);
}

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
    const std::optional<QDomDocument> document = parsed(*content);
    if (!document)
        return false;

    const QDomElement root = document->documentElement();
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
