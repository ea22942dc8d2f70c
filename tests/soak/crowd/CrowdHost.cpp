// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "CrowdHost.h"

#include "Connection.h"
#include "support/sound/SoundFiles.h"
#include <bus/BusError.h>
#include <bus/BusReader.h>
#include <core/records/player.h>
#include <core/records/powermanager.h>
#include <core/records/value.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>

#include <sndfile.h>

#include <grp.h>
#include <pwd.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace {
using namespace std::chrono_literals;

// Users and a group that exist on every Debian system.
constexpr const char *permittedGroup = "games";
constexpr const char *goodUser = "man";
constexpr const char *hostileUsers[] = {"daemon", "mail"};
constexpr const char *outsideUser = "nobody";
constexpr const char *hostUser = "list";

/// The limits of the system bus.
constexpr const char *limits = R"(
  <limit name="max_incoming_bytes">133169152</limit>
  <limit name="max_outgoing_bytes">133169152</limit>
  <limit name="max_message_size">33554432</limit>
  <limit name="max_completed_connections">2048</limit>
  <limit name="max_connections_per_user">256</limit>
  <limit name="max_match_rules_per_connection">512</limit>
  <limit name="max_replies_per_connection">128</limit>
)";

/// The rules of the system bus for messages to which no other rule applies.
constexpr const char *closedBus = R"(
  <policy context="default">
    <allow user="*"/>
    <deny own="*"/>
    <deny send_type="method_call"/>
    <allow send_type="signal"/>
    <allow send_requested_reply="true" send_type="method_return"/>
    <allow send_requested_reply="true" send_type="error"/>
    <allow receive_type="method_call"/>
    <allow receive_type="method_return"/>
    <allow receive_type="error"/>
    <allow receive_type="signal"/>
    <allow send_destination="org.freedesktop.DBus"/>
    <deny send_destination="org.freedesktop.DBus" send_interface="org.freedesktop.DBus.Debug.Stats"/>
  </policy>
)";

constexpr auto setUpTimeout = 10s;

void setMode(const QString &file, mode_t mode)
{
    if (::chmod(QFile::encodeName(file).constData(), mode) != 0) {
        throw std::runtime_error("the mode of a file can't be changed");
    }
}

/// The installed policy, with a user and a group that exist here.
QString policy(const QString &user, const QString &group)
{
    QFile file(QStringLiteral(POLICY_FILE));
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("the policy can't be read");
    }
    const QString text = QString::fromUtf8(file.readAll());
    const int start = text.indexOf(QLatin1String("<policy"));
    return text.mid(start, text.indexOf(QLatin1String("</busconfig>")) - start)
        .replace(QLatin1String("user=\"tavo-host\""), QStringLiteral("user=\"%1\"").arg(user))
        .replace(QLatin1String("group=\"tavo-host\""), QStringLiteral("group=\"%1\"").arg(group));
}

BusMessage ask(Connection &connection, const BusMessage &call)
{
    const auto reply = connection.call(call, setUpTimeout);
    if (!reply || reply->error()) {
        throw std::runtime_error("the host does not answer");
    }
    return *reply;
}

TavoValue readValue(Connection &connection, const CMPath &path)
{
    const BusMessage call = connection.createCall(Connection::model, "GetValue");
    append(call, "s", path.toString().toUtf8().constData());
    return TavoValue(BusReader(ask(connection, call)).readVariant().toHash());
}

QVariantList readRows(Connection &connection)
{
    const BusMessage call = connection.createCall(Connection::model, "GetRows");
    append(call, "sii", "/notifications/display/queue", 0, -1);
    BusReader reader(ask(connection, call));
    QVariantList rows;
    reader.enterArray("v");
    while (!reader.isAtEnd()) {
        rows.append(reader.readVariant());
    }
    return rows;
}

