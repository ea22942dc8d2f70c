// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "AttentionConfiguration.h"
#include "Floods.h"
#include "HistoryNodes.h"
#include "OpenItems.h"
#include "QuietTimes.h"
#include "RulesNode.h"
#include <base/WatchedFile.h>
#include <core/tavo.h>

#include <QElapsedTimer>
#include <QHash>
#include <QMap>

#include <attention/AttentionSettings.h>
#include <memory>
#include <vector>

/// Decides what becomes of notifications, opens their messages and sounds, and remembers them. Every
/// request gets a reply at once.
///
/// Lives in the thread that made it. Owned by the host.
class AttentionWorker : public CMNodesWorker
{
    Q_OBJECT

public:
    /// Throws the errors of TavoConfiguration.
    explicit AttentionWorker(const QVariantHash &config);

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

    void bind(const CMPath &path, void (AttentionWorker::*slot)(const CMSetDataRequest &));
    void watchSettings(const QStringList &files);

    /// The file that counts; null if none was ever there.
    const WatchedFile *settingsFile() const;
    void readSettings(const WatchedFile &file);
    Decision decide(const TavoAttentionItem &item);

    /// Whether its source has sent too many.
    bool isOverRate(SourceRates &rates, const TavoAttentionItem &item,
                    const Decision &decision) const;
    void limitRate(const TavoAttentionItem &item, Decision &decision);

    std::vector<std::unique_ptr<WatchedFile>> m_settingsFiles;
    AttentionSettings m_settings;
    bool m_hasSettings = false;
    RulesNode *m_rulesNode; ///< owned by the node set
    QuietTimes m_quietTimes;
    SourceRates m_rates;
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
    QHash<QString, FloodMessage> m_floodMessages; ///< by source
    QString m_summaryId;          ///< of the last message that tells what do-not-disturb kept back
    QMap<QString, int> m_summary; ///< what it tells: how many of which program
};
