// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "config/ConfigFile.h"

#include <QDomDocument>
#include <QFile>
#include <QTextStream>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// Written for the pages that once had settings of their own; their content is not read.
constexpr const char *kEmptySections[] = {"common", "control", "map", "satellite", "ttff", "test"};

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
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        printError(QStringLiteral("Error: cannot read file %1: %2")
                       .arg(file.fileName(), file.errorString()));
        return false;
    }

    QDomDocument document;
    QString message;
    int line = 0;
    int column = 0;
    if (!document.setContent(&file, false, &message, &line, &column)) {
        printError(QStringLiteral("Error : parse error at line %1, %2: %3")
                       .arg(QString::number(line), QString::number(column), message));
        return false;
    }

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
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        printError(QStringLiteral("Error: cannot write file %1: %2")
                       .arg(file.fileName(), file.errorString()));
        return false;
    }

    QDomDocument document;
    QDomElement root = document.createElement(QStringLiteral("configuration"));
    document.appendChild(root);
    for (const char *section : kEmptySections)
        root.appendChild(document.createElement(QString::fromLatin1(section)));
    root.appendChild(logElement(document, record));

    QTextStream stream(&file);
    document.save(stream, 4);
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
