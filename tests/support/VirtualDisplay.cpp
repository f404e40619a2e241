// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/VirtualDisplay.h"

#include "support/XReply.h"

#include <algorithm>
#include <vector>

#include <xcb/xcb.h>

namespace {

constexpr int kStartMs = 20000;
constexpr int kToolMs = 30000;
const QString kPauseMs = QStringLiteral("60"); // between two presses

/// Another client of the X server, which sees the program's window as a window manager does.
class XClient
{
public:
    explicit XClient(const QString &display)
        : server(xcb_connect(display.toLatin1().constData(), nullptr))
    {
    }
    ~XClient() { xcb_disconnect(server); }

    XClient(const XClient &) = delete;
    XClient &operator=(const XClient &) = delete;

    xcb_connection_t *connection() const { return server; }

    xcb_atom_t atom(const char *name) const
    {
        const xcb_intern_atom_cookie_t cookie =
            xcb_intern_atom(server, 0, static_cast<quint16>(qstrlen(name)), name);
        const XReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(server, cookie, nullptr));
        return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    }

    /// The numbers of a property, at most 64 of them.
    std::vector<quint32> property(xcb_window_t window, xcb_atom_t name) const
    {
        const xcb_get_property_cookie_t cookie =
            xcb_get_property(server, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, 64);
        const XReply<xcb_get_property_reply_t> reply(
            xcb_get_property_reply(server, cookie, nullptr));
        if (!reply || reply->format != 32)
            return {};
        const auto *const values =
            static_cast<const quint32 *>(xcb_get_property_value(reply.get()));
        return {values, values + reply->value_len};
    }

    /// The window on the screen that can be asked to close, XCB_NONE when there is none.
    xcb_window_t programWindow() const
    {
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(server)).data->root;
        const XReply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(server, xcb_query_tree(server, root), nullptr));
        if (!tree)
            return XCB_NONE;
        const xcb_window_t *const first = xcb_query_tree_children(tree.get());
        const xcb_window_t *const end = first + xcb_query_tree_children_length(tree.get());
        const xcb_window_t *const found = std::find_if(
            first, end, [this](xcb_window_t window) { return isMapped(window) && closes(window); });
        return found == end ? XCB_NONE : *found;
    }

private:
    bool isMapped(xcb_window_t window) const
    {
        const XReply<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
            server, xcb_get_window_attributes(server, window), nullptr));
        return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    }

    bool closes(xcb_window_t window) const
    {
        const std::vector<quint32> protocols = property(window, atom("WM_PROTOCOLS"));
        return std::find(protocols.begin(), protocols.end(), atom("WM_DELETE_WINDOW")) !=
               protocols.end();
    }

    xcb_connection_t *server;
};

} // namespace

VirtualDisplay::VirtualDisplay(QSize size)
{
    // The server picks a free display and writes its number to standard output. Without -noreset it
    // would begin anew whenever its last client leaves, and lose those that come meanwhile.
    server.setStandardErrorFile(QProcess::nullDevice());
    server.start(QStringLiteral("Xvfb"),
                 {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                  QStringLiteral("0"),
                  QStringLiteral("%1x%2x24").arg(size.width()).arg(size.height()),
                  QStringLiteral("-nolisten"), QStringLiteral("tcp"), QStringLiteral("-noreset")});
    QByteArray number;
    while (!number.endsWith('\n')) {
        if (!server.waitForReadyRead(kStartMs))
            return;
        number += server.readAllStandardOutput();
    }
    displayName = QLatin1Char(':') + QString::fromLatin1(number.trimmed());
}

VirtualDisplay::~VirtualDisplay()
{
    server.terminate();
    if (!server.waitForFinished(5000))
        server.kill();
    server.waitForFinished(5000);
}

bool VirtualDisplay::click(QPoint place, int presses) const
{
    return xdotool({QStringLiteral("mousemove"), QString::number(place.x()),
                    QString::number(place.y()), QStringLiteral("click"), QStringLiteral("--repeat"),
                    QString::number(presses), QStringLiteral("--delay"), kPauseMs,
                    QStringLiteral("1")});
}

bool VirtualDisplay::typeOver(const QString &text) const
{
    return xdotool({QStringLiteral("key"), QStringLiteral("ctrl+a")}) &&
           xdotool({QStringLiteral("type"), text});
}

bool VirtualDisplay::requestClose() const
{
    const XClient client(displayName);
    const xcb_window_t window = client.programWindow();
    if (window == XCB_NONE)
        return false;
    xcb_client_message_event_t event = {};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = client.atom("WM_PROTOCOLS");
    event.data.data32[0] = client.atom("WM_DELETE_WINDOW");
    event.data.data32[1] = XCB_CURRENT_TIME;
    const xcb_void_cookie_t sent =
        xcb_send_event_checked(client.connection(), 0, window, XCB_EVENT_MASK_NO_EVENT,
                               static_cast<const char *>(static_cast<const void *>(&event)));
    return !XReply<xcb_generic_error_t>(xcb_request_check(client.connection(), sent));
}

bool VirtualDisplay::isFrameless() const
{
    constexpr quint32 kDecorationsGiven = 2;
    const XClient client(displayName);
    const std::vector<quint32> hints =
        client.property(client.programWindow(), client.atom("_MOTIF_WM_HINTS"));
    return hints.size() > 2 && (hints[0] & kDecorationsGiven) != 0 && hints[2] == 0;
}

bool VirtualDisplay::xdotool(const QStringList &arguments) const
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), displayName);
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral("xdotool"), arguments);
    return process.waitForFinished(kToolMs) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}
