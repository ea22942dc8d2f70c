// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Timeline.h"

#include <core/tavo.h>

#include <functional>
#include <memory>
#include <vector>

/// Shows what a module does with sound notifications: sends requests, takes the responses and
/// watches the services around, all through the model.
///
/// Runs a fixed script: each step waits for an event, then for some milliseconds, and acts. All
/// that happens goes to the timeline. Configuration: "sounds", the folder with the sounds (it has
/// the files that demo/sounds.py makes), and "timeline", the file to write.
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
    struct Step
    {
        QString after; ///< the event that it waits for
        int delay;     ///< milliseconds from that event on
        std::function<void()> act;
    };

    void writeScript();
    void happened(const QString &event, const QString &id = {}, const QString &kind = {});

    void enqueue(const TavoNotificationPlayerItem &item);
    void cancel(const QString &id);

    TavoNotificationPlayerItem sound(const QString &id, TavoNotificationPlayerItemType::Enum type,
                                     const QString &content) const;
    QString file(const QString &name) const;
    static QString textOf(const QString &fileName);

    QString m_sounds;
    std::unique_ptr<Timeline> m_timeline;
    CMPath m_responsePath;
    std::vector<Step> m_script;
    std::size_t m_next = 0; ///< the step that waits
    bool m_ducked = false;
    bool m_acquired = false;
};
