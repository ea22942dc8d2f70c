// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/attention/AttentionModuleTest.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

class AttentionModuleTest::Ends : public QObject
{
public:
    explicit Ends(QVector<TavoAttentionEnded> &ends)
        : m_ends(ends)
    {
        CMRoot()->connectValueChange(TavoAttentionEndedPath(), this, &Ends::on_ended);
    }

private:
    void on_ended(const CMPath & /*path*/, const QVariant &value)
    {
        const auto ended = TavoValue(value.toHash()).attentionEnded();
        if (!ended.isEmpty()) {
            m_ends.append(ended);
        }
    }

    QVector<TavoAttentionEnded> &m_ends;
};

AttentionModuleTest::AttentionModuleTest()
    : m_listener(std::make_shared<Ends>(m_ends))
{
    ScriptedPlayers::instance().reset();
    m_services.publish(
        TavoPlayerAlsaDeviceNotificationsPath(),
        TavoValue().setAudioDevice(TavoPlayerAudioDevice().setDevice(QStringLiteral("device"))));
    m_services.take(TavoPowerManagerModuleRegisterPath(), ScriptedService::accept());
    m_services.take(TavoPowerManagerResourceRequestPath(), ScriptedService::accept());
    m_services.take(TavoPlayerMainAudioDuckingPath(), ScriptedService::accept());
    m_notifications =
        std::make_unique<LoadedModule>(QStringLiteral(NOTIFICATIONS_FILE), "notifications");
}

void AttentionModuleTest::load()
{
    m_attention.reset();
    const QVariantHash config{
        {QStringLiteral("settings"), settingsFile()},
        {QStringLiteral("speech"),
         QVariantHash{{QStringLiteral("command"), m_speechCommand},
                      {QStringLiteral("folder"), m_folder.filePath(QStringLiteral("speech"))},
                      {QStringLiteral("sounds"), m_speechSounds},
                      {QStringLiteral("timeout"), m_speechTimeoutMs}}},
        {QStringLiteral("history"), QVariantHash{{QStringLiteral("file"), historyFile()}}},
    };
    m_attention =
        std::make_unique<LoadedModule>(QStringLiteral(ATTENTION_FILE), "attention", config);
}

void AttentionModuleTest::writeSettings(const QByteArray &json)
{
    QFile file(settingsFile());
    QDir().mkpath(QFileInfo(file).path());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(json);
}

void AttentionModuleTest::setSettings(const QByteArray &json)
{
    writeSettings(json);
    if (m_attention) {
        const std::size_t before = m_log.find(settingsFile().toStdString()).size();
        ASSERT_TRUE(waitFor(
            [this, before] { return m_log.find(settingsFile().toStdString()).size() > before; }));
    }
}

TavoAttentionItem AttentionModuleTest::message(const QString &title, const QString &source)
{
    return TavoAttentionItem()
        .setId(title)
        .setTitle(title)
        .setText(QStringLiteral("text"))
        .setSource(source)
        .setPriority(Priority::Normal);
}

TavoAttentionItem AttentionModuleTest::withSound(TavoAttentionItem item, const QString &sound)
{
    return item.setSound(
        TavoNotificationPlayerItem().setId(sound).setContent(QStringLiteral("/sounds/") + sound));
}

TavoAttentionOutcome AttentionModuleTest::notify(const TavoAttentionItem &item)
{
    const Request request = requestNotify(item);
    EXPECT_TRUE(request.succeeds()) << request.errorText();
    settle();
    return TavoValue(request.value().toHash()).attentionOutcome();
}

namespace {
QVariantList rowsAt(const CMPath &path)
{
    const CMReply<QVariant> reply;
    CMRoot()->getRowsRequest(CMGetRowsRequest(path, 0, -1, reply));
    return reply.value().toList();
}
} // namespace

CMPath AttentionModuleTest::displayedPath(int index)
{
    return CMPath::fromQVariant(rowsAt(TavoNotificationDisplayQueuePath()).value(index));
}

std::vector<QString> AttentionModuleTest::displayed()
{
    std::vector<QString> titles;
    for (const QVariant &row : rowsAt(TavoNotificationDisplayQueuePath())) {
        const auto entry = CMCatalog::entry(CMPath::fromQVariant(row));
        titles.push_back(entry ? entry->title.toString() : QString());
    }
    return titles;
}

TavoRoles AttentionModuleTest::rowOf(const CMPath &path, int index)
{
    return TavoRoles(rowsAt(path).value(index).toHash());
}

ScriptedPlayer *AttentionModuleTest::playing(const QString &id)
{
    ScriptedPlayer *player = nullptr;
    waitFor([&player, &id] {
        player = ScriptedPlayers::instance().find(id);
        return player != nullptr && player->plays > 0;
    });
    return player;
}

TavoAttentionEnded AttentionModuleTest::endOf(const QString &id)
{
    const TavoAttentionEnded *found = nullptr;
    EXPECT_TRUE(waitFor([this, &id, &found] {
        const auto *const ended =
            std::find_if(m_ends.cbegin(), m_ends.cend(),
                         [&id](const TavoAttentionEnded &each) { return each.id() == id; });
        found = ended != m_ends.cend() ? ended : nullptr;
        return found != nullptr;
    })) << id.toStdString();
    return found != nullptr ? *found : TavoAttentionEnded();
}

std::vector<TavoAttentionRecord> AttentionModuleTest::history(const TavoAttentionQuery &query)
{
    const Request request(TavoAttentionHistoryPath(), TavoValue().setAttentionQuery(query));
    EXPECT_TRUE(request.succeeds()) << request.errorText();
    return elementsOf(TavoValue(request.value().toHash()).attentionPage().records());
}

Request AttentionModuleTest::setDoNotDisturb(bool on, qint64 until)
{
    Request request(TavoAttentionSetDoNotDisturbPath(),
                    TavoValue().setAttentionDoNotDisturb(
                        TavoAttentionDoNotDisturb().setOn(on).setUntil(until)));
    request.waitForReply();
    return request;
}
