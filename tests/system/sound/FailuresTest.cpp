// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SoundTest.h"

#include <QProcess>

#include <functional>

using testing::ElementsAre;

namespace {

constexpr int briefMs = 300;
constexpr int httpTimeoutMs = 700;

} // namespace

/// Where a test's broken sounds come from.
struct BadPlace
{
    QString folder;
    QString goodFile;
    const HttpServer &http;

    QString file(const QString &name, const QByteArray &bytes) const
    {
        QString path = folder + '/' + name;
        writeFile(path, bytes);
        return path;
    }
};

struct BadSound
{
    const char *name;
    std::function<QJsonObject(const BadPlace &)> item;
    const char *cause; // in the host's log
};

namespace {

QJsonObject uri(const QString &content)
{
    return {{"content", content}};
}

QJsonObject stream(const QString &content, const QString &format)
{
    return {{"type", 2}, {"content", content}, {"contentStreamFormat", format}};
}

const BadSound badSounds[] = {
    {"MissingFile", [](const BadPlace &place) { return uri(place.folder + "/nowhere.wav"); },
     "nowhere.wav\" can't be opened: No such file or directory"},
    {"Directory", [](const BadPlace &place) { return uri(place.folder); },
     "is a directory, not a sound"},
    {"EmptyFile", [](const BadPlace &place) { return uri(place.file("empty.wav", {})); },
     "empty.wav\" is empty"},
    {"TextFile",
     [](const BadPlace &place) { return uri(place.file("note.wav", "These are words.\n")); },
     "holds no sound in a known format"},
    {"TruncatedFile",
     [](const BadPlace &place) {
         return uri(place.file("short.wav", readFile(place.goodFile).left(9000)));
     },
     "short.wav\" is cut off"},
    {"NoFileNamed", [](const BadPlace &) { return uri({}); }, "No sound is named"},
    {"UnknownScheme", [](const BadPlace &) { return uri("ftp://127.0.0.1/tone.wav"); },
     "has a scheme that is not supported"},
    {"ClosedHttpPort", [](const BadPlace &) { return uri(HttpServer::closed()); },
     "closed.wav\" can't be fetched: Connection refused"},
    {"HttpNotFound", [](const BadPlace &place) { return uri(place.http.missing()); },
     "missing.wav\" can't be fetched"},
    {"SilentHttpServer", [](const BadPlace &place) { return uri(place.http.silent()); },
     "the server is too slow: gave up after 700 ms"},
    {"SilentHttpStream",
     [](const BadPlace &place) {
         return stream(place.http.silent(), "audio/L16;rate=48000;channels=1");
     },
     "the server is too slow: gave up after 700 ms"},
    {"BadBase64",
     [](const BadPlace &) {
         return QJsonObject{{"type", 1}, {"content", "?!"}};
     },
     "The sound data is empty"},
    {"Base64OfNoSound",
     [](const BadPlace &) {
         return QJsonObject{{"type", 1}, {"content", "VGhlc2UgYXJlIHdvcmRzLg=="}};
     },
     "The sound data holds no sound in a known format"},
    {"UnknownStreamFormat",
     [](const BadPlace &place) { return stream(place.goodFile, "audio/whatever"); },
     "The stream format \"audio/whatever\" is not known"},
    {"StreamFormatWithoutRate",
     [](const BadPlace &place) { return stream(place.goodFile, "audio/L16"); },
     "needs a rate, such as rate=48000"},
    {"UnknownType",
     [](const BadPlace &) {
         return QJsonObject{{"type", 42}};
     },
     "Invalid item type: 42"},
};

} // namespace

class BadSoundTest : public SoundTest, public testing::WithParamInterface<BadSound>
{
protected:
    QJsonObject badItem()
    {
        QJsonObject item = GetParam().item({m_host.folder(), toneFile(frequency, briefMs), m_http});
        item.insert("id", "bad");
        return item;
    }

    HttpServer m_http;
};

TEST_P(BadSoundTest, IsReportedWithItsCauseAndTheNextOnePlays)
{
    m_limits.insert("httpTimeout", httpTimeoutMs);
    start(withMusic());
    m_requester.enqueue(badItem());
    m_requester.enqueue(fileItem("good", toneFile(frequency, briefMs)));
    EXPECT_TRUE(m_requester.waitFor("failed bad")) << m_host.log().toStdString();
    EXPECT_TRUE(m_requester.waitFor("finished good")) << m_host.log().toStdString();
    EXPECT_TRUE(m_requester.waitFor("restored")) << m_host.log().toStdString();
    EXPECT_TRUE(m_host.waitForLog(GetParam().cause)) << m_host.log().toStdString();
    EXPECT_EQ(notifications().frames(), framesOf(briefMs));
    EXPECT_EQ(stopHost(), 0) << m_host.log().toStdString();
}

