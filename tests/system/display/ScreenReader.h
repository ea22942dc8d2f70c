// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/program/Program.h"

#include <QString>

#include <gtest/gtest.h>

#include <csignal>

/// A screen reader and the accessibility bus of a desktop. It speaks to its standard output.
class ScreenReader
{
public:
    /// Ends the accessibility bus too, which a launcher that is killed leaves behind.
    ~ScreenReader()
    {
        if (m_launcher.isRunning()) {
            m_launcher.sendSignal(SIGTERM);
            m_launcher.waitForExit();
        }
    }

    /// For programs of this environment. Returns when the reader listens. Presses this button of each
    /// message, as soon as it may be pressed. With "--look", goes through all objects instead; with "--showing" and
    /// roles, says which objects of these are shown and hidden.
    void start(const std::function<void(Program &)> &prepare, const QString &bus,
               const QStringList &arguments)
    {
        for (Program *program : {&m_launcher, &m_reader}) {
            prepare(*program);
            program->setEnvironment("DBUS_SESSION_BUS_ADDRESS", bus);
        }
        m_launcher.setEnvironment("GSETTINGS_BACKEND", "memory"); // This bus has no dconf.
        m_launcher.start({"--launch-immediately"});
        m_reader.start(QStringList{TAVO_SCREEN_READER} + arguments);
        ASSERT_TRUE(hears("listening\n"));
    }

    /// Waits until this has been spoken.
    bool hears(const std::string &text) { return m_reader.waitForOutput(text); }

    std::string output() const { return m_reader.output() + m_reader.error(); }

private:
    Program m_launcher{"/usr/libexec/at-spi-bus-launcher"};
    Program m_reader{"/usr/bin/python3"};
};
