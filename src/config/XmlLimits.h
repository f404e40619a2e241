// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// The limit that a document breaks, and the place where it does.
struct XmlLimitError
{
    QString message;
    int line = 0;
    int column = 0;
};

/// What makes `content` a document that QDomDocument would run out of stack, memory or time with:
/// elements or element declarations nested without an end, entities that expand without an end or
/// come in thousands. Nothing for every other document, well-formed or not: only QDomDocument knows
/// what is wrong with it. Takes bounded stack, memory and time for content of a bounded size.
std::optional<XmlLimitError> findXmlLimitError(const QByteArray &content);
