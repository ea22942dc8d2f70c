// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The library's entry point, and the worker right after its construction.

#include "NotificationsTest.h"

#include <QLibrary>
#include <QMetaMethod>
#include <QProcess>

#include <stdexcept>

namespace {
using log4cplus::TRACE_LOG_LEVEL;

class ModuleEntryTest : public NotificationsTest
{
protected:
    CMWorker *create(const char *name)
    {
        QVariantHash config{{"key"_s, 7}};
        QLibrary library(notificationsModule());
        using WorkerCreate = void *(*)(const char *, void *);
        const auto entry = reinterpret_cast<WorkerCreate>(library.resolve("worker_create"));
        return static_cast<CMWorker *>(entry(name, &config));
    }

    /// Returns whether there is a node at the path.
    bool isPublished(const CMPath &path)
    {
        return request(path, QVariant()).error().name() != CMErrors::noSuchNode();
    }
};
} // namespace

TEST_F(ModuleEntryTest, ExportsItsEntryPointAndNothingElse)
{
    QProcess nm;
    nm.start("nm"_s, {"-D"_s, "--defined-only"_s, "-P"_s, notificationsModule()});
    ASSERT_TRUE(nm.waitForFinished());
    const QList<QByteArray> symbols = nm.readAllStandardOutput().trimmed().split('\n');
    ASSERT_EQ(symbols.size(), 1);
    EXPECT_TRUE(symbols.first().startsWith("worker_create T ")) << symbols.first().constData();
}

TEST_F(ModuleEntryTest, LogsTheNameThatItWasGiven)
{
    const std::unique_ptr<CMWorker> worker(create("living room"));
    EXPECT_EQ(
        logged(TRACE_LOG_LEVEL, "Enter void* worker_create(const char*, void*): name: living room"),
        1);
}

TEST_F(ModuleEntryTest, CreatesAWorkerForANullNameAndEndsTheLineAfterTheLabel)
{
    const std::unique_ptr<CMWorker> worker(create(nullptr));
    EXPECT_NE(worker, nullptr);
    EXPECT_EQ(logged(TRACE_LOG_LEVEL, "Enter void* worker_create(const char*, void*): name: "), 1);
}

TEST_F(ModuleEntryTest, LogsTheConstructionWithItsSourceFile)
{
    load();
    EXPECT_EQ(logged(TRACE_LOG_LEVEL,
                     "Enter NotificationsWorker::NotificationsWorker(const QVariantHash&): "),
              1);
    const auto records = log().records();
    const auto entry = std::find_if(records.begin(), records.end(), [](const auto &record) {
        return record.message.find("NotificationsWorker::NotificationsWorker") != std::string::npos;
    });
    ASSERT_NE(entry, records.end());
    EXPECT_NE(entry->file.find("NotificationsWorker.cpp"), std::string::npos);
    EXPECT_GT(entry->line, 0);
    EXPECT_FALSE(entry->function.empty());
}

TEST_F(ModuleEntryTest, GivesTheWorkerItsOwnNameAndTheConfigurationUnchanged)
{
    const std::unique_ptr<CMWorker> worker(create("other"));
    const auto *nodesWorker = qobject_cast<CMNodesWorker *>(worker.get());
    ASSERT_NE(nodesWorker, nullptr);
    EXPECT_EQ(nodesWorker->name(), "Notifications"_s);
    EXPECT_EQ(nodesWorker->config(), (QVariantHash{{"key"_s, 7}}));
}

TEST_F(ModuleEntryTest, DeclaresItsFourSlotsInOrderAndNothingElse)
{
    load();
    const QMetaObject *meta = worker()->metaObject();
    EXPECT_STREQ(meta->className(), "NotificationsWorker");
    EXPECT_STREQ(meta->superClass()->className(), "CMNodesWorker");
    EXPECT_EQ(meta->propertyCount(), meta->propertyOffset());
    EXPECT_EQ(meta->classInfoCount(), meta->classInfoOffset());
    ASSERT_EQ(meta->methodCount() - meta->methodOffset(), 4);
    const char *const expected[][2] = {{"on_notificationPlayerEnqueue_activated", "request"},
                                       {"on_notificationPlayerCancel_activated", "request"},
                                       {"on_notificationDisplayEnqueue_activated", "req"},
                                       {"on_notificationDisplayCancel_activated", "req"}};
    for (int i = 0; i < 4; ++i) {
        const QMetaMethod method = meta->method(meta->methodOffset() + i);
        EXPECT_STREQ(method.name().constData(), expected[i][0]);
        EXPECT_EQ(method.parameterTypes(), QList<QByteArray>{"CMSetDataRequest"});
        EXPECT_EQ(method.parameterNames(), QList<QByteArray>{expected[i][1]});
        EXPECT_EQ(method.methodType(), QMetaMethod::Slot);
        EXPECT_EQ(method.access(), QMetaMethod::Private);
        EXPECT_EQ(method.returnType(), int(QMetaType::Void));
    }
}

