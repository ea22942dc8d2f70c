// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Actions.h"
#include "Feeder.h"
#include "LoadThreads.h"
#include "Settling.h"
#include "Situation.h"
#include <core/tavo.h>

#include <QJsonObject>
#include <QLocalSocket>
#include <QTimer>

#include <array>
#include <memory>
#include <vector>

/// The load: does random things in the model, as clients and other modules do, and records them.
///
/// Controlled over a local socket, with a JSON object per line. It receives
///     {"do": "load"}   do random things until the next command
///     {"do": "rest"}   end everything and check that nothing is left
/// and sends
///     {"event": "status", "progress": N, "loading": B, "awaited": text}   about every second
///     {"event": "quiet", "heap": BYTES, ...}   everything has ended, with the figures so far
///     {"event": "violation", "what": text, "actions": [...]}   something that must not happen
class SoakWorker : public CMNodesWorker
{
    Q_OBJECT

public:
    SoakWorker(const QString &name, const QVariantHash &config);
    ~SoakWorker() override;

private Q_SLOTS:
    void on_socket_readyRead();
    void on_pulse_timeout();
    void on_statusTimer_timeout();
    void on_settling_settled();
    void on_response_activated(const CMSetDataRequest &request);
    void on_vanishing_activated(const CMSetDataRequest &request);
    void on_echo_activated(const CMSetDataRequest &request);
    void on_revoke_activated(const CMSetDataRequest &request);
    void on_queue_rowsChanged(const CMPath &path, const QStringList &changes, int, int);

private:
    void readConfiguration(const QVariantHash &config);
    void publishNodes();
    void publishVanishing(int number);
    void load();
    void rest();
    void plant();
    void answerLater(const CMReply<QVariant> &reply, int maxDelayMs);
    void tell(const QString &event, QJsonObject details = {});
    void tellViolations();

    Situation m_situation;
    QString m_socketName;
    int m_statusMs = 1000;
    std::uint64_t m_seed = 0;
    int m_threadCount = 0;
    std::unique_ptr<Dice> m_dice; ///< of the worker's thread
    std::unique_ptr<LoadThreads> m_threads;
    Feeder *m_feeder = nullptr;
    Settling *m_settling = nullptr;
    QLocalSocket m_socket;
    QTimer m_pulse;
    QTimer m_statusTimer;
    bool m_loading = false;
    std::array<CMActivateNode *, std::size_t(Actions::vanishingCount)> m_vanishing{};
    // Planted faults: memory that is never freed, requests that are never answered.
    std::array<char, 64> *m_leaked = nullptr;
    std::vector<CMReply<QVariant>> m_kept;
};
