#include "tests/e2e/screen.h"

#include <QDir>
#include <QTest>

#include <array>
#include <cstdlib>
#include <memory>

using namespace Qt::StringLiterals;

namespace
{
struct Free {
    void operator()(void *reply) const { std::free(reply); }
};
template <class T> using Answer = std::unique_ptr<T, Free>;

template <class T> Answer<T> answer(T *reply)
{
    return Answer<T>(reply);
}
} // namespace

Screen::~Screen()
{
    if (m_connection)
        xcb_disconnect(m_connection);
}

QString Screen::start()
{
    m_server.start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, u"1280x800x24"_s,
                               u"-nolisten"_s, u"tcp"_s, u"-noreset"_s});
    const QByteArray number = m_server.readUntil("\n").trimmed();
    if (number.isEmpty())
        return u"Xvfb does not start: "_s + QString::fromUtf8(m_server.readAllStandardError());
    m_display = u':' + QString::fromLatin1(number);
    m_connection = xcb_connect(m_display.toLatin1().constData(), nullptr);
    if (xcb_connection_has_error(m_connection))
        return u"no connection to the display "_s + m_display;
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    return {};
}

QImage Screen::picture() const
{
    const auto reply = answer(xcb_get_image_reply(
        m_connection, xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, 0, 0, 1280, 800, ~0U),
        nullptr));
    if (!reply)
        return {};
    return QImage(xcb_get_image_data(reply.get()), 1280, 800, 1280 * 4, QImage::Format_RGB32).copy();
}

void Screen::keep(const QImage &picture, const QString &name)
{
    const QString folder = qEnvironmentVariable("VESK_PICTURES");
    if (folder.isEmpty())
        return;
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(picture.save(folder + u'/' + name + ".png"_L1));
}

xcb_atom_t Screen::atom(const char *name) const
{
    const auto length = static_cast<uint16_t>(qstrlen(name));
    const auto reply =
        answer(xcb_intern_atom_reply(m_connection, xcb_intern_atom(m_connection, 0, length, name), nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

QByteArray Screen::title(Window window) const
{
    const auto request =
        xcb_get_property(m_connection, 0, window, atom("_NET_WM_NAME"), atom("UTF8_STRING"), 0, 256);
    const auto reply = answer(xcb_get_property_reply(m_connection, request, nullptr));
    if (!reply)
        return {};
    return QByteArray(static_cast<const char *>(xcb_get_property_value(reply.get())),
                      xcb_get_property_value_length(reply.get()));
}

std::optional<Screen::Window> Screen::window(const QString &wanted, QSize size) const
{
    const auto tree =
        answer(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, m_root), nullptr));
    if (!tree)
        return {};
    const Window *children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        const auto attributes = answer(xcb_get_window_attributes_reply(
            m_connection, xcb_get_window_attributes(m_connection, children[i]), nullptr));
        if (attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
            title(children[i]) == wanted.toUtf8() &&
            (!size.isValid() || geometry(children[i]).size() == size))
            return children[i];
    }
    return {};
}

QRect Screen::geometry(Window window) const
{
    const auto reply =
        answer(xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
    return reply ? QRect(reply->x, reply->y, reply->width, reply->height) : QRect();
}

void Screen::focus(Window window) const
{
    xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    xcb_flush(m_connection);
}

void Screen::move(Window window, QPoint place) const
{
    const std::array values = {static_cast<uint32_t>(place.x()), static_cast<uint32_t>(place.y())};
    xcb_configure_window(m_connection, window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values.data());
    xcb_flush(m_connection);
}

void Screen::close(Window window) const
{
    xcb_client_message_event_t event = {};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom("WM_PROTOCOLS");
    event.data.data32[0] = atom("WM_DELETE_WINDOW");
    xcb_send_event(m_connection, 0, window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char *>(&event));
    xcb_flush(m_connection);
}

bool Screen::xdotool(const QStringList &arguments) const
{
    Process process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DISPLAY"_s, m_display);
    process.setProcessEnvironment(environment);
    process.start(u"xdotool"_s, arguments);
    return process.waitForFinished(10000) && process.exitCode() == 0;
}

bool Screen::input(const QString &command) const
{
    return xdotool(command.split(u' ', Qt::SkipEmptyParts));
}

bool Screen::type(const QString &text) const
{
    return xdotool({u"type"_s, u"--"_s, text});
}
