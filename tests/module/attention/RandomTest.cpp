// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Random requests, settings and people, on the module and on a plain model of it, which must always agree.
// TAVO_ATTENTION_RUNS sets how many runs there are, each with another seed.

#include "module/attention/AttentionModuleTest.h"
#include "module/attention/PlainAttention.h"

#include <QSet>

#include <algorithm>
#include <random>

namespace {
constexpr int steps = 60;

class AttentionRandomTest : public AttentionModuleTest, public testing::WithParamInterface<unsigned>
{
protected:
    AttentionRandomTest()
        : m_random(GetParam())
        , m_model(m_random)
    {
        writeSettings(m_model.chooseSettings());
        load();
    }

    int upTo(int limit) { return std::uniform_int_distribution<int>(0, limit)(m_random); }

    QString openId()
    {
        const QStringList open = m_model.open();
        return open.isEmpty() ? QString() : open.at(upTo(open.size() - 1));
    }

    PlainAttention::Item choose(const QString &id)
    {
        PlainAttention::Item item;
        item.id = id;
        item.source = QStringList{"mail", "chat", "door"}.at(upTo(2));
        item.title = QStringList{"alarm", "parcel", "ring", "ring twice", "other"}.at(upTo(4));
        item.priority = Priority::Enum(upTo(3));
        item.hasSound = upTo(3) == 0;
        return item;
    }

    TavoAttentionItem requestOf(const PlainAttention::Item &item)
    {
        auto request = message(item.title, item.source).setId(item.id).setPriority(item.priority);
        if (hasOwnNode(item.id)) {
            CMListRowsNode *&node = m_ownNodes[item.id];
            if (node == nullptr) {
                node = CMListRowsNode::create(m_nodes.nodes(), CMPath("/random/"_s + item.id));
            }
            node->setTitle(item.title);
            request.setPath(node->path());
        }
        return item.hasSound ? withSound(request, item.id) : request;
    }

    /// Half of the notifications have a node of their requester's.
    static bool hasOwnNode(const QString &id) { return id.toInt() % 2 == 1; }

    static void expectSame(const TavoAttentionOutcome &outcome,
                           const PlainAttention::Outcome &expected)
    {
        EXPECT_EQ(outcome.shown(), expected.isShown);
        EXPECT_EQ(outcome.sounding(), expected.isSounding);
        const auto rules = elementsOf(outcome.rules());
        EXPECT_EQ(QStringList(rules.begin(), rules.end()), expected.rules);
    }

    void notifyOne()
    {
        const auto item = choose(QString::number(++m_lastId));
        m_sources.insert(item.id, item.source);
        m_story << "notify " << item.id << ' ' << item.source << ' ' << item.title << ' '
                << Priority::toString(item.priority) << (item.hasSound ? " sound" : "");
        expectSame(notify(requestOf(item)), m_model.notify(item));
    }

    void replaceOne()
    {
        const QString id = openId();
        if (id.isEmpty()) {
            return;
        }
        auto item = choose(id);
        item.hasSound = false;
        item.source = m_sources.value(id);
        m_story << "replace " << item.id << ' ' << item.title << ' '
                << Priority::toString(item.priority);
        const Request request(TavoAttentionReplacePath(),
                              TavoValue().setAttentionItem(requestOf(item)));
        EXPECT_TRUE(request.succeeds());
        expectSame(TavoValue(request.value().toHash()).attentionOutcome(), m_model.replace(item));
    }

    void closeOne()
    {
        const QString id = openId();
        if (!id.isEmpty()) {
            m_story << "close " << id;
            EXPECT_TRUE(requestClose(id).succeeds());
            m_model.close(id);
        }
    }

    void closeFirst()
    {
        if (!m_model.displayed().empty()) {
            m_story << "close the first";
            CMSubscribe::closeNode(displayedPath(places().front()));
            m_model.closeFirst();
        }
    }

    void openNewest()
    {
        const auto group = m_model.firstGroup();
        if (group) {
            m_story << "open the newest of a group";
            const Request request(rowOf(displayedPath(places().at(std::size_t(*group))), 1).path(),
                                  QVariant());
            EXPECT_TRUE(request.succeeds());
            m_model.openNewest();
        }
    }

