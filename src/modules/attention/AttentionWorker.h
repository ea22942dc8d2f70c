// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "AttentionConfiguration.h"
#include "Entrance.h"
#include "Floods.h"
#include "HistoryNodes.h"
#include "OpenItems.h"
#include "QuietTimes.h"
#include "RulesNode.h"
#include <base/WatchedFile.h>
#include <core/tavo.h>

#include <QElapsedTimer>
#include <QMap>
#include <QSet>

#include <attention/AttentionSettings.h>
#include <memory>
#include <vector>

/// Decides what becomes of notifications, opens their messages and sounds, and remembers them. Every
/// request gets a reply at once. A usual one to notify people is handled in the thread of its sender, and
/// wakes this one up no earlier than with its end.
///
/// Lives in the thread that made it. Owned by the host.
class AttentionWorker : public CMNodesWorker
{
    Q_OBJECT

public:
    /// Throws the errors of TavoConfiguration.
    explicit AttentionWorker(const QVariantHash &config);
    ~AttentionWorker() override;

private Q_SLOTS:
    void on_notify_activated(const CMSetDataRequest &request);
    void on_replace_activated(const CMSetDataRequest &request);
    void on_close_activated(const CMSetDataRequest &request);
    void on_sound_activated(const CMSetDataRequest &request);
    void on_try_activated(const CMSetDataRequest &request);
    void on_settingsFile_changed(const WatchedFile &file);
    void on_settingsFile_vanished(const WatchedFile &file);
    void on_quietTimes_ended(const QMap<QString, int> &missed);
    void on_floods_over(QString source, QString application, int count);
    void on_history_leftOpen(const QVector<HistoryEntry> &entries);

private:
    AttentionWorker(const QVariantHash &config, const AttentionConfiguration &configuration);

    /// Called in any thread, within a hold of the entrance. Returns false, and has done nothing, if the request
    /// needs the worker's thread.
    bool notifyAtOnce(const CMSetDataRequest &request);
    void watchSettings(const QStringList &files);

    /// The file that counts; null if none was ever there.
    const WatchedFile *settingsFile() const;
    void readSettings(const WatchedFile &file);
    Decision decide(const AttentionItem &item);

    /// Decided; the rules that have applied are counted.
    void remember(const AttentionInput &input, const Decision &decision);

    /// Why it can't be opened, apart from its content; empty if it can.
    TrString refusal(const AttentionItem &item) const;
    void reply(const CMSetDataRequest &request, AttentionOutcome outcome,
               const Decision &decision) const;

    /// Whether its source has sent too many.
    bool isOverRate(SourceRates &rates, const AttentionItem &item, const Decision &decision) const;
    void limitRate(const AttentionItem &item, Decision &decision);

    /// As how many it counts in the history, by the length of its texts, which are stored twice: the index takes
    /// about as much as they do.
    int shareOf(const AttentionItem &item, const Decision &decision) const;

    /// Leaves it out of the history if its user has sent too many, under whatever names.
    void limitMemory(const AttentionItem &item, Decision &decision);

    /// Whether a message of the module itself is open.
    bool isOwn(const QString &id) const;
    /// Opens or replaces one.
    void showOwn(const AttentionItem &item, Decision decision);

    const std::shared_ptr<Entrance> m_entrance;
    std::vector<std::unique_ptr<WatchedFile>> m_settingsFiles;
    AttentionSettings m_settings;
    bool m_hasSettings = false;
    RulesNode *m_rulesNode; ///< owned by the node set
    QuietTimes m_quietTimes;
    SourceRates m_rates;
    SourceRates m_userRates;        ///< of what is remembered
    qint64 m_usualEntryBytes = 1;   ///< if the history has both as many entries and bytes as it may
    QSet<QString> m_forgottenUsers; ///< of whom something was left out of the history
    QElapsedTimer m_clock;
    History m_history;
    HistoryNodes m_historyNodes;
    Speech m_speech;
    OpenItems m_items;

    /// The message that tells of a source's floods.
    struct FloodMessage
    {
        QString id;
        int count;
    };
    Floods m_floods;
    QMap<QString, FloodMessage> m_floodMessages; ///< by source
    QString m_summaryId;          ///< of the last message that tells what do-not-disturb kept back
    QMap<QString, int> m_summary; ///< what it tells: how many of which program
};
