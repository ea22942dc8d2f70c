// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The sound controller right after its construction.

#include "NotificationsTest.h"

#include <QMetaMethod>

namespace {
using log4cplus::DEBUG_LOG_LEVEL;
using PlayerConstructionTest = NotificationsTest;

CMPath revokePath()
{
    return TavoNotificationsPath() + "/player/revokeResources"_s;
}

TavoValue device(const QString &name)
{
    return TavoValue().setAudioDevice(TavoPlayerAudioDevice().setDevice(name));
}
} // namespace

TEST_F(PlayerConstructionTest, DeclaresItsSlotsInOrderAndNothingElse)
{
    load();
    const QMetaObject *meta = player()->metaObject();
    EXPECT_STREQ(meta->superClass()->className(), "QObject");
    EXPECT_EQ(meta->propertyCount(), meta->propertyOffset());
    struct Slot
    {
        const char *signature;
        QList<QByteArray> arguments;
    };
    const Slot expected[] = {{"on_audioDucking_finished(CMVoidReply)", {"voidReply"}},
                             {"on_inactivityTimer_timeout()", {}},
                             {"on_audioUnducking_finished(CMVoidReply)", {"voidReply"}},
                             {"on_sound_finished(QString)", {"id"}},
                             {"on_sound_stopped(QString)", {"id"}},
                             {"on_sound_failed(QString,QString)", {"id", "reason"}},
                             {"on_revokeResources_activated(CMSetDataRequest)", {"request"}}};
    ASSERT_EQ(meta->methodCount() - meta->methodOffset(), 7);
    for (int i = 0; i < 7; ++i) {
        const QMetaMethod method = meta->method(meta->methodOffset() + i);
        EXPECT_STREQ(method.methodSignature().constData(), expected[i].signature);
        EXPECT_EQ(method.parameterNames(), expected[i].arguments);
        EXPECT_EQ(method.methodType(), QMetaMethod::Slot);
    }
}

TEST_F(PlayerConstructionTest, HasAStoppedSingleShotTimerOf100Milliseconds)
{
    load();
    EXPECT_TRUE(inactivityTimer()->isSingleShot());
    EXPECT_EQ(inactivityTimer()->interval(), 100);
    EXPECT_EQ(inactivityTimer()->timerType(), Qt::PreciseTimer);
    EXPECT_FALSE(inactivityTimer()->isActive());
    EXPECT_EQ(inactivityTimer()->parent(), player());
}

TEST_F(PlayerConstructionTest, PublishesThatNothingPlays)
{
    load();
    const QVariant value = CMRoot()->getValue(TavoNotificationPlayerIsPlayingPath());
    EXPECT_EQ(value, TavoValue().setBool_(false).__variant());
}

TEST_F(PlayerConstructionTest, ReadsTheOutputDeviceAndLogsIt)
{
    load();
    EXPECT_EQ(logged(DEBUG_LOG_LEVEL, "Output device name: testdevice"), 1);
    play("a"_s);
    EXPECT_EQ(scripted("a"_s)->device, "testdevice"_s);
}

TEST_F(PlayerConstructionTest, TakesTheDefaultDeviceWhenNoneIsNamed)
{
    services().publishAgain(TavoPlayerAlsaDeviceNotificationsPath(), device(QString()));
    load();
    EXPECT_EQ(logged(DEBUG_LOG_LEVEL, "Output device name: default"), 1);
    play("a"_s);
    EXPECT_EQ(scripted("a"_s)->device, "default"_s);
}

TEST_F(PlayerConstructionTest, TakesTheDefaultDeviceWhenThereIsNoSuchNode)
{
    services().withdraw(TavoPlayerAlsaDeviceNotificationsPath());
    load();
    EXPECT_EQ(logged(DEBUG_LOG_LEVEL, "Output device name: default"), 1);
}

TEST_F(PlayerConstructionTest, ReadsTheDeviceOnlyOnce)
{
    load();
    services().publishAgain(TavoPlayerAlsaDeviceNotificationsPath(), device("other"_s));
    play("a"_s);
    EXPECT_EQ(scripted("a"_s)->device, "testdevice"_s);
}

TEST_F(PlayerConstructionTest, PublishesTheRevokeNode)
{
    load();
    EXPECT_FALSE(request(revokePath(), QVariant()).error().isError());
}