INSTANTIATE_TEST_SUITE_P(Sounds, BadSoundTest, testing::ValuesIn(badSounds),
                         [](const auto &info) { return std::string(info.param.name); });

class DeviceFailuresTest : public SoundTest
{
protected:
    static constexpr int longMs = 20000;

    void startLongSound()
    {
        m_requester.enqueue(fileItem("sound", toneFile(frequency, longMs)));
        ASSERT_TRUE(m_requester.waitFor("started sound")) << m_host.log().toStdString();
        ASSERT_TRUE(m_notificationDevice.waitForSound());
    }

    // All of them, since the server would move the stream to a remaining device.
    static void unplugDevices()
    {
        for (const QByteArray &module :
             SoundServer::ask({"list", "short", "modules"}).split('\n')) {
            if (module.contains("module-null-sink")) {
                SoundServer::ask({"unload-module", module.split('\t').first()});
            }
        }
    }

    static void plugNotificationDevice()
    {
        SoundServer::ask({"load-module", "module-null-sink", "sink_name=notif", "format=s16le",
                          "rate=48000", "channels=2", "norewinds=1"});
    }
};

TEST_F(DeviceFailuresTest, AMissingDeviceFailsEveryNotification)
{
    start({{"notificationsDevice", "nowhere"}});
    m_requester.enqueue(fileItem("first", toneFile(frequency, briefMs)));
    m_requester.enqueue(fileItem("second", toneFile(frequency, briefMs)));
    EXPECT_TRUE(m_requester.waitFor("restored"));
    EXPECT_THAT(m_requester.responses(), ElementsAre("failed first", "failed second"));
    EXPECT_TRUE(m_host.waitForLog("The sound device \"nowhere\" doesn't exist"));
    EXPECT_EQ(stopHost(), 0);
}

TEST_F(DeviceFailuresTest, AMissingDeviceLeavesTheMusicAsItWas)
{
    QJsonObject configuration = withMusic();
    configuration.insert("notificationsDevice", "nowhere");
    start(configuration);
    waitForMusic();
    m_requester.enqueue(fileItem("sound", toneFile(frequency, briefMs)));
    EXPECT_TRUE(m_requester.waitFor("restored"));
    constexpr double settled = 0.3;
    const double restored = m_requester.momentOf("restored");
    ASSERT_TRUE(m_mainDevice.waitUntil(restored + 2 * settled));
    EXPECT_NEAR(music().level(restored + settled, restored + 2 * settled), toneLevel, 1);
}

TEST_F(DeviceFailuresTest, ASoundServerThatDiesFailsTheSound)
{
    start(withMusic());
    startLongSound();
    m_server.kill();
    EXPECT_TRUE(m_requester.waitFor("failed sound")) << m_host.log().toStdString();
    EXPECT_TRUE(m_host.waitForLog("The sound device \"notifications\" has gone"))
        << m_host.log().toStdString();
    EXPECT_TRUE(m_requester.waitFor("restored")) << m_host.log().toStdString();
    EXPECT_EQ(stopHost(), 0) << m_host.log().toStdString();
}

TEST_F(DeviceFailuresTest, ADeviceThatVanishesFailsTheSound)
{
    start(withMusic());
    startLongSound();
    unplugDevices();
    EXPECT_TRUE(m_requester.waitFor("failed sound")) << m_host.log().toStdString();
    EXPECT_TRUE(m_requester.waitFor("restored")) << m_host.log().toStdString();
    EXPECT_THAT(m_requester.responses(), ElementsAre("started sound", "failed sound"));
    EXPECT_EQ(stopHost(), 0) << m_host.log().toStdString();
}

TEST_F(DeviceFailuresTest, ADeviceThatIsBackPlaysTheNextSound)
{
    start();
    startLongSound();
    unplugDevices();
    EXPECT_TRUE(m_requester.waitFor("failed sound")) << m_host.log().toStdString();
    plugNotificationDevice();
    Listener listener("notifications");
    m_requester.enqueue(fileItem("next", toneFile(frequency, briefMs)));
    EXPECT_TRUE(m_requester.waitFor("finished next")) << m_host.log().toStdString();
    ASSERT_TRUE(listener.waitUntil(monotonicNow() + 0.3));
    EXPECT_EQ(listener.heard().frames(), framesOf(briefMs));
}

TEST_F(DeviceFailuresTest, WithoutASoundServerEveryFurtherSoundFails)
{
    start();
    startLongSound();
    m_server.kill();
    m_requester.enqueue(fileItem("next", toneFile(frequency, briefMs)));
    EXPECT_TRUE(m_requester.waitFor("restored")) << m_host.log().toStdString();
    EXPECT_THAT(m_requester.responses(),
                ElementsAre("started sound", "failed sound", "failed next"));
    EXPECT_EQ(stopHost(), 0) << m_host.log().toStdString();
}
