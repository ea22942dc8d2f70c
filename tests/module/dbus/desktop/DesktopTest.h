// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/bus/ClientProgram.h"
#include "support/bus/PrivateBus.h"
#include "support/EventLoop.h"
#include "support/LoadedModule.h"
#include "support/LogCapture.h"
#include "support/Text.h"
#include <core/model/cmcatalog.h>
#include <core/tavo.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

/// The display and the module, on a private bus that they take for the session's. Foreign programs use them on the bus, and the tests
/// look at the result in the model.
class DesktopTest : public testing::Test
{
protected:
    /// Loads both modules and waits until notifications are served.
    explicit DesktopTest(const QVariantHash &config = {}, const QString &busSettings = {});

    /// Loads the module again, for a bus that several users share.
    void shareBus(QVariantHash config = {});

    PrivateBus &bus() { return m_bus; }
    LogCapture &log() { return m_log; }

    bool isServing(int times = 1);

    /// Runs notify-send until it ends. Returns the id that it prints, or 0.
    quint32 notifySend(const QStringList &arguments);

    /// Calls a method of the interface with gdbus, with arguments in GVariant's text form. Returns what
    /// gdbus prints, or the error.
    QString result(const QString &method, const QStringList &arguments = {});

    /// Runs a script for Python's dbus module, with functions Notify() and CloseNotification(), until it
    /// ends. Returns what it prints, or the error.
    QString python(const QString &script);

    /// Has gdbus write every signal of the interface from now on.
    std::unique_ptr<ClientProgram> monitor();
    static QString closedSignal(quint32 id, int reason);

    static CMPath pathOf(quint32 id);
    static QVector<CMPath> displayed();
    static QString titleOf(quint32 id);
    static TavoRoles rowOf(quint32 id, int index = 0);
    static int rowCount(quint32 id);
    bool isOpen(quint32 id) { return !CMCatalog::tree(pathOf(id)).empty(); }

    void unload() { m_module.reset(); }

private:
    PrivateBus m_bus;
    LogCapture m_log{"Dbus"};
    LoadedModule m_display;
    std::unique_ptr<LoadedModule> m_module;
};
