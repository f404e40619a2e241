// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/probe/ViewerProbePlugin.h"

#include "support/TextRecorder.h"

#include <QApplication>
#include <QFontMetrics>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalSocket>
#include <QMouseEvent>
#include <QPixmap>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <algorithm>

namespace {

constexpr int kIndicatorPixels = 8; ///< from a check box's edge to the middle of its indicator

QJsonObject error(const QString &text)
{
    return {{QStringLiteral("error"), text}};
}

/// The child called `name`, or else one of the class or with the text `name`: not every widget has
/// a name.
QWidget *findChild(const QWidget *page, const QString &name)
{
    if (QWidget *const named = page->findChild<QWidget *>(name))
        return named;
    const QList<QWidget *> children = page->findChildren<QWidget *>();
    const auto found = std::find_if(children.begin(), children.end(), [&](const QWidget *child) {
        return QLatin1String(child->metaObject()->className()) == name ||
               child->property("text").toString().remove(QLatin1Char('&')) == name;
    });
    return found == children.end() ? nullptr : *found;
}

/// Whether the widget is what a request calls `page`; a dialog without a name goes by its class.
bool isCalled(const QWidget *widget, const QString &page)
{
    return widget->objectName() == page ||
           (widget->isWindow() && QLatin1String(widget->metaObject()->className()) == page);
}

/// The widget that a request names; of several of that name, one on the screen before hidden ones.
QWidget *findWidget(const QJsonObject &request)
{
    const QString page = request.value(QStringLiteral("page")).toString();
    if (page.isEmpty())
        return nullptr;
    const QString name = request.value(QStringLiteral("name")).toString();
    QWidget *hidden = nullptr;
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget *widget : widgets) {
        if (!isCalled(widget, page))
            continue;
        QWidget *const found = name.isEmpty() ? widget : findChild(widget, name);
        if (found && found->isVisible())
            return found;
        if (found)
            hidden = found;
    }
    return hidden;
}

QJsonObject rectOf(const QWidget *widget)
{
    const QPoint origin = widget->mapToGlobal(QPoint(0, 0));
    return {{QStringLiteral("x"), origin.x()},
            {QStringLiteral("y"), origin.y()},
            {QStringLiteral("w"), widget->width()},
            {QStringLiteral("h"), widget->height()}};
}

QJsonArray textsOf(QWidget *widget)
{
    QJsonArray texts;
    for (const TextRecorder::tText &text : TextRecorder::textsOf(widget))
        texts.append(QJsonObject{{QStringLiteral("text"), text.text},
                                 {QStringLiteral("x"), text.place.x()},
                                 {QStringLiteral("y"), text.place.y()},
                                 {QStringLiteral("w"), text.place.width()},
                                 {QStringLiteral("h"), text.place.height()},
                                 {QStringLiteral("letter"), text.letterPixels}});
    return texts;
}

QJsonObject layoutOf(const QWidget *page)
{
    QJsonArray widgets;
    for (QWidget *widget : page->findChildren<QWidget *>()) {
        if (!widget->isVisible())
            continue;
        QJsonObject entry = rectOf(widget);
        entry.insert(QStringLiteral("name"), widget->objectName());
        entry.insert(QStringLiteral("class"), QLatin1String(widget->metaObject()->className()));
        entry.insert(QStringLiteral("texts"), textsOf(widget));
        widgets.append(entry);
    }
    return {{QStringLiteral("widgets"), widgets}};
}

/// Left button down and up as the window system would report them to the window. Posted: a handler
/// may wait with the events going on, and the answer must not wait with it.
QJsonObject press(const QWidget *widget)
{
    QWindow *const window = widget->window()->windowHandle();
    if (!window || !widget->isVisible())
        return error(QStringLiteral("not on the screen"));
    QPoint target = widget->rect().center();
    // Check boxes and radio buttons may be wider than what of them can be pressed.
    if (widget->property("checkable").toBool())
        target.setX(kIndicatorPixels);
    const QPointF inWindow = widget->mapTo(widget->window(), target);
    const QPointF onScreen = widget->mapToGlobal(target);
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        const bool down = type == QEvent::MouseButtonPress;
        QCoreApplication::postEvent(
            window, new QMouseEvent(type, inWindow, inWindow, onScreen, Qt::LeftButton,
                                    down ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier));
    }
    return {};
}

/// What decides where texts of the program's own font are drawn.
QJsonObject metricsOf(int pixelSize)
{
    QFont font;
    font.setPixelSize(pixelSize);
    const QFontMetrics metrics(font);
    return {{QStringLiteral("height"), metrics.height()},
            {QStringLiteral("letter"), metrics.horizontalAdvance(QLatin1Char('W'))}};
}

/// Whether the window system has shown the window. Until then its late news of how the window began
/// may take back a state that the window got meanwhile.
QJsonObject exposure(const QWidget *widget)
{
    const QWindow *const window = widget->window()->windowHandle();
    return {{QStringLiteral("value"), window && window->isExposed()}};
}

QJsonObject screenshot(const QString &file)
{
    if (!QGuiApplication::primaryScreen()->grabWindow(0).save(file, "PNG"))
        return error(QStringLiteral("cannot save %1").arg(file));
    return {};
}

QJsonObject answer(const QJsonObject &request)
{
    const QString what = request.value(QStringLiteral("do")).toString();
    if (what == QStringLiteral("screenshot"))
        return screenshot(request.value(QStringLiteral("file")).toString());
    if (what == QStringLiteral("metrics"))
        return metricsOf(request.value(QStringLiteral("pixels")).toInt());

    const QWidget *const widget = findWidget(request);
    const bool ofApplication = request.value(QStringLiteral("page")).toString().isEmpty();
    if (!widget && !ofApplication)
        return error(QStringLiteral("no such widget"));
    if (what == QStringLiteral("rect") && widget)
        return rectOf(widget);
    if (what == QStringLiteral("layout") && widget)
        return layoutOf(widget);
    if (what == QStringLiteral("press") && widget)
        return press(widget);
    if (what == QStringLiteral("exposed") && widget)
        return exposure(widget);

    const QObject *const object = ofApplication ? static_cast<QObject *>(qApp) : widget;
    const QByteArray property = request.value(QStringLiteral("property")).toString().toLatin1();
    const QVariant value = object->property(property.constData());
    if (what != QStringLiteral("property") || !value.isValid())
        return error(QStringLiteral("no such property"));
    return {{QStringLiteral("value"), QJsonValue::fromVariant(value)}};
}

} // namespace

QObject *ViewerProbePlugin::create(const QString &, const QString &)
{
    return new ViewerProbeServer;
}

ViewerProbeServer::ViewerProbeServer(QObject *parent)
    : QLocalServer(parent)
{
    connect(this, &QLocalServer::newConnection, this, &ViewerProbeServer::serve);
    const QString name = qEnvironmentVariable("TAVRIN_PROBE_SOCKET");
    if (!listen(name))
        qWarning("viewerprobe: cannot listen on %s", qPrintable(name));
}

void ViewerProbeServer::serve()
{
    QLocalSocket *const client = nextPendingConnection();
    connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
    connect(client, &QLocalSocket::readyRead, client, [client] {
        while (client->canReadLine()) {
            const QJsonObject request = QJsonDocument::fromJson(client->readLine()).object();
            client->write(QJsonDocument(answer(request)).toJson(QJsonDocument::Compact) + '\n');
            client->flush();
        }
    });
}
