// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Setting.h"
#include "support/bus/PrivateBus.h"
#include "support/host/HostProcess.h"

#include <QTemporaryDir>

#include <memory>

/// The resources of a host, and what it holds for clients.
struct HostState
{
    int descriptors = 0;
    int threads = 0;
    long residentKiB = 0;
    bool isPlaying = false; ///< sounds of clients that have left play to their end
    // Things that clients can leave behind:
    long rows = 0; ///< of the display
    long inboxes = 0;
    long requesters = 0; ///< of ducking
    long modules = 0;    ///< registered with the power manager
};

/// A host with the installed policy on a bus with the limits of the system bus, with the restrictions of
/// the installed service where this process is root. It plays on a device without hardware.
///
/// Lives in the thread that made it, which must run an event loop.
class CrowdHost
{
public:
    /// Starts both. Throws on error.
    CrowdHost();

    const Setting &setting() const { return m_setting; }

    bool isRunning() const { return m_host.isRunning(); }
    long residentKiB() const;

    /// Reads the state over the bus, as the good client. Throws on error.
    HostState state() const;

    /// Removes what is on display. Throws on error.
    void clearDisplay() const;

    /// The end of the log.
    std::string log() const;

    /// True if the host ends as it should.
    bool stop() { return m_host.stop() == 0; }

private:
    void chooseUsers();
    void writeFiles();
    void startBus();
    void startHost();
    void loadHttp() const;
    QString inFolder(const char *name) const { return m_folder.filePath(QLatin1String(name)); }

    QTemporaryDir m_folder;
    Setting m_setting;
    std::unique_ptr<PrivateBus> m_bus;
    HostProcess m_host;
};