long countInboxes(Connection &connection)
{
    const BusMessage call = connection.createCall(Connection::model, "List");
    append(call, "s", "/dbus/inbox");
    BusReader reader(ask(connection, call));
    long count = 0;
    reader.enterArray("(sss)");
    for (; !reader.isAtEnd(); ++count) {
        reader.skip();
    }
    return count;
}

int countEntries(qint64 process, const char *folder)
{
    return int(QDir(QStringLiteral("/proc/%1/%2").arg(process).arg(QLatin1String(folder)))
                   .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
                   .size());
}
} // namespace

CrowdHost::CrowdHost()
{
    chooseUsers();
    writeFiles();
    startBus();
    startHost();
}

void CrowdHost::chooseUsers()
{
    if (BusUser::canBeAnyone()) {
        m_setting.good = BusUser::find(goodUser, permittedGroup);
        for (const char *user : hostileUsers) {
            m_setting.hostile.push_back(BusUser::find(user, permittedGroup));
        }
        m_setting.outsider = BusUser::find(outsideUser);
    }
}

void CrowdHost::writeFiles()
{
    constexpr int rate = 48000;
    constexpr int alarmFrames = rate / 20;
    const QDir folder(m_folder.path());
    folder.mkpath(QStringLiteral("sounds/uploads"));
    folder.mkpath(QStringLiteral("forbidden"));
    m_setting.sounds = inFolder("sounds").toStdString();
    m_setting.uploads = inFolder("sounds/uploads").toStdString();
    m_setting.forbidden = inFolder("forbidden").toStdString();
    for (const char *name : {"sounds/alarm.wav", "forbidden/alarm.wav"}) {
        writeSound(inFolder(name), SF_FORMAT_WAV | SF_FORMAT_PCM_16, rate,
                   countingSamples(alarmFrames));
    }
    // Gigabytes of zeros behind the beginning of a sound file.
    const QByteArray wave = QByteArray("RIFF\xF0\xFF\xFF\xFFWAVEfmt ", 16) + QByteArray(64, '\0');
    const QByteArray ogg =
        QByteArray("OggS\0\2", 6) + QByteArray(20, '\0') + QByteArray("\1\36\1vorbis", 9);
    const std::pair<const char *, QByteArray> sparse[] = {
        {"sounds/uploads/sparse.wav", wave},
        {"sounds/uploads/sparse.ogg", ogg},
        {"sounds/uploads/sparse.mp3", QByteArray("ID3\3\0\0\x7f\x7f\x7f\x7f", 10)},
        {"sounds/uploads/sparse.flac", "fLaC"},
        {"sounds/uploads/sparse", ""}};
    constexpr qint64 size = qint64(64) << 30;
    for (const auto &[name, start] : sparse) {
        ::writeFile(inFolder(name), start);
        if (!QFile::resize(inFolder(name), size)) {
            throw std::runtime_error("a sparse file can't be made");
        }
    }
    ::writeFile(inFolder("asound.conf"),
                "</usr/share/alsa/alsa.conf>\n"
                "pcm_type.scripted { lib \"" SCRIPTED_PCM_LIBRARY "\" }\n"
                "pcm.plain { type scripted behaviour \"plain\" heard \"/dev/null\" }\n");
    folder.mkpath(QStringLiteral("state"));
    for (const char *name : {".", "sounds", "forbidden"}) {
        setMode(inFolder(name), 0755);
    }
    for (const char *name : {"sounds/uploads", "state"}) {
        setMode(inFolder(name), 0777);
    }
}

void CrowdHost::startBus()
{
    QString host = QString::fromLatin1(::getpwuid(::geteuid())->pw_name);
    QString group = QString::fromLatin1(::getgrgid(::getegid())->gr_name);
    if (m_setting.good) {
        host = QLatin1String(hostUser);
        group = QLatin1String(permittedGroup);
    }
    m_bus = std::make_unique<PrivateBus>(QLatin1String(limits) + QLatin1String(closedBus) +
                                         policy(host, group));
    setMode(m_bus->folder(), 0755);
    m_setting.address = m_bus->address();
}

