// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/TouchSizes.h"

#include <QFont>
#include <QProxyStyle>

class QMouseEvent;
class QStyleOptionComplex;
class QStyleOptionSpinBox;

/// The platform's style with sizes for fingers. Where a text has less room than its font takes, it
/// is drawn with smaller letters instead of being cut. User-interface thread.
class TouchStyle : public QProxyStyle
{
    Q_OBJECT

public:
    explicit TouchStyle(QSize screen);

    /// Gives the application this style, and its font the size for the screen.
    static void apply(QSize screen);

    struct tFittedText
    {
        QFont font;
        int flags; ///< Qt::TextFlag
    };

    /// How `text` fits in `room`: as it is, in several lines, or with smaller letters, whichever
    /// comes first.
    static tFittedText fitted(const QFont &font, const QString &text, QSize room, int flags);

    int pixelMetric(PixelMetric metric, const QStyleOption *option,
                    const QWidget *widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                           const QWidget *widget) const override;
    QRect subElementRect(SubElement element, const QStyleOption *option,
                         const QWidget *widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex *option,
                         SubControl subControl, const QWidget *widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex *option,
                            QPainter *painter, const QWidget *widget) const override;
    void drawItemText(QPainter *painter, const QRect &rect, int flags, const QPalette &palette,
                      bool enabled, const QString &text,
                      QPalette::ColorRole textRole) const override;
    using QProxyStyle::polish;
    void polish(QWidget *widget) override;
    using QProxyStyle::unpolish;
    void unpolish(QWidget *widget) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool moveToIndicator(QWidget *box, const QMouseEvent *event) const;
    QRect spinBoxPart(const QStyleOptionComplex &option, SubControl subControl) const;
    void drawSpinBox(const QStyleOptionSpinBox &option, QPainter *painter,
                     const QWidget *widget) const;
    void drawArrow(const QStyleOptionSpinBox &option, SubControl subControl, QPainter *painter,
                   const QWidget *widget) const;

    TouchSizes sizes;
};
