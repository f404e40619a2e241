// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLabel>
#include <QStringList>
#include <QtTest>
#include <QWidget>

/// What a user would see as a broken page: texts cut off, widgets over each other or past the edge.
/// Empty when the page, which must be visible, is in order.
inline QStringList layoutFaults(const QWidget &page)
{
    const auto own = [](const QWidget *widget) {
        return widget->isVisible() && !widget->objectName().startsWith(QLatin1String("qt_"));
    };
    const auto needed = [](const QWidget *widget) {
        const auto *const label = qobject_cast<const QLabel *>(widget);
        QSize size = widget->minimumSizeHint();
        if (label && label->wordWrap())
            size.setHeight(label->heightForWidth(label->width()));
        return size;
    };

    QStringList faults;
    if (page.minimumSizeHint().width() > 600 || page.minimumSizeHint().height() > 440)
        faults << QStringLiteral("the page wants more room than the small screen has");
    for (const QWidget *widget : page.findChildren<QWidget *>()) {
        if (!own(widget))
            continue;
        const QWidget *const around = widget->parentWidget();
        if (!around->rect().contains(widget->geometry()))
            faults << widget->objectName() + QStringLiteral(" leaves its parent");
        if (widget->width() < needed(widget).width() || widget->height() < needed(widget).height())
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
