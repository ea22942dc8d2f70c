// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/x11/XServer.h"

#include "support/program/BoundProcess.h"

#include <QSocketNotifier>

#include <cstdlib>
#include <stdexcept>
#include <xcb/damage.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

namespace {
constexpr int startLimitMs = 20000;

template <typename Reply>
std::unique_ptr<Reply, void (*)(void *)> owned(Reply *reply)
{
    if (reply == nullptr) {
        throw std::runtime_error("the X server has not replied");
    }
    return {reply, std::free};
}
} // namespace

XServer::XServer(const QString &screen)
    : m_process(std::make_unique<BoundProcess>())
{
    m_process->setProcessChannelMode(QProcess::SeparateChannels);
    m_process->start(QStringLiteral("Xvfb"),
                     {"-displayfd", "1", "-br", "-nolisten", "tcp", "-screen", "0", screen});
    while (!m_name.endsWith('\n')) {
        if (!m_process->waitForReadyRead(startLimitMs)) {
            throw std::runtime_error("Xvfb does not start");
        }
        m_name += QString::fromLatin1(m_process->readAllStandardOutput());
    }
    m_name = ':' + m_name.trimmed();
    m_connection = xcb_connect(qPrintable(m_name), nullptr);
    if (xcb_connection_has_error(m_connection) != 0) {
        throw std::runtime_error("the X server refuses connections");
    }
    const xcb_screen_t *root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    m_root = root->root;
    m_size = {root->width_in_pixels, root->height_in_pixels};
    owned(xcb_damage_query_version_reply(m_connection, xcb_damage_query_version(m_connection, 1, 1),
                                         nullptr));
    xcb_damage_create(m_connection, xcb_generate_id(m_connection), m_root,
                      XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
    const quint32 events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &events);
    xcb_flush(m_connection);
}

XServer::~XServer()
{
    xcb_disconnect(m_connection);
    m_process->terminate();
    m_process->waitForFinished();
}

QImage XServer::picture() const
{
    const auto image = owned(
        xcb_get_image_reply(m_connection,
                            xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, 0, 0,
                                          quint16(m_size.width()), quint16(m_size.height()), ~0U),
                            nullptr));
    const int length = xcb_get_image_data_length(image.get());
    const int stride = length / m_size.height();
    const bool isPadded = stride >= m_size.width() * 4;
    const QImage shared(xcb_get_image_data(image.get()), m_size.width(), m_size.height(), stride,
                        isPadded ? QImage::Format_RGB32 : QImage::Format_BGR888);
    return shared.convertToFormat(QImage::Format_RGB32).copy();
}

bool XServer::waitForPicture(const std::function<bool(const QImage &)> &condition) const
{
    return waitForChange([&] { return condition(picture()); });
}

QVector<QRect> XServer::windows() const
{
    QVector<QRect> places;
    const auto tree =
        owned(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, m_root), nullptr));
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        // The window may have gone meanwhile.
        const std::unique_ptr<xcb_get_window_attributes_reply_t, void (*)(void *)> attributes(
            xcb_get_window_attributes_reply(
                m_connection, xcb_get_window_attributes(m_connection, children[i]), nullptr),
            std::free);
        const std::unique_ptr<xcb_get_geometry_reply_t, void (*)(void *)> place(
            xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, children[i]),
                                   nullptr),
            std::free);
        if (attributes && place && attributes->map_state == XCB_MAP_STATE_VIEWABLE) {
            places.append({place->x, place->y, place->width, place->height});
        }
    }
    return places;
}

bool XServer::waitForWindows(const std::function<bool(const QVector<QRect> &)> &condition) const
{
    return waitForChange([&] { return condition(windows()); });
}

void XServer::movePointer(const QPoint &point)
{
    fake(XCB_MOTION_NOTIFY, 0, point);
}

void XServer::click(const QPoint &point)
{
    movePointer(point);
    fake(XCB_BUTTON_PRESS, 1);
    fake(XCB_BUTTON_RELEASE, 1);
}

void XServer::press(const QVector<quint32> &keysyms)
{
    for (const quint32 keysym : keysyms) {
        fake(XCB_KEY_PRESS, keycode(keysym));
    }
    for (auto keysym = keysyms.crbegin(); keysym != keysyms.crend(); ++keysym) {
        fake(XCB_KEY_RELEASE, keycode(*keysym));
    }
}

quint32 XServer::openOtherWindow(const QRect &place)
{
    const quint32 window = xcb_generate_id(m_connection);
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, m_root, qint16(place.x()),
                      qint16(place.y()), quint16(place.width()), quint16(place.height()), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_map_window(m_connection, window);
    xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    xcb_flush(m_connection);
    return window;
}

quint32 XServer::focusedWindow() const
{
    return owned(
               xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr))
        ->focus;
}

/// Events that have arrived with a reply wake nobody, so all are taken before each wait.
bool XServer::waitForChange(const std::function<bool()> &condition) const
{
    bool isDue = true;
    const QSocketNotifier notifier(xcb_get_file_descriptor(m_connection), QSocketNotifier::Read);
    return waitFor(
        [&] {
            while (xcb_generic_event_t *event = xcb_poll_for_event(m_connection)) {
                std::free(event);
                isDue = true;
            }
            return std::exchange(isDue, false) && condition();
        },
        s_timeout);
}

quint8 XServer::keycode(quint32 keysym) const
{
    const xcb_setup_t *setup = xcb_get_setup(m_connection);
    const auto count = quint8(setup->max_keycode - setup->min_keycode + 1);
    const auto mapping = owned(xcb_get_keyboard_mapping_reply(
        m_connection, xcb_get_keyboard_mapping(m_connection, setup->min_keycode, count), nullptr));
    const xcb_keysym_t *keysyms = xcb_get_keyboard_mapping_keysyms(mapping.get());
    for (int i = 0; i < xcb_get_keyboard_mapping_keysyms_length(mapping.get()); ++i) {
        if (keysyms[i] == keysym) {
            return quint8(setup->min_keycode + i / mapping->keysyms_per_keycode);
        }
    }
    throw std::runtime_error("the keyboard has no such key");
}

void XServer::fake(quint8 type, quint8 detail, const QPoint &point) const
{
    xcb_test_fake_input(m_connection, type, detail, XCB_CURRENT_TIME, m_root, qint16(point.x()),
                        qint16(point.y()), 0);
    xcb_flush(m_connection);
}
