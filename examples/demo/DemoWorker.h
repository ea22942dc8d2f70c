// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DisplayScript.h"
#include "Script.h"
#include "Timeline.h"
#include <core/tavo.h>

/// Shows how a module uses sound notifications: it sends requests, receives the responses and
/// observes other services, all through the model.
///
/// Runs a fixed script, while DisplayScript does the same for the display. Writes all events to the
/// timeline. Configuration: "sounds", the folder with the files that demo/sounds.py makes;
/// "timeline", the file to write; "stays": whether the host keeps running after the script.
class DemoWorker : public CMNodesWorker
{
    Q_OBJECT

public:
    explicit DemoWorker(const QVariantHash &config);

private Q_SLOTS:
    void on_response_activated(const CMSetDataRequest &request);
    void on_mainAudioState_changed(const CMPath &path, const QVariant &value);
    void on_powerManagerState_changed(const CMPath &path, const QVariant &value);

private:
    void writeScript();
    void happened(const QString &event, const QString &id = {}, const QString &kind = {});

    void enqueue(const TavoNotificationPlayerItem &item);
    void cancel(const QString &id);

    TavoNotificationPlayerItem sound(const QString &id, TavoNotificationPlayerItemType::Enum type,
                                     const QString &content) const;
    QString file(const QString &name) const;
    static QString textOf(const QString &fileName);

    QString m_sounds;
    Timeline *m_timeline = nullptr;
    Script *m_script = nullptr;
    CMPath m_responsePath;
    bool m_stays = false;
    bool m_ducked = false;
    bool m_acquired = false;
};
