// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Actions.h"
#include "Feeder.h"
#include "Raisers.h"
#include "Settling.h"
#include "Situation.h"
#include <core/tavo.h>

#include <QJsonObject>
#include <QLocalSocket>
#include <QTimer>

#include <array>
#include <memory>
#include <vector>

/// The load: does random things in the model, as clients and other modules do, and keeps books.
///
/// Whoever drives it talks to it over a local socket, a JSON object a line. It is told
///     {"do": "load"}   until told otherwise
///     {"do": "rest"}   end everything and check that nothing is left
/// and tells
///     {"event": "status", "progress": N, "loading": B, "awaited": text}   about once a second
///     {"event": "quiet", "heap": BYTES, ...}   everything has ended; what there was so far
///     {"event": "violation", "what": text, "actions": [...]}   something must not be
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
    void answerLater(const CMReply<QVariant> &reply, int mostMs);
    void tell(const QString &event, QJsonObject details = {});
    void tellViolations();

    Situation m_situation;
    QString m_socketName;
    int m_statusMs = 1000;
    std::uint64_t m_seed = 0;
    int m_threadCount = 0;
    std::unique_ptr<Dice> m_dice; ///< the worker's thread's
    std::unique_ptr<Raisers> m_raisers;
    Feeder *m_feeder = nullptr;
    Settling *m_settling = nullptr;
    QLocalSocket m_socket;
    QTimer m_pulse;
    QTimer m_statusTimer;
    bool m_loading = false;
    std::array<CMActivateNode *, std::size_t(Actions::vanishingCount)> m_vanishing{};
    // Planted: what is never freed, and never answered.
    std::array<char, 64> *m_leaked = nullptr;
    std::vector<CMReply<QVariant>> m_kept;
};
