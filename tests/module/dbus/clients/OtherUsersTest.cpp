// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// What clients may do to those of other users.

#include "module/dbus/ModelTest.h"
#include "support/bus/BusUser.h"
#include <core/records/attention.h>

#include <QFile>

#include <sys/stat.h>

namespace {
class DbusOtherUsersTest : public ModelTest
{
protected:
    DbusOtherUsersTest()
        : ModelTest({}, "<policy context=\"default\"><allow user=\"*\"/></policy>"_s)
    {
    }

    void SetUp() override
    {
        if (!BusUser::canBeAnyone()) {
            GTEST_SKIP() << "it takes root to be somebody else";
        }
        ::chmod(QFile::encodeName(bus().folder()).constData(), 0755);
        first = clientOf("daemon");
        second = clientOf("mail");
    }

    std::unique_ptr<ModelClient> clientOf(const char *user)
    {
        const ActAs otherUser(BusUser::find(user));
        return std::make_unique<ModelClient>(bus().address());
    }

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
            writer.writeString("test"_s);
            writer.writeUInt32(replaced);
            for (const QString &text : {""_s, "Title"_s, ""_s}) {
                writer.writeString(text);
            }
            writer.openArray("s");
            writer.close();
            writer.openArray("{sv}");
            writer.close();
            writer.writeInt32(0);
        });
        EXPECT_TRUE(call.succeeds()) << call.errorMessage();
        return call.reader().readUInt32();
    }

    std::unique_ptr<ModelClient> first;
    std::unique_ptr<ModelClient> second;
};

TEST_F(DbusOtherUsersTest, DoNotReplaceWhatIsSentToAttention)
{
    accept(TavoAttentionNotifyPath());
    accept(TavoAttentionReplacePath());
    ASSERT_TRUE(send(*first, TavoAttentionNotifyPath()).succeeds());
    EXPECT_EQ(send(*second, TavoAttentionReplacePath()).errorName(), accessDenied);
    EXPECT_TRUE(send(*clientOf("daemon"), TavoAttentionReplacePath()).succeeds());
}

TEST_F(DbusOtherUsersTest, DoNotReplaceNotifications)
{
    accept(TavoNotificationDisplayOpenPath());
    const quint32 id = notify(*first, 0);
    EXPECT_NE(notify(*second, id), id);
    EXPECT_EQ(notify(*clientOf("daemon"), id), id);
}
} // namespace
