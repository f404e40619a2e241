// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QGenericPlugin>
#include <QJsonObject>
#include <QLocalServer>

/// Answers questions about the widgets of a program that it is loaded into: Qt loads it into any
/// unchanged program when the environment variable QT_QPA_GENERIC_PLUGINS names "viewerprobe". It
/// listens on the local socket that TAVRIN_PROBE_SOCKET names.
///
/// Requests and answers are JSON objects, one a line:
///   {"do":"property","page":P,"name":N,"property":X}  -> {"value":...}
///   {"do":"rect","page":P,"name":N}                   -> {"x":,"y":,"w":,"h":} on the screen
///   {"do":"press","page":P,"name":N}                  -> {} when the press is on its way: where
///                                        a screen would have it, in the middle or on the indicator
///   {"do":"screenshot","file":F}                      -> {} when the screen was saved as PNG
///   {"do":"metrics","pixels":S}                       -> {"height":,"letter":} of the default font
///   {"do":"layout","page":P}                          -> {"widgets":[...]}: what of the page can
///                                        be seen, each with its name, class, "x", "y", "w", "h" on
///                                        the screen and "texts" as drawn: place in the widget and
///                                        "letter", the letters' size in pixels
/// P and N are object names; an empty N means the page itself, an empty P the application, and
/// where no child is called N one of the class N, or with the text N, is looked for. "letter" is
/// the width of "W". What fails answers {"error":text}.
class ViewerProbePlugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "viewerprobe.json")

public:
    QObject *create(const QString &name, const QString &parameters) override;
};

/// The server behind the plugin. User-interface thread.
class ViewerProbeServer : public QLocalServer
{
    Q_OBJECT

public:
    explicit ViewerProbeServer(QObject *parent = nullptr);

private:
    void serve();
};
