// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/commands/Command.h"
#include "cli/doctor/Finding.h"
#include <client/TavoMessages.h>

#include <QProcess>
#include <QVector>

/// Checks everything that playing and showing notifications needs, one thing after another, and prints
/// what is missing.
class DoctorCommand : public Command
{
    Q_OBJECT

public:
    DoctorCommand(const Options &options, TavoClient &client, Terminal &terminal);

    void start() override;

private Q_SLOTS:
    void on_process_ended();
    void on_check_ended();
    void on_service_ended();
    void on_displayService_ended();
    void on_display_ended();
    void on_fleetService_ended();

private:
    void lookAtModuleFiles();
    void lookAtConfiguration();
    void lookAtRunningService();
    void lookAtHost();
    void lookAtNodes();
    void lookForModules(const QVector<TavoClientNode> &nodes);
    void lookAtAttention();
    void lookAtSettings(const TavoAttentionRules &rules);
    void lookAtHistory(const TavoAttentionHistory &history, int missed);
    void lookAtMessages();
    void lookAtMusic();
    void lookAtDevices();
    void lookAtDisplay();
    void checkDisplay();
    void lookAtFleet();
    void lookAtDevice(const QString &subject, const CMPath &path, std::function<void()> next);

    bool isSystemBus() const;
    /// Starts systemctl show. False if there is no systemd, or no service could be on this bus.
    bool askSystemd(QProcess *process, const QString &unit);
    void add(Finding::State state, const char *subject, const QString &text,
             const QString &remedy = {});
    void conclude();
    void printFindings();

    TavoMessages m_messages;
    QProcess m_process;        ///< tavo-host --list-modules
    QProcess m_check;          ///< tavo-host --check
    QProcess m_service;        ///< systemctl show tavo-host
    QProcess m_displayService; ///< systemctl show tavo-display
    QProcess m_display;        ///< tavo-display --check
    QProcess m_fleetService;   ///< systemctl show tavo-fleet
    QVector<Finding> m_findings;
};
