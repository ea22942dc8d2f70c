// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Button.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/input.h>
#include <stdexcept>
#include <unistd.h>

Button::Button(const QString &device, QObject *parent)
    : QObject(parent)
    , m_descriptor(::open(device.toLocal8Bit().constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC))
{
    if (m_descriptor == -1) {
        throw std::runtime_error(device.toStdString() + ": " + std::strerror(errno));
    }
    m_notifier = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &Button::on_descriptor_ready);
}

Button::~Button()
{
    m_notifier.reset();
    ::close(m_descriptor);
}

void Button::on_descriptor_ready()
{
    constexpr int keyPressed = 1; // 0 is released, 2 repeated
    std::array<input_event, 16> events;
    const ssize_t size = ::read(m_descriptor, events.data(), sizeof events);
    if (size == -1 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    if (size <= 0) {
        m_notifier->setEnabled(false);
        Q_EMIT lost();
        return;
    }
    // The kernel gives whole events only.
    const std::size_t count = std::size_t(size) / sizeof(input_event);
    for (std::size_t i = 0; i < count; ++i) {
        if (events[i].type == EV_KEY && events[i].value == keyPressed) {
            Q_EMIT pressed();
        }
    }
}
