// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/support/Dictionary.h"

#include <core/tavo.h>

#include <QSet>

namespace {
using Field = FuzzField;
using Record = FuzzRecord;
using Fields = std::vector<FuzzFieldOf>;

const Fields valueFields{
    {"bool", Field::Bool},
    {"int", Field::Int},
    {"double", Field::Double},
    {"string", Field::Text},
    {"path", Field::Path},
    {"notificationPlayerItem", Field::Record, Record::PlayerItem},
    {"notificationDisplayItem", Field::Record, Record::DisplayItem},
    {"notificationPlayerResponse", Field::Record, Record::PlayerResponse},
    {"audioDevice", Field::Record, Record::AudioDevice},
    {"mainAudioState", Field::Record, Record::MainAudioState},
    {"powerManagerState", Field::Record, Record::PowerManagerState},
};

const std::vector<Fields> &schemas()
{
    static const std::vector<Fields> all{
        valueFields,
        // PlayerItem
        {{"id", Field::Text},
         {"content", Field::Text},
         {"contentStreamFormat", Field::Text},
         {"type", Field::Int},
         {"priority", Field::Int},
         {"loop", Field::Bool},
         {"attenuation", Field::Int},
         {"playbackResponsePath", Field::Path}},
        // DisplayItem
        {{"id", Field::Text},
         {"title", Field::Translatable},
         {"message", Field::Translatable},
         {"timeout", Field::Int},
         {"priority", Field::Int},
         {"path", Field::Path}},
        // PlayerResponse
        {{"id", Field::Text}, {"type", Field::Int}},
        // RevokeMessage
        {{"messageType", Field::Int}, {"revokeResources", Field::Ints}},
        // ModuleRegister
        {{"moduleName", Field::Text},
         {"revokeResourcesPath", Field::Path},
         {"postRevokeResourcesPath", Field::Path}},
        // ResourceRequest
        {{"moduleName", Field::Text}, {"resource", Field::Int}, {"action", Field::Int}},
        // ResourceHolders
        {{"resource", Field::Int}, {"holders", Field::Strings}},
        // PowerManagerState
        {{"standby", Field::Bool},
         {"modules", Field::Strings},
         {"resources", Field::Records, Record::ResourceHolders}},
        // DuckingRequest
        {{"duckAudio", Field::Bool}, {"requester", Field::Text}},
        // AudioDevice
        {{"device", Field::Text}},
        // MainAudioState
        {{"playing", Field::Bool},
         {"source", Field::Text},
         {"volume", Field::Double},
         {"ducked", Field::Bool},
         {"requesters", Field::Strings},
         {"error", Field::Text}},
        // Roles
        {{"type", Field::Int}, {"title", Field::Translatable}},
        // RowsRoles
        {{"type", Field::Ints}},
        // Translation
        {{"context", Field::Text},
         {"source", Field::Text},
         {"disambiguation", Field::Text},
         {"count", Field::Int},
         {"arguments", Field::Strings}},
        // PlayerConfiguration
        {{"notificationsDevice", Field::Text},
         {"mainDevice", Field::Text},
         {"music", Field::Text},
         {"duckingAttenuation", Field::Double},
         {"duckingFade", Field::Int}},
        // PowerManagerConfiguration
        {{"revokeTimeout", Field::Int}},
    };
    return all;
}

std::vector<QString> collectWords()
{
    std::vector<QString> words{
        QString(),
        QStringLiteral("a"),
        QStringLiteral("b"),
        QStringLiteral("c"),
        QStringLiteral("/test/response"),
        QStringLiteral("/own/node"),
        QStringLiteral("/a/b"),
        QStringLiteral("/"),
        QStringLiteral("//a//b//"),
        QStringLiteral("/player/revokeResources"),
        QStringLiteral("audio/L16;rate=48000;channels=2"),
        QStringLiteral("audio/wav"),
        QStringLiteral("/sounds/bell.wav"),
        QStringLiteral("file:///sounds/bell.wav"),
        QStringLiteral("http://127.0.0.1:1/bell.wav"),
        QStringLiteral("UklGRg=="),
        QStringLiteral("%1 of %2"),
        QStringLiteral("%n sounds"),
        QStringLiteral("a\nb\x1b[0m"),
        QString(QChar::Null),
        QString(QChar(0xd800)),
        QString(QChar(0xdfff)) + QChar(0xd800),
        QString::fromUtf8("\xf0\x9f\x94\x94"),
        QStringLiteral("2"),
        QStringLiteral("true"),
    };
    for (const CMPath &path : {TavoNotificationsPath(),
                               TavoNotificationPlayerEnqueuePath(),
                               TavoNotificationPlayerCancelPath(),
                               TavoNotificationPlayerIsPlayingPath(),
                               TavoNotificationDisplayOpenPath(),
                               TavoNotificationDisplayCancelNotifyPath(),
                               TavoNotificationDisplayQueuePath(),
                               TavoNotificationDisplaySimpleMessageNodePath(),
                               TavoNotificationsPath() + QStringLiteral("/player/revokeResources"),
                               TavoPlayerAlsaDeviceNotificationsPath(),
                               TavoPlayerAlsaDeviceMainPath(),
                               TavoPlayerMainAudioDuckingPath(),
                               TavoPlayerMainAudioPlayPath(),
                               TavoPlayerMainAudioStatePath(),
                               TavoPlayerMainAudioStopPath(),
                               TavoPlayerMainAudioVolumePath(),
                               TavoPowerManagerModuleRegisterPath(),
                               TavoPowerManagerResourceRequestPath(),
                               TavoPowerManagerResumePath(),
                               TavoPowerManagerStandbyPath(),
                               TavoPowerManagerStatePath()}) {
        words.push_back(path.toString());
    }
    QSet<QString> seen;
    for (const Fields &fields : schemas()) {
        for (const FuzzFieldOf &field : fields) {
            const QString key = QString::fromLatin1(field.key);
            if (!seen.contains(key)) {
                seen.insert(key);
                words.push_back(key);
            }
        }
    }
    return words;
}
} // namespace

const std::vector<QString> &fuzzWords()
{
    static const std::vector<QString> words = collectWords();
    return words;
}

const std::vector<FuzzFieldOf> &fuzzFields(FuzzRecord record)
{
    return schemas().at(std::size_t(record));
}
