// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/TextRecorder.h"

#include <QFontInfo>
#include <QPainter>
#include <QWidget>

QVector<TextRecorder::tText> TextRecorder::textsOf(QWidget *widget)
{
    TextRecorder recorder(widget);
    widget->render(&recorder, QPoint(), QRegion(), QWidget::RenderFlags());
    return recorder.engine.texts;
}

TextRecorder::TextRecorder(const QWidget *widget)
    : model(widget)
{
}

int TextRecorder::metric(PaintDeviceMetric metric) const
{
    switch (metric) {
    case PdmWidth:
        return model->width();
    case PdmHeight:
        return model->height();
    case PdmWidthMM:
        return model->widthMM();
    case PdmHeightMM:
        return model->heightMM();
    case PdmNumColors:
        return model->colorCount();
    case PdmDepth:
        return model->depth();
    case PdmDpiX:
    case PdmPhysicalDpiX:
        return model->logicalDpiX();
    case PdmDpiY:
    case PdmPhysicalDpiY:
        return model->logicalDpiY();
    case PdmDevicePixelRatio:
        return 1;
    case PdmDevicePixelRatioScaled:
        return static_cast<int>(devicePixelRatioFScale());
    default:
        return QPaintDevice::metric(metric);
    }
}

TextRecorder::Engine::Engine()
    : QPaintEngine(AllFeatures)
{
}

void TextRecorder::Engine::drawTextItem(const QPointF &origin, const QTextItem &item)
{
    const QRectF line(origin.x(), origin.y() - item.ascent(), item.width(),
                      item.ascent() + item.descent());
    texts.append({item.text(), painter()->combinedTransform().mapRect(line),
                  QFontInfo(item.font()).pixelSize()});
}
