// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// What clients may do to those of other users.

#include "module/dbus/UsersTest.h"
#include "support/bus/NotifyArguments.h"
#include <core/records/attention.h>
#include <core/records/player.h>

namespace {
class DbusOtherUsersTest : public UsersTest
{
protected:
    void accept(const CMPath &path)
    {
        publishRequest(path.toString(),
                       [](const CMSetDataRequest &request) { request.reply().setValue({}); });
    }

    static BusCall send(ModelClient &client, const CMPath &path)
    {
        const auto item = TavoAttentionItem().setId("Door"_s).setTitle("Door"_s);
        return client.send(path.toString(), TavoValue().setAttentionItem(item).__variant());
    }

    /// The id of the notification.
    static quint32 notify(ModelClient &client, quint32 replaced)
    {
        client.setTarget("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                         "org.freedesktop.Notifications");
        const BusCall call = client.call("Notify", [replaced](BusWriter &writer) {
            NotifyArguments{replaced, 0, "test"_s}.writeTo(writer);
        });
        EXPECT_TRUE(call.succeeds()) << call.errorMessage();
        return call.reader().readUInt32();
    }
};

TEST_F(DbusOtherUsersTest, DoNotReplaceWhatIsSentToAttention)
{
    accept(TavoAttentionNotifyPath());
    accept(TavoAttentionReplacePath());
    ASSERT_TRUE(send(*first, TavoAttentionNotifyPath()).succeeds());
    EXPECT_EQ(send(*second, TavoAttentionReplacePath()).errorName(), accessDenied);
    EXPECT_TRUE(send(*clientOf("daemon"), TavoAttentionReplacePath()).succeeds());
}

TEST_F(DbusOtherUsersTest, DoNotUseUpTheRequestersOfDucking)
{
    accept(TavoPlayerMainAudioDuckingPath());
    const auto duck = [](ModelClient &client, int name) {
        return client.send(TavoPlayerMainAudioDuckingPath().toString(),
                           TavoPlayerAudioDuckingRequest()
                               .setRequester(QString::number(name))
                               .setDuckAudio(true)
                               .__variant());
    };
    constexpr int maxOfClient = 16;
    std::vector<std::unique_ptr<ModelClient>> clients;
    for (const char *user : {"bin", "sys", "games", "lp", "news"}) {
        int ducked = 0;
        do {
            if (ducked % maxOfClient == 0) {
                clients.push_back(clientOf(user));
            }
        } while (duck(*clients.back(), ducked++).succeeds());
        EXPECT_GT(ducked, 1) << user;
    }
    EXPECT_TRUE(duck(*first, 0).succeeds());
}

TEST_F(DbusOtherUsersTest, DoNotReplaceNotifications)
{
    accept(TavoNotificationDisplayOpenPath());
    const quint32 id = notify(*first, 0);
    EXPECT_NE(notify(*second, id), id);
    EXPECT_EQ(notify(*clientOf("daemon"), id), id);
}
} // namespace