TEST_F(PlayerConstructionTest, RegistersWithOneNodeForBothMessages)
{
    load();
    ASSERT_EQ(services().count(TavoPowerManagerModuleRegisterPath()), 1);
    const TavoPowerManagerModuleRegister record(
        services().requests(TavoPowerManagerModuleRegisterPath()).front().value().toHash());
    EXPECT_EQ(record.moduleName(), TavoNotificationsName());
    EXPECT_EQ(record.revokeResourcesPath(), revokePath());
    EXPECT_EQ(record.postRevokeResourcesPath(), revokePath());
}

TEST_F(PlayerConstructionTest, ReadsTheDeviceBetweenPublishingIsPlayingAndTheRevokeNode)
{
    class DeviceNode : public CMUINode
    {
    public:
        DeviceNode(CMNodes *nodes, std::function<void()> onRead)
            : CMUINode(nodes, TavoPlayerAlsaDeviceNotificationsPath())
            , m_onRead(std::move(onRead))
        {
            publish();
        }

        void getData(const CMGetDataRequest &request) override
        {
            m_onRead();
            request.reply().setValue(device("late"_s).__variant());
        }

    private:
        std::function<void()> m_onRead;
    };
    services().withdraw(TavoPlayerAlsaDeviceNotificationsPath());
    CMNodes nodes;
    int reads = 0;
    new DeviceNode(&nodes, [&] {
        ++reads;
        EXPECT_EQ(CMRoot()->getValue(TavoNotificationPlayerIsPlayingPath()),
                  TavoValue().setBool_(false).__variant());
        EXPECT_EQ(log().find("Output device name: ").size(), 0U);
        EXPECT_FALSE(requestedPaths().contains(TavoPowerManagerModuleRegisterPath()));
        const CMReply<QVariant> reply;
        CMRoot()->invoke(revokePath(), QVariant(), reply);
        EXPECT_EQ(reply.error().name(), CMErrors::noSuchNode());
    });
    load();
    EXPECT_EQ(reads, 1);
    EXPECT_EQ(logged(DEBUG_LOG_LEVEL, "Output device name: late"), 1);
    EXPECT_EQ(services().count(TavoPowerManagerModuleRegisterPath()), 1);
}

TEST_F(PlayerConstructionTest, PublishesTheRevokeNodeBeforeItRegisters)
{
    QString error = "not asked"_s;
    services().setDirectScript(TavoPowerManagerModuleRegisterPath(),
                               [&error](const CMSetDataRequest &request) {
                                   const CMReply<QVariant> reply;
                                   CMRoot()->invoke(revokePath(), QVariant(), reply);
                                   error = reply.error().name();
                                   request.reply().setValue(QVariant());
                               });
    load();
    EXPECT_EQ(error, QString());
}

TEST_F(PlayerConstructionTest, HandlesARevokeFromTheEventLoop)
{
    load();
    const CMReply<QVariant> reply;
    CMRoot()->invoke(revokePath(), QVariant(), reply);
    EXPECT_FALSE(reply.isFinished());
    settle();
    EXPECT_TRUE(reply.isFinished());
}

TEST_F(PlayerConstructionTest, LogsWithItsSourceFileAndFunction)
{
    load();
    play("a"_s);
    const auto records = this->log().find("Starting playback: a");
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records.front().fileName(), "NotificationPlayer.cpp");
    EXPECT_NE(records.front().function.find("playItem"), std::string::npos);
    EXPECT_GT(records.front().line, 0);
}

TEST_F(PlayerConstructionTest, IgnoresAFailedRegistration)
{
    services().setScript(TavoPowerManagerModuleRegisterPath(), ScriptedService::refuse("no"_s));
    load();
    play("a"_s);
    EXPECT_EQ(log().countAt(log4cplus::WARN_LOG_LEVEL), 0);
    EXPECT_EQ(log().countAt(log4cplus::ERROR_LOG_LEVEL), 0);
}

TEST_F(PlayerConstructionTest, WorksWithoutAnyService)
{
    services().withdraw(TavoPowerManagerModuleRegisterPath());
    services().withdraw(TavoPowerManagerResourceRequestPath());
    services().withdraw(TavoPlayerMainAudioDuckingPath());
    services().withdraw(TavoPlayerAlsaDeviceNotificationsPath());
    load();
    EXPECT_FALSE(enqueue("a"_s).error().isError());
    EXPECT_EQ(journalOf("a"_s), QStringList{"cancelled"_s});
}

TEST_F(PlayerConstructionTest, DeletesThePlayersOfItsItemsWithItself)
{
    load();
    play("a"_s);
    EXPECT_EQ(scripted("a"_s)->parent, player());
    unload();
    EXPECT_FALSE(scripted("a"_s)->isAlive());
}
