// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPaintDevice>
#include <QPaintEngine>
#include <QRectF>
#include <QString>
#include <QVector>

class QWidget;

/// A paint device of no pixels that only remembers which texts are drawn on it, and where.
class TextRecorder : public QPaintDevice
{
public:
    struct tText
    {
        QString text;
        QRectF place; ///< of the whole line height, whatever of it is clipped
        int letterPixels = 0;
    };

    /// The texts of `widget` itself, without its children's.
    static QVector<tText> textsOf(QWidget *widget);

    QPaintEngine *paintEngine() const override { return &engine; }

protected:
    int metric(PaintDeviceMetric metric) const override;

private:
    class Engine : public QPaintEngine
    {
    public:
        Engine();

        bool begin(QPaintDevice *) override { return true; }
        bool end() override { return true; }
        Type type() const override { return User; }
        void updateState(const QPaintEngineState &) override {}
        void drawPixmap(const QRectF &, const QPixmap &, const QRectF &) override {}
        void drawImage(const QRectF &, const QImage &, const QRectF &,
                       Qt::ImageConversionFlags) override
        {
        }
        void drawPolygon(const QPointF *, int, PolygonDrawMode) override {}
        void drawPath(const QPainterPath &) override {}
        void drawTextItem(const QPointF &origin, const QTextItem &item) override;

        QVector<tText> texts;
    };

    explicit TextRecorder(const QWidget *widget);

    const QWidget *model;
    mutable Engine engine;
};
