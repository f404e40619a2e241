// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// QXmlSimpleReader is deprecated, but QDomDocument parses with it, and no other parser sees the
// same document in the same bytes. This source alone sees its declaration, hence is compiled by
// itself.
#undef QT_DISABLE_DEPRECATED_BEFORE
#define QT_DISABLE_DEPRECATED_BEFORE 0x050E00
#define QT_NO_DEPRECATED_WARNINGS

#include "config/XmlLimits.h"

#include <QBuffer>
#include <QHash>
#include <QXmlDefaultHandler>
#include <QXmlSimpleReader>

#include <algorithm>

namespace {

// A level takes the parser some 400 bytes of stack.
constexpr int kMaxElementDepth = 1000;
// A level takes the parser some 150 bytes of stack.
constexpr int kMaxGroupDepth = 10'000;
// As much as the largest file.
constexpr int kMaxExpandedCharacters = 1 << 20;
// The parser compares each declared entity with each other: 60 000 would take it minutes.
constexpr int kMaxEntities = 1000;

/// How deep the groups of an element declaration, `(a | (b, c))`, are nested. A parenthesis in a
/// literal or comment counts until the next markup: too many are better than too few.
class GroupDepth
{
public:
    /// Takes the next character of a document type. False where there are too many groups.
    bool add(QChar c)
    {
        if (c == QLatin1Char('('))
            ++depth;
        else if (c == QLatin1Char('<') || (c == QLatin1Char(')') && --depth < 0))
            depth = 0;
        return depth <= kMaxGroupDepth;
    }

private:
    int depth = 0;
};

/// Follows the parser through a document and stops it at the first limit.
class LimitHandler : public QXmlDefaultHandler
{
public:
    /// Takes the next character of the document. False where the parser must not go on.
    bool takeCharacter(QChar c)
    {
        return !inDocumentType || groups.add(c) ||
               stop(QStringLiteral("groups are nested too deeply"));
    }

    /// The limit that was broken, if one was.
    std::optional<XmlLimitError> result() const
    {
        return limitError.message.isEmpty() ? std::nullopt : std::make_optional(limitError);
    }

    bool startElement(const QString &, const QString &, const QString &,
                      const QXmlAttributes &) override
    {
        return ++elementDepth <= kMaxElementDepth ||
               stop(QStringLiteral("elements are nested too deeply"));
    }

    bool endElement(const QString &, const QString &, const QString &) override
    {
        --elementDepth;
        return true;
    }

    bool startDTD(const QString &, const QString &, const QString &) override
    {
        inDocumentType = true;
        return true;
    }

    bool endDTD() override
    {
        inDocumentType = false;
        return true;
    }

    bool internalEntityDecl(const QString &name, const QString &value) override
    {
        // The names of parameter entities begin with a percent sign here, but not where they begin.
        entities[name.startsWith(QLatin1Char('%')) ? name.mid(1) : name] += value;
        return entities.size() <= kMaxEntities || stop(QStringLiteral("too many entities"));
    }

    bool startEntity(const QString &name) override
    {
        const QString text = entities.value(name);
        expandedCharacters += text.size() + 1;
        if (expandedCharacters > kMaxExpandedCharacters)
            return stop(QStringLiteral("entities expand to too much text"));
        // The document's own characters are not asked for while those of an entity are read.
        return std::all_of(text.begin(), text.end(), [this](QChar c) { return takeCharacter(c); });
    }

    bool fatalError(const QXmlParseException &error) override
    {
        limitError.line = error.lineNumber();
        limitError.column = error.columnNumber();
        return false;
    }

private:
    bool stop(const QString &message)
    {
        limitError.message = message;
        return false;
    }

    XmlLimitError limitError;
    GroupDepth groups;
    QHash<QString, QString> entities;
    int elementDepth = 0;
    int expandedCharacters = 0;
    bool inDocumentType = false;
};

/// Shows the handler each character of the document before the parser gets it.
class WatchedSource : public QXmlInputSource
{
public:
    WatchedSource(QIODevice *device, LimitHandler *watcher)
        : QXmlInputSource(device)
        , handler(watcher)
    {
    }

    QChar next() override
    {
        const QChar c = QXmlInputSource::next();
        return handler->takeCharacter(c) ? c : QChar(EndOfDocument);
    }

private:
    LimitHandler *handler;
};

} // namespace

std::optional<XmlLimitError> findXmlLimitError(const QByteArray &content)
{
    QBuffer buffer;
    buffer.setData(content);
    LimitHandler handler;
    WatchedSource source(&buffer, &handler);
    QXmlSimpleReader reader;
    // As QDomDocument sets them, but for the beginning of entities, which it does not ask for.
    reader.setFeature(QStringLiteral("http://xml.org/sax/features/namespaces"), false);
    reader.setFeature(QStringLiteral("http://xml.org/sax/features/namespace-prefixes"), true);
    reader.setFeature(QStringLiteral("http://trolltech.com/xml/features/report-start-end-entity"),
                      true);
    reader.setContentHandler(&handler);
    reader.setErrorHandler(&handler);
    reader.setLexicalHandler(&handler);
    reader.setDeclHandler(&handler);
    reader.parse(&source);
    return handler.result();
}
