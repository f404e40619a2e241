// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/TextRecorder.h"

#include <QAbstractButton>
#include <QLabel>
#include <QStringList>
#include <QtTest>
#include <QWidget>

#include <algorithm>

/// What a user would see as a broken page: texts cut off, widgets over each other or past the edge.
/// Empty when the page, which must be visible, is in order.
inline QStringList layoutFaults(const QWidget &page)
{
    const auto own = [](const QWidget *widget) {
        return widget->isVisible() && !widget->objectName().startsWith(QLatin1String("qt_"));
    };
    const auto isCut = [](QWidget *widget) {
        constexpr int kMinLetterPixels = 8;
        if (!qobject_cast<QLabel *>(widget) && !qobject_cast<QAbstractButton *>(widget)) {
            const QSize needed = widget->minimumSizeHint();
            return widget->width() < needed.width() || widget->height() < needed.height();
        }
        const QRectF room = QRectF(widget->rect()).adjusted(-0.5, -0.5, 0.5, 0.5);
        const auto texts = TextRecorder::textsOf(widget);
        return std::any_of(texts.begin(), texts.end(), [&](const TextRecorder::tText &text) {
            return !room.contains(text.place) || text.letterPixels < kMinLetterPixels;
        });
    };

    QStringList faults;
    if (page.minimumSizeHint().width() > page.width() ||
        page.minimumSizeHint().height() > page.height())
        faults << QStringLiteral("the page wants more room than the screen has");
    for (QWidget *widget : page.findChildren<QWidget *>()) {
        if (!own(widget))
            continue;
        const QWidget *const around = widget->parentWidget();
        if (!around->rect().contains(widget->geometry()))
            faults << widget->objectName() + QStringLiteral(" leaves its parent");
        if (isCut(widget))
            faults << widget->objectName() + QStringLiteral(" is cut");
        for (const QWidget *other :
             around->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
            if (other != widget && own(other) && other->geometry().intersects(widget->geometry()))
                faults << widget->objectName() + QStringLiteral(" overlaps ") + other->objectName();
        }
    }
    return faults;
}

/// Rows for a page at rest and in use, in the room that the window leaves it on each screen.
inline void addPageRows()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("running");
    QTest::newRow("800x480 at rest") << QSize(617, 455) << false;
    QTest::newRow("800x480 running") << QSize(617, 455) << true;
    QTest::newRow("1280x720 at rest") << QSize(1000, 690) << false;
    QTest::newRow("1280x720 running") << QSize(1000, 690) << true;
}