    void endSound()
    {
        for (const ScriptedPlayer *player : ScriptedPlayers::instance().all()) {
            if (player->isAlive() && player->plays > player->pauses && player->stops == 0) {
                m_story << "sound ends " << player->id;
                const QString id = player->id;
                player->reportEnded();
                m_model.soundEnded(id);
                return;
            }
        }
    }

    void changeQuiet()
    {
        m_isQuiet = !m_isQuiet;
        m_story << "do-not-disturb " << (m_isQuiet ? "on" : "off");
        EXPECT_TRUE(setDoNotDisturb(m_isQuiet).succeeds());
        m_model.setQuiet(m_isQuiet);
    }

    void changeSettings()
    {
        const QByteArray settings = m_model.chooseSettings();
        m_story << "settings " << settings.constData();
        setSettings(settings);
    }

    void step()
    {
        const int choice = upTo(99);
        if (choice < 45) {
            notifyOne();
        } else if (choice < 60) {
            replaceOne();
        } else if (choice < 68) {
            closeOne();
        } else if (choice < 75) {
            closeFirst();
        } else if (choice < 83) {
            openNewest();
        } else if (choice < 90) {
            endSound();
        } else if (choice < 97) {
            changeQuiet();
        } else {
            changeSettings();
        }
        m_story << '\n';
    }

    /// Where the messages are on display, but for one that tells of a flood: on a slow machine, it comes
    /// within the run.
    static std::vector<int> places()
    {
        const auto titles = displayed();
        std::vector<int> places;
        for (int place = 0; place < int(titles.size()); ++place) {
            if (!titles[std::size_t(place)].contains(" more of "_s)) {
                places.push_back(place);
            }
        }
        return places;
    }

    static std::vector<QString> shown()
    {
        const auto titles = displayed();
        std::vector<QString> shown;
        for (const int place : places()) {
            shown.push_back(titles[std::size_t(place)]);
        }
        return shown;
    }

    /// Players take their time to stop.
    static void stopPlayers()
    {
        for (ScriptedPlayer *player : ScriptedPlayers::instance().all()) {
            if (player->isAlive() && player->stops > 0) {
                player->reportStopped();
            }
        }
        settle();
    }

    void expectSame()
    {
        settle();
        stopPlayers();
        EXPECT_TRUE(waitFor([this] { return shown() == m_model.displayed(); }))
            << testing::PrintToString(shown()) << " instead of "
            << testing::PrintToString(m_model.displayed());
        QMap<QString, End::Enum> seen;
        for (const TavoAttentionEnded &ended : ends()) {
            if (!m_sources.contains(ended.id())) {
                continue;
            }
            EXPECT_FALSE(seen.contains(ended.id())) << ended.id().toStdString() << " ends twice";
            seen.insert(ended.id(), ended.end());
        }
        EXPECT_EQ(seen, m_model.ends());
    }

    void expectSameHistory()
    {
        QMap<QString, State::Enum> states;
        for (const auto &record : history(TavoAttentionQuery().setLimit(200))) {
            if (m_sources.contains(record.id())) {
                states.insert(record.id(), record.state());
            }
        }
        EXPECT_EQ(states, m_model.states());
    }

    std::mt19937 m_random;
    PlainAttention m_model;
    std::ostringstream m_story;

private:
    CMNodesWorker m_nodes{{}, "Random"_s};
    QMap<QString, CMListRowsNode *> m_ownNodes; ///< by id
    QMap<QString, QString> m_sources;
    int m_lastId = 0;
    bool m_isQuiet = false;
};

TEST_P(AttentionRandomTest, DoesWhatThePlainModelDoes)
{
    for (int i = 0; i < steps && !HasFailure(); ++i) {
        step();
        expectSame();
    }
    expectSameHistory();
    if (HasFailure()) {
        ADD_FAILURE() << m_story.str();
    }
}

unsigned runs()
{
    constexpr unsigned few = 4;
    return std::max(qEnvironmentVariable("TAVO_ATTENTION_RUNS").toUInt(), few);
}

INSTANTIATE_TEST_SUITE_P(Runs, AttentionRandomTest, testing::Range(0U, runs()));
} // namespace
