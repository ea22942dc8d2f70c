// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Any value into every getter of a record, and back through its setter.

#include "fuzz/support/Fuzz.h"
#include "fuzz/support/ValueReader.h"
#include "fuzz/support/Values.h"
#include <core/tavo.h>

namespace {
template <typename T>
QVariant carried(const T &value)
{
    return TavoCodec<T>::write(value);
}

/// Passing the read value to the setter reads the same, and leaves every other field as it was.
template <typename Record, typename T>
void checkField(const QVariantHash &fields, const char *key, T (Record::*get)() const,
                Record &(Record::*set)(const T &))
{
    const QString name = QString::fromLatin1(key);
    const Record record{TavoHash(fields)};
    const QVariant value = carried<T>((record.*get)());
    Record copy = record;
    (copy.*set)((record.*get)());
    FUZZ_CHECK(isSame(carried<T>((copy.*get)()), value), key << ' ' << fields.value(name));
    FUZZ_CHECK(isSame(copy.fields().value(name), value), key << ' ' << fields.value(name));
    QVariantHash others = copy.fields();
    QVariantHash before = fields;
    others.remove(name);
    before.remove(name);
    FUZZ_CHECK(isSame(others, before), key);
    FUZZ_CHECK(!fields.contains(name) ? isSame(value, carried<T>(T())) : true, key);
    FUZZ_CHECK(isPlainData(value) || !isPlainData(fields), key << ' ' << value);
}

#define CHECK_FIELD(Record, getter, setter, key)                                                   \
    checkField(fields, key, &Record::getter, &Record::setter)
#define CHECK(Record, getter, setter) CHECK_FIELD(Record, getter, setter, #getter)

void checkNotifications(const QVariantHash &fields)
{
    CHECK(TavoNotificationPlayerItem, id, setId);
    CHECK(TavoNotificationPlayerItem, content, setContent);
    CHECK(TavoNotificationPlayerItem, contentStreamFormat, setContentStreamFormat);
    CHECK(TavoNotificationPlayerItem, type, setType);
    CHECK(TavoNotificationPlayerItem, priority, setPriority);
    CHECK(TavoNotificationPlayerItem, loop, setLoop);
    CHECK(TavoNotificationPlayerItem, attenuation, setAttenuation);
    CHECK(TavoNotificationPlayerItem, playbackResponsePath, setPlaybackResponsePath);
    CHECK(TavoNotificationPlayerResponse, id, setId);
    CHECK(TavoNotificationPlayerResponse, type, setType);
    CHECK(TavoNotificationDisplayItem, id, setId);
    CHECK(TavoNotificationDisplayItem, title, setTitle);
    CHECK(TavoNotificationDisplayItem, message, setMessage);
    CHECK(TavoNotificationDisplayItem, timeout, setTimeout);
    CHECK(TavoNotificationDisplayItem, priority, setPriority);
    CHECK(TavoNotificationDisplayItem, path, setPath);
    CHECK(TavoRoles, type, setType);
    CHECK(TavoRoles, title, setTitle);
    CHECK(TavoRowsRoles, type, setType);
}

void checkServices(const QVariantHash &fields)
{
    CHECK(TavoPlayerAudioDuckingRequest, duckAudio, setDuckAudio);
    CHECK(TavoPlayerAudioDuckingRequest, requester, setRequester);
    CHECK(TavoPlayerAudioDevice, device, setDevice);
    CHECK(TavoPlayerMainAudioState, playing, setPlaying);
    CHECK(TavoPlayerMainAudioState, source, setSource);
    CHECK(TavoPlayerMainAudioState, volume, setVolume);
    CHECK(TavoPlayerMainAudioState, ducked, setDucked);
    CHECK(TavoPlayerMainAudioState, requesters, setRequesters);
    CHECK(TavoPlayerMainAudioState, error, setError);
    CHECK(TavoPowerManagerModuleRegister, moduleName, setModuleName);
    CHECK(TavoPowerManagerModuleRegister, revokeResourcesPath, setRevokeResourcesPath);
    CHECK(TavoPowerManagerModuleRegister, postRevokeResourcesPath, setPostRevokeResourcesPath);
    CHECK(TavoPowerManagerResourceRequest, moduleName, setModuleName);
    CHECK(TavoPowerManagerResourceRequest, resource, setResource);
    CHECK(TavoPowerManagerResourceRequest, action, setAction);
    CHECK(TavoPowerManagerRevokeMessage, messageType, setMessageType);
    CHECK(TavoPowerManagerRevokeMessage, revokeResources, setRevokeResources);
    CHECK(TavoPowerManagerResourceHolders, resource, setResource);
    CHECK(TavoPowerManagerResourceHolders, holders, setHolders);
    CHECK(TavoPowerManagerState, standby, setStandby);
    CHECK(TavoPowerManagerState, modules, setModules);
    CHECK(TavoPowerManagerState, resources, setResources);
}

void checkValue(const QVariantHash &fields)
{
    CHECK_FIELD(TavoValue, bool_, setBool_, "bool");
    CHECK_FIELD(TavoValue, int_, setInt_, "int");
    CHECK_FIELD(TavoValue, double_, setDouble_, "double");
    CHECK_FIELD(TavoValue, string_, setString_, "string");
    CHECK(TavoValue, path, setPath);
    CHECK(TavoValue, notificationPlayerItem, setNotificationPlayerItem);
    CHECK(TavoValue, notificationPlayerResponse, setNotificationPlayerResponse);
    CHECK(TavoValue, notificationDisplayItem, setNotificationDisplayItem);
    CHECK(TavoValue, audioDevice, setAudioDevice);
    CHECK(TavoValue, mainAudioState, setMainAudioState);
    CHECK(TavoValue, powerManagerState, setPowerManagerState);
}

/// Copying the elements of a typed list one by one gives an equal list.
template <typename T>
void checkList(const QVariant &value)
{
    const TavoList<T> list = TavoCodec<TavoList<T>>::read(value);
    TavoList<T> copy;
    for (int i = 0; i < list.size(); ++i) {
        copy.append(list.at(i));
    }
    FUZZ_CHECK(copy.size() == list.size(), value);
    for (int i = 0; i < list.size(); ++i) {
        FUZZ_CHECK(isSame(carried<T>(copy.at(i)), carried<T>(list.at(i))), value);
    }
}

/// A whole number is read as that number, or not at all.
void checkInteger(const QVariant &value)
{
    const qint64 number = TavoCodec<qint64>::read(value);
    FUZZ_CHECK(number == 0 || tavoIsNumber(value), value);
    FUZZ_CHECK(number == 0 || double(number) == value.toDouble(), value);
    const int small = TavoCodec<int>::read(value);
    FUZZ_CHECK(small == 0 || small == number, value);
    FUZZ_CHECK(number != int(number) || small == number, value);
}
} // namespace

void fuzzOne(ByteReader &input)
{
    ValueReader values(input);
    const auto kind = FuzzRecord(input.below(int(FuzzRecord::Count)));
    const QVariantHash fields = values.record(kind);
    checkNotifications(fields);
    checkServices(fields);
    checkValue(fields);

    const QVariant value = values.value();
    checkValue(value.toHash());
    checkList<QString>(value);
    checkList<TavoPowerManagerResources::Enum>(value);
    checkList<TavoPowerManagerResourceHolders>(value);
    checkInteger(value);
    for (const QVariant &field : fields) {
        checkInteger(field);
    }
    const TavoHash record(fields);
    FUZZ_CHECK(isSame(TavoHash(record.__variant().toHash()).__variant(), record.__variant()), "");
    std::ostringstream line;
    line << record << CMError(fields).message().toString();
}
