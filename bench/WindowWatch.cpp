// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "WindowWatch.h"

#include "support/XReply.h"

#include <QDeadlineTimer>

#include <poll.h>
#include <xcb/xcb.h>

namespace {

/// Toolkits have small windows of their own, for the clipboard and the input focus.
constexpr int kLeastWidth = 100;

const xcb_screen_t *screenOf(xcb_connection_t *server)
{
    return xcb_setup_roots_iterator(xcb_get_setup(server)).data;
}

} // namespace

WindowWatch::WindowWatch(const QString &display)
    : server(xcb_connect(display.toLatin1().constData(), nullptr))
{
    if (xcb_connection_has_error(server) != 0)
        return;
    const quint32 events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(server, screenOf(server)->root, XCB_CW_EVENT_MASK, &events);
    // An answer tells that the server has got as far as this.
    const XReply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(server, xcb_get_input_focus(server), nullptr));
}

WindowWatch::~WindowWatch()
{
    xcb_disconnect(server);
}

bool WindowWatch::waitForWindow(int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    while (xcb_connection_has_error(server) == 0 && !deadline.hasExpired()) {
        const XReply<xcb_generic_event_t> event(xcb_poll_for_event(server));
        if (!event) {
            pollfd readable = {xcb_get_file_descriptor(server), POLLIN, 0};
            ::poll(&readable, 1, static_cast<int>(deadline.remainingTime()));
            continue;
        }
        if ((event->response_type & 0x7f) != XCB_MAP_NOTIFY)
            continue;
        const void *const content = event.get();
        if (isForUser(static_cast<const xcb_map_notify_event_t *>(content)->window))
            return true;
    }
    return false;
}

QImage WindowWatch::picture() const
{
    if (xcb_connection_has_error(server) != 0)
        return {};
    const xcb_screen_t *const screen = screenOf(server);
    const XReply<xcb_get_image_reply_t> reply(
        xcb_get_image_reply(server,
                            xcb_get_image(server, XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root, 0, 0,
                                          screen->width_in_pixels, screen->height_in_pixels, ~0U),
                            nullptr));
    if (!reply || reply->depth != 24)
        return {};
    return QImage(xcb_get_image_data(reply.get()), screen->width_in_pixels,
                  screen->height_in_pixels, QImage::Format_RGB32)
        .copy();
}

/// What was told of an earlier program's window does not count: that has no size any more.
bool WindowWatch::isForUser(quint32 window) const
{
    const XReply<xcb_get_geometry_reply_t> reply(
        xcb_get_geometry_reply(server, xcb_get_geometry(server, window), nullptr));
    return reply && reply->width >= kLeastWidth;
}
