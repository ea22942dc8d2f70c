// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/commands/fleet/FleetCommand.h"

#include <QElapsedTimer>
#include <QHash>
#include <QMap>
#include <QSet>

#include <fleet/protocol/FleetAnswer.h>
#include <fleet/protocol/FleetCall.h>

/// Sends a call to devices and groups, and prints the answer of each device once.
///
/// Sends it again, with the same id, to devices that have not answered: when they or this program connect again,
/// and from time to time. Finishes when all have answered, or the time is up.
class FleetCallCommand : public FleetCommand
{
    Q_OBJECT

public:
    FleetCallCommand(const Options &options, TavoClient &client, Terminal &terminal);

private:
    QStringList filters() const override;
    int timeLimitMs() const override;
    bool prepare() override;
    void onConnected() override;
    void onDevicesKnown() override;
    void onMessage(const FleetTopic &topic, const MqttMessage &message) override;
    void onTimeUp() override;
    void onDisconnected(const QString &reason) override;
    void onRefused(int number, const QString &reason) override;

    void expectGroups();
    void expect(const QString &device);
    void send(const QString &topic);
    void sendToMissing();
    void takeAnswer(const QString &device, const QByteArray &payload);
    void finishIfAnswered();
    void report();
    void printLine(const QString &device, const QString &text, Terminal::Style style);
    void printMissing();
    QString missingText() const;
    void printAsJson();
    void showProgress();
    QStringList missing() const;
    bool isComplete() const;

private Q_SLOTS:
    void on_repeat_timeout();
    void on_progress_timeout();

private:
    FleetCall m_call;
    QMap<QString, FleetAnswer> m_answers; ///< by the device
    QSet<QString>
        m_missing; ///< those of the called devices, as far as known, that have not answered
    QMap<QString, qint64> m_answerTimes;
    QHash<int, QString> m_sent; ///< the topics of the calls, by the numbers of their messages
    QElapsedTimer m_since;
    qint64 m_untilStart = 0; ///< of a sound that starts later, in ms after m_since
    QTimer m_repeat;
    QTimer m_progress;
    bool m_areGroupsKnown = false;
};
