// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DisplayClient.h"
#include "DisplayModel.h"
#include "DisplayStep.h"
#include "explorer/engine/System.h"

#include <QHash>

#include <memory>

/// The display side of the module, checked against its contract after every step.
///
/// Some faults show only later. So at the end of every sequence an urgent notification is opened,
/// and then everything is shown until its timeout.
class DisplaySystem : public exploration::System
{
public:
    DisplaySystem(const std::string &module, const DisplayBounds &bounds);

    void start() override;
    std::vector<exploration::Action> actions() override;
    void act(exploration::Action action) override;
    std::string state() override;
    void inspect() override;
    void finish() override;

private:
    static constexpr int tick = 10; ///< in milliseconds

    // The steps.
    void open(DisplayModel::Form form, int priority, int time);
    void remove(const DisplayStep &step);
    static CMReply<QVariant> send(DisplayStep::Kind kind, const CMPath &path);
    void pass(bool onTime);
    void deliverTimers();
    void runOut();

    // The checks.
    void check();
    void checkRows();
    void checkTimer();
    void checkStatus();
    void checkNodes();
    void checkSubscriptions();
    void checkLog();
    void checkShown();
    void expectCancelled(const CMReply<QVariant> &reply);
    void expectRefusal(const CMReply<QVariant> &reply, const char *text);
    void broken(const std::string &rule, const QString &detail = {});

    static QString messageText(int number);
    TavoNotificationDisplayItem itemOf(DisplayModel::Form form, int priority, int time) const;

    ModuleHost m_host;
    DisplayBounds m_bounds;

    std::unique_ptr<DisplayClient> m_client;
    DisplayModel m_model;
    QHash<int, CMPath> m_paths; ///< of every notification that has been opened
    QStringList m_expectedLog;
    bool m_broken = false;
};