void CrowdHost::startHost()
{
    const QJsonObject player{{"mainDevice", "plain"}, {"notificationsDevice", "plain"}};
    const QJsonObject sounds{{"schemes", QJsonArray{"file", "http"}},
                             {"hosts", QJsonArray{"127.0.0.1:1"}},
                             {"folders", QJsonArray{QString::fromStdString(m_setting.sounds)}}};
    const QJsonObject attention{{"settings", inFolder("state/attention.json")},
                                {"history", QJsonObject{{"file", inFolder("state/history.db")}}},
                                {"speech", QJsonObject{{"folder", inFolder("state/speech")}}}};
    const QJsonObject dbus{{"bus", m_setting.address}, {"sounds", sounds}};
    if (m_setting.good) {
        m_host.addArguments({"--user", hostUser, SERVICE, m_host.program()});
        m_host.setProgram(QStringLiteral(AS_SERVICE));
    }
    m_host.setEnvironment("ALSA_CONFIG_PATH", inFolder("asound.conf"));
    m_host.setConfiguration(
        {{"log", QJsonObject{{"level", "OFF"}, {"levels", QJsonObject{{"Dbus", "INFO"}}}}},
         {"modules",
          QJsonArray{"powermanager", QJsonObject{{"name", "player"}, {"config", player}},
                     "notifications", QJsonObject{{"name", "attention"}, {"config", attention}},
                     QJsonObject{{"name", "dbus"}, {"config", dbus}}}}});
    setMode(m_host.folder(), 0755);
    if (!m_host.startReady() || !m_host.waitForLog("Serving org.freedesktop.Notifications")) {
        throw std::runtime_error("the host does not start: " + log());
    }
    loadHttp();
}

/// Has the host load what it keeps for http, so that this is no difference afterwards.
void CrowdHost::loadHttp() const
{
    Connection connection(m_setting.address, m_setting.good);
    const BusMessage call = connection.createCall(Connection::model, "Call");
    append(call, "sv", "/notifications/player/enqueue", "a{sv}", 1, "notificationPlayerItem",
           "a{sv}", 2, "id", "s", "http", "content", "s", "http://127.0.0.1:1/alarm.wav");
    ask(connection, call);
}

long CrowdHost::residentKiB() const
{
    QFile file(QStringLiteral("/proc/%1/statm").arg(m_host.processId()));
    file.open(QIODevice::ReadOnly);
    return file.readAll().split(' ').value(1).toLong() * (::sysconf(_SC_PAGESIZE) / 1024);
}

HostState CrowdHost::state() const
{
    Connection connection(m_setting.address, m_setting.good);
    HostState state;
    state.rows = readRows(connection).size();
    state.inboxes = countInboxes(connection);
    const auto requesters =
        readValue(connection, TavoPlayerMainAudioStatePath()).mainAudioState().requesters();
    for (int i = 0; i < requesters.size(); ++i) {
        state.requesters += requesters.at(i) != QLatin1String("notifications") ? 1 : 0;
    }
    state.modules =
        readValue(connection, TavoPowerManagerStatePath()).powerManagerState().modules().size();
    state.isPlaying = readValue(connection, TavoNotificationPlayerIsPlayingPath()).bool_();
    state.descriptors = countEntries(m_host.processId(), "fd");
    state.threads = countEntries(m_host.processId(), "task");
    state.residentKiB = residentKiB();
    return state;
}

void CrowdHost::clearDisplay() const
{
    Connection connection(m_setting.address, m_setting.good);
    for (const QVariant &row : readRows(connection)) {
        const BusMessage call = connection.createCall(Connection::model, "Call");
        append(call, "sv", "/notifications/display/cancelNotify", "s",
               row.toString().toUtf8().constData());
        connection.call(call, setUpTimeout); // an error if it has closed by itself
    }
}

std::string CrowdHost::log() const
{
    constexpr int maxLength = 10000;
    return m_host.log().right(maxLength).toStdString();
}
