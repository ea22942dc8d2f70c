// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/requests/Steps.h"
#include "fuzz/seeds/SeedFolder.h"
#include "fuzz/seeds/Seeds.h"
#include "fuzz/support/ValueWriter.h"
#include <core/tavo.h>

#include <initializer_list>

namespace {
const CMPath responses(QStringLiteral("/test/response"));

TavoNotificationPlayerItem sound(const char *id, int priority)
{
    return TavoNotificationPlayerItem()
        .setId(QString::fromLatin1(id))
        .setContent(QStringLiteral("/sounds/bell.wav"))
        .setPriority(TavoNotificationItemPriority::Enum(priority))
        .setPlaybackResponsePath(responses);
}

TavoNotificationDisplayItem message(const char *text, int timeout, int priority)
{
    return TavoNotificationDisplayItem()
        .setMessage(TrString(text))
        .setTimeout(timeout)
        .setPriority(TavoNotificationItemPriority::Enum(priority));
}

/// A sequence of steps for the notifications module.
class Sequence : public ValueWriter
{
public:
    Sequence &request(NotificationsNode node, const QVariant &sent)
    {
        step(NotificationsStep::Request).byte(int(node));
        value(sent);
        return *this;
    }
    Sequence &enqueue(const TavoNotificationPlayerItem &item)
    {
        return request(NotificationsNode::Enqueue,
                       TavoValue().setNotificationPlayerItem(item).__variant());
    }
    Sequence &cancel(const char *id)
    {
        return request(NotificationsNode::Cancel,
                       TavoValue().setString_(QString::fromLatin1(id)).__variant());
    }
    Sequence &open(const TavoNotificationDisplayItem &item)
    {
        return request(NotificationsNode::Open,
                       TavoValue().setNotificationDisplayItem(item).__variant());
    }
    Sequence &revoke(int type)
    {
        return request(NotificationsNode::Revoke,
                       TavoPowerManagerRevokeMessage()
                           .setMessageType(TavoPowerManagerRevokeMessageType::Enum(type))
                           .setRevokeResources({TavoPowerManagerResources::Audio})
                           .__variant());
    }
    /// The newest open notification is the first known path.
    Sequence &cancelKnown(int which)
    {
        step(NotificationsStep::Request).byte(int(NotificationsNode::CancelNotify));
        tag(FuzzTag::Known);
        byte(which);
        return *this;
    }
    Sequence &step(NotificationsStep step, std::initializer_list<int> numbers = {})
    {
        byte(int(step));
        for (const int number : numbers) {
            byte(number);
        }
        return *this;
    }
};

using Step = NotificationsStep;
using Node = NotificationsNode;

void writeSoundRequests(const SeedFolder &folder)
{
    folder.write("sound-ends",
                 Sequence().enqueue(sound("a", 1)).step(Step::EndPlayer, {0, 0}).bytes());
    folder.write("sound-fails",
                 Sequence().enqueue(sound("a", 1)).step(Step::EndPlayer, {0, 1}).bytes());
    folder.write("sound-is-cancelled", Sequence().enqueue(sound("a", 1)).cancel("a").bytes());
    folder.write("sound-preempted", Sequence()
                                        .enqueue(sound("a", 1))
                                        .enqueue(sound("b", 2))
                                        .step(Step::EndPlayer, {1, 0})
                                        .step(Step::EndPlayer, {0, 0})
                                        .bytes());
    folder.write("sound-duplicate",
                 Sequence().enqueue(sound("a", 1)).enqueue(sound("a", 1)).bytes());
    folder.write("sound-revoked", Sequence().enqueue(sound("a", 1)).revoke(0).revoke(1).bytes());
    folder.write("sound-refused", Sequence()
                                      .step(Step::SetResources, {1})
                                      .enqueue(sound("a", 1))
                                      .step(Step::SetResources, {0})
                                      .enqueue(sound("b", 1))
                                      .step(Step::EndPlayer, {0, 0})
                                      .bytes());
    folder.write("sound-late-answers", Sequence()
                                           .step(Step::SetDucking, {2})
                                           .step(Step::SetResources, {2})
                                           .enqueue(sound("a", 1))
                                           .step(Step::AnswerKept, {0, 0})
                                           .revoke(0)
                                           .enqueue(sound("b", 3))
                                           .cancel("a")
                                           .step(Step::AnswerKept, {0, 1})
                                           .bytes());
    folder.write("sound-idle", Sequence()
                                   .enqueue(sound("a", 1))
                                   .step(Step::EndPlayer, {0, 0})
                                   .step(Step::FireTimer, {0})
                                   .enqueue(sound("a", 1))
                                   .bytes());
    for (int type = 0; type < 5; ++type) {
        const QByteArray name = "sound-type-" + QByteArray::number(type);
        folder.write(name, Sequence()
                               .enqueue(sound("a", 1).setLoop(true).setType(
                                   TavoNotificationPlayerItemType::Enum(type)))
                               .step(Step::EndPlayer, {0, 0})
                               .bytes());
    }
}

void writeDisplayRequests(const SeedFolder &folder)
{
    folder.write("display-expires",
                 Sequence().open(message("Hello", 50, 1)).step(Step::FireTimer, {1}).bytes());
    folder.write("display-cancelled", Sequence()
                                          .open(message("Hello", 0, 1))
                                          .open(message("More", 100, 2))
                                          .cancelKnown(0)
                                          .cancelKnown(1)
                                          .cancelKnown(1)
                                          .bytes());
    folder.write("display-closed", Sequence()
                                       .open(message("Hello", 0, 1))
                                       .step(Step::CloseNode, {0})
                                       .step(Step::CloseNode, {0})
                                       .bytes());
    const auto own = TavoNotificationDisplayItem().setPath(CMPath(QStringLiteral("/own/node")));
    folder.write("display-own-node", Sequence().open(own).open(own).cancelKnown(0).bytes());
    folder.write("display-translated",
                 Sequence()
                     .open(message("Hello", 0, 1)
                               .setTitle(TrString(TrCharData{"a", "%1 of %2", "b", 2}, {TrArg(7)})))
                     .bytes());
    folder.write("display-queue-itself", Sequence()
                                             .open(TavoNotificationDisplayItem().setPath(
                                                 TavoNotificationDisplayQueuePath()))
                                             .cancelKnown(0)
                                             .bytes());
}

void writeWrongRequests(const SeedFolder &folder)
{
    const QVariant wrong[] = {QVariant(),
                              7,
                              0.5,
                              QStringLiteral("text"),
                              QVariantList{1, 2},
                              QVariantMap{{QStringLiteral("string"), 1}}};
    Sequence all;
    for (int node = 0; node < int(Node::Count); ++node) {
        for (const QVariant &value : wrong) {
            all.request(Node(node), value);
        }
    }
    folder.write("wrong-types", all.bytes());
    for (int kind = 0; kind < 3; ++kind) {
        Sequence deep;
        for (int node = 0; node < int(Node::Count); ++node) {
            deep.step(Step::Request).byte(node);
            deep.nested(kind, 10, QStringLiteral("notificationPlayerItem"));
            deep.value(1);
        }
        folder.write("deep-" + QByteArray::number(kind), deep.bytes());
    }
    // The maximum depth.
    Sequence maxDepth;
    maxDepth.step(Step::Request).byte(int(Node::Open));
    maxDepth.nested(0, 14, {});
    maxDepth.value(1);
    folder.write("max-depth", maxDepth.bytes());
    Sequence atOnce;
    atOnce.step(Step::AtOnce, {2});
    for (const char *id : {"a", "b", "a"}) {
        atOnce.byte(int(Node::Enqueue));
        atOnce.value(TavoValue().setNotificationPlayerItem(sound(id, 1)).__variant());
    }
    folder.write("at-once", atOnce.bytes());
}

/// A step for the fuzzers of services: a request to the node with that number.
QByteArray serviceRequest(int node, const QVariant &sent)
{
    ValueWriter writer;
    writer.byte(0);
    writer.byte(node);
    writer.value(sent);
    return writer.bytes();
}

void writePowerManagerRequests(const SeedFolder &folder)
{
    const CMPath own(QStringLiteral("/own/node"));
    const QByteArray known = serviceRequest(0, TavoPowerManagerModuleRegister()
                                                   .setModuleName(QStringLiteral("a"))
                                                   .setRevokeResourcesPath(own)
                                                   .setPostRevokeResourcesPath(own)
                                                   .__variant());
    const auto request = TavoPowerManagerResourceRequest()
                             .setModuleName(QStringLiteral("a"))
                             .setResource(TavoPowerManagerResources::Audio)
                             .setAction(TavoPowerModuleActions::Acquire);
    const QByteArray acquire = serviceRequest(1, request.__variant());
    const QByteArray release = serviceRequest(1, TavoPowerManagerResourceRequest(request)
                                                     .setAction(TavoPowerModuleActions::Release)
                                                     .__variant());
    const QByteArray standby = serviceRequest(2, QVariant());
    const QByteArray resume = serviceRequest(3, QVariant());
    folder.write("grant", known + acquire + release);
    folder.write("standby", known + acquire + standby + acquire + resume + acquire);
    const QByteArray keep("\x01\x02", 2);
    folder.write("standby-late", known + acquire + keep + standby + standby + resume);
    folder.write("standby-timeout", known + acquire + keep + standby + QByteArray("\x04", 1));
    folder.write("module-goes", known + acquire + QByteArray("\x03\x00\x03\x01", 4) + acquire);
}

void writePlayerRequests(const SeedFolder &folder)
{
    const auto duck = [](const char *who, bool ducked) {
        return serviceRequest(0, TavoPlayerAudioDuckingRequest()
                                     .setRequester(QString::fromLatin1(who))
                                     .setDuckAudio(ducked)
                                     .__variant());
    };
    folder.write("duck", duck("a", true) + duck("b", true) + duck("a", false) + duck("b", false));
    const QByteArray play =
        serviceRequest(1, TavoValue().setString_(QStringLiteral("/sounds/bell.wav")).__variant());
    folder.write("play", play + serviceRequest(1, QVariant()) + serviceRequest(2, QVariant()));
    folder.write("music-ends", play + QByteArray("\x01\x00", 2));
    folder.write("music-fails", play + QByteArray("\x01\x01", 2));
    folder.write("music-is-tried-again", play + QByteArray("\x01\x01\x03\x01\x01", 5));
    folder.write("volume", serviceRequest(3, TavoValue().setDouble_(0.5).__variant()) +
                               serviceRequest(3, 2) + serviceRequest(3, 0.25));
}
} // namespace

void writeRequestSeeds(const QString &corpus)
{
    const SeedFolder notifications(corpus, "fuzz_requests");
    writeSoundRequests(notifications);
    writeDisplayRequests(notifications);
    writeWrongRequests(notifications);
    writePowerManagerRequests(SeedFolder(corpus, "fuzz_powermanager"));
    writePlayerRequests(SeedFolder(corpus, "fuzz_player"));
}