TEST_F(ModuleEntryTest, PublishesItsFourRequestNodes)
{
    load();
    EXPECT_TRUE(isPublished(TavoNotificationPlayerEnqueuePath()));
    EXPECT_TRUE(isPublished(TavoNotificationPlayerCancelPath()));
    EXPECT_TRUE(isPublished(TavoNotificationDisplayOpenPath()));
    EXPECT_TRUE(isPublished(TavoNotificationDisplayCancelNotifyPath()));
}

TEST_F(ModuleEntryTest, ConstructsTheDisplayBeforeThePlayerAsChildrenOfTheWorker)
{
    load();
    QStringList children;
    for (const QObject *child : worker()->children()) {
        children.append(QString::fromLatin1(child->metaObject()->className()));
    }
    EXPECT_EQ(children, (QStringList{"NotificationDisplay"_s, "NotificationPlayer"_s}));
}

TEST_F(ModuleEntryTest, PublishesTheRequestNodesThenTheDisplaysThenThePlayers)
{
    class Watcher : public QObject
    {
    public:
        void on_node_changed(const CMPath &path, bool) { seen.append(path); }
        QVector<CMPath> seen;
    };
    const CMPath revoke = TavoNotificationsPath() + "/player/revokeResources"_s;
    const QVector<CMPath> order{TavoNotificationPlayerEnqueuePath(),
                                TavoNotificationPlayerCancelPath(),
                                TavoNotificationDisplayOpenPath(),
                                TavoNotificationDisplayCancelNotifyPath(),
                                TavoNotificationDisplayQueuePath(),
                                TavoNotificationPlayerIsPlayingPath(),
                                revoke};
    Watcher watcher;
    for (const CMPath &path : order) {
        CMRoot()->connectNodeChange(path, &watcher, &Watcher::on_node_changed);
    }
    load();
    EXPECT_EQ(watcher.seen, order);
}

TEST_F(ModuleEntryTest, LeavesNoWorkerBehindWhenAControllerCannotBeConstructed)
{
    class Broken : public CMUINode
    {
    public:
        Broken(CMNodes *nodes, const CMPath &path)
            : CMUINode(nodes, path)
        {
            publish();
        }
        void getData(const CMGetDataRequest &) override { throw std::runtime_error("no device"); }
    };
    services().withdraw(TavoPlayerAlsaDeviceNotificationsPath());
    CMNodes nodes;
    new Broken(&nodes, TavoPlayerAlsaDeviceNotificationsPath());
    EXPECT_THROW(create("other"), std::runtime_error);
    EXPECT_FALSE(isPublished(TavoNotificationPlayerEnqueuePath()));
    EXPECT_FALSE(isPublished(TavoNotificationDisplayQueuePath()));
    EXPECT_FALSE(isPublished(TavoNotificationPlayerIsPlayingPath()));
}

class RequestNodesTest : public ModuleEntryTest, public testing::WithParamInterface<CMPath (*)()>
{
};

TEST_P(RequestNodesTest, HandleARequestFromTheEventLoopAndNeverInsideTheCall)
{
    load();
    const CMReply<QVariant> reply;
    CMRoot()->invoke(GetParam()(), QVariant(), reply);
    EXPECT_FALSE(reply.isFinished());
    settle();
    EXPECT_TRUE(reply.isFinished());
}

INSTANTIATE_TEST_SUITE_P(Nodes, RequestNodesTest,
                         testing::Values(&TavoNotificationPlayerEnqueuePath,
                                         &TavoNotificationPlayerCancelPath,
                                         &TavoNotificationDisplayOpenPath,
                                         &TavoNotificationDisplayCancelNotifyPath));

TEST_F(ModuleEntryTest, HandlesRequestsInTheirOrderOfArrival)
{
    load();
    CMReply<QVariant> first;
    CMReply<QVariant> second;
    CMRoot()->invoke(TavoNotificationPlayerEnqueuePath(),
                     TavoValue().setNotificationPlayerItem(item("a"_s)), first);
    CMRoot()->invoke(TavoNotificationPlayerCancelPath(), TavoValue().setString_("a"_s), second);
    settle();
    EXPECT_FALSE(first.error().isError());
    EXPECT_FALSE(second.error().isError());
}

TEST_F(ModuleEntryTest, DeletesControllersAndNodesWithTheWorker)
{
    load();
    int destroyed = 0;
    for (const QObject *child : worker()->children()) {
        QObject::connect(child, &QObject::destroyed, [&destroyed] { ++destroyed; });
    }
    unload();
    EXPECT_EQ(destroyed, 2);
    EXPECT_FALSE(isPublished(TavoNotificationPlayerEnqueuePath()));
    EXPECT_FALSE(CMRoot()->getValue(TavoNotificationPlayerIsPlayingPath()).isValid());
}

TEST_F(ModuleEntryTest, AnswersPendingRequestsWithAnErrorWhenTheWorkerIsDeleted)
{
    load();
    const CMReply<QVariant> reply;
    CMRoot()->invoke(TavoNotificationPlayerEnqueuePath(),
                     TavoValue().setNotificationPlayerItem(item("a"_s)), reply);
    unload();
    ASSERT_TRUE(reply.isFinished());
    EXPECT_EQ(reply.error().name(), CMErrors::noAnswer());
}

TEST_F(ModuleEntryTest, CanBeCreatedAgain)
{
    load();
    unload();
    load();
    play("a"_s);
}
