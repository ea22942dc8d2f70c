// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/platform/Platform.h"

#include <QDir>
#include <QFileInfo>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {
/// Whether a server listens on the socket, in the file system or, with a leading null, beside it.
bool isServed(const QByteArray &path)
{
    sockaddr_un address = {};
    if (path.size() >= int(sizeof address.sun_path)) {
        return false;
    }
    address.sun_family = AF_UNIX;
    std::copy(path.begin(), path.end(), address.sun_path);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const auto size = socklen_t(offsetof(sockaddr_un, sun_path)) + socklen_t(path.size());
    const bool isServed =
        connect(descriptor, reinterpret_cast<const sockaddr *>(&address), size) == 0;
    close(descriptor);
    return isServed;
}

bool isWaylandServed()
{
    const QByteArray name = qgetenv("WAYLAND_DISPLAY");
    return !name.isEmpty() &&
           isServed(name.startsWith('/') ? name : qgetenv("XDG_RUNTIME_DIR") + '/' + name);
}

bool isX11Served()
{
    const QByteArray name = qgetenv("DISPLAY");
    if (!name.startsWith(':')) {
        return !name.isEmpty(); // on another machine
    }
    const QByteArray number = name.mid(1).split('.').first();
    const QByteArray path = "/tmp/.X11-unix/X" + number;
    return isServed(path) || isServed('\0' + path);
}

/// Empty if there is no display.
QByteArray presentPlatform()
{
    if (isWaylandServed()) {
        return QByteArrayLiteral("wayland");
    }
    if (isX11Served()) {
        return QByteArrayLiteral("xcb");
    }
    if (!QDir(QStringLiteral("/dev/dri"))
             .entryList({QStringLiteral("card*")}, QDir::System)
             .isEmpty()) {
        return QByteArrayLiteral("eglfs");
    }
    return QFileInfo::exists(QStringLiteral("/dev/fb0")) ? QByteArrayLiteral("linuxfb")
                                                         : QByteArray();
}

void setDefault(const char *variable, const char *value)
{
    if (!qEnvironmentVariableIsSet(variable)) {
        qputenv(variable, value);
    }
}
} // namespace

Result<QString> choosePlatform(DisplayConfiguration::Renderer renderer)
{
    QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    if (platform.isEmpty()) {
        platform = presentPlatform();
    } else if ((platform == "xcb" && !isX11Served()) ||
               (platform == "wayland" && !isWaylandServed())) {
        platform.clear(); // Qt would abort the process.
    }
    if (platform.isEmpty()) {
        return Failure{QStringLiteral(
            "there is no display: neither Wayland nor X11 can be reached, and there is "
            "no frame buffer; start it in a graphical session, whose WAYLAND_DISPLAY "
            "or DISPLAY it needs")};
    }
    qputenv("QT_QPA_PLATFORM", platform);
    if (renderer == DisplayConfiguration::Renderer::Software) {
        setDefault("QT_QUICK_BACKEND", "software");
        // Loading OpenGL only to find that it is emulated takes 50 MB.
        setDefault("QT_XCB_GL_INTEGRATION", "none");
        setDefault("QT_WAYLAND_CLIENT_BUFFER_INTEGRATION", "none");
    }
    // For each new window, this takes longer than it saves: touches arrive as those of a pointer.
    setDefault("QT_XCB_NO_XI2", "1");
    setDefault("QT_QPA_UPDATE_IDLE_TIME", "0"); // Otherwise each change waits for 5 ms.
    setDefault("QT_WAYLAND_DISABLE_WINDOWDECORATION", "1");
    qputenv("QT_IM_MODULE", "none"); // Nothing is typed.
    // Otherwise Qt does not notice a screen reader that starts later.
    setDefault("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    return QString::fromLocal8Bit(platform + ' ' +
                                  (platform == "wayland" ? qgetenv("WAYLAND_DISPLAY")
                                   : platform == "xcb"   ? qgetenv("DISPLAY")
                                                         : QByteArray()));
}
