// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DisplayScript.h"
#include "Script.h"
#include "Timeline.h"
#include <core/tavo.h>

/// Shows what a module does with sound notifications: sends requests, takes the responses and
/// watches the services around, all through the model.
///
/// Runs a fixed script beside that of DisplayScript, which does the same for the display. All
/// that happens goes to the timeline. Configuration: "sounds", the folder with the sounds (it has
/// the files that demo/sounds.py makes), "timeline", the file to write, and "stays": true leaves the
/// host running behind the script, which otherwise ends it.
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
