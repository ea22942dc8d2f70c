// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "RecordFields.h"

namespace {
const QVariantHash strange{{"strange", 1}};

QVariantList unsuitableFor(const QString & /*type*/)
{
    return {QVariant(), 7, true, QVariantList{"text"}, strange};
}

QVariantList unsuitableFor(const CMPath & /*type*/)
{
    return {QVariant(), 7, QStringLiteral("no/slash"), QVariantList{"/path"}, strange};
}

QVariantList unsuitableFor(const TrString & /*type*/)
{
    return {QVariant(), 7, true, QVariantList{"text"}, strange};
}

QVariantList unsuitableFor(bool /*type*/)
{
    return {QVariant(), QStringLiteral("true"), QVariantList{true}, strange};
}

QVariantList unsuitableFor(double /*type*/)
{
    return {QVariant(), QStringLiteral("1.5"), QVariantList{1.5}, strange};
}

QVariantList unsuitableFor(int /*type*/)
{
    return {QVariant(), QStringLiteral("2"), 2.5, 1e300, true, QVariantList{2}, strange};
}

QVariantList unsuitableFor(qint64 /*type*/)
{
    return {QVariant(), QStringLiteral("2"), 2.5, 1e300, true, QVariantList{2}, strange};
}

QVariantList unsuitableFor(const TavoHash & /*type*/)
{
    return {QVariant(), 7, QStringLiteral("text"), QVariantList{strange}};
}

template <typename T>
QVariantList unsuitableFor(const TavoList<T> & /*type*/)
{
    return {QVariant(), 7, QStringLiteral("text"), strange};
}

template <typename Record, typename T>
RecordField field(const char *record, const char *key, T (Record::*get)() const,
                  Record &(Record::*set)(const T &), const T &sample)
{
    return {std::string(record) + '.' + key,
            QString::fromLatin1(key),
            [get](const QVariantHash &fields) { return (Record(fields).*get)() == T(); },
            [get, sample](const QVariantHash &fields) { return (Record(fields).*get)() == sample; },
            [set, sample] { return (Record().*set)(sample).fields(); },
            [set, sample] {
                Record made;
                return &(made.*set)(sample) == &made;
            },
            unsuitableFor(sample)};
}

#define FIELD_KEY(Record, getter, setter, key, sample)                                             \
    field(#Record, key, &Record::getter, &Record::setter, sample)
#define FIELD(Record, getter, setter, sample) FIELD_KEY(Record, getter, setter, #getter, sample)

const QString text = QString::fromUtf8("Ünïcode \" \\ \n text");
const CMPath path{QStringLiteral("/some/path")};
const TrString plain(QStringLiteral("A message"));
const TrString translatable(TrCharData{"Context", "%1 of %2", "how many", 3},
                            {TrArg(3), TrArg(QStringLiteral("four"))});

std::vector<RecordField> notificationFields()
{
    using Item = TavoNotificationPlayerItem;
    using Response = TavoNotificationPlayerResponse;
    using Message = TavoNotificationDisplayItem;
    using Current = TavoNotificationDisplayCurrent;
    using Ended = TavoNotificationDisplayEnded;
    return {
        FIELD(Item, id, setId, text),
        FIELD(Item, content, setContent, text),
        FIELD(Item, contentStreamFormat, setContentStreamFormat, text),
        FIELD(Item, type, setType, TavoNotificationPlayerItemType::Stream),
        FIELD(Item, type, setType, TavoNotificationPlayerItemType::Enum(-5)),
        FIELD(Item, priority, setPriority, TavoNotificationItemPriority::Urgent),
        FIELD(Item, priority, setPriority, TavoNotificationItemPriority::Enum(1000)),
        FIELD(Item, loop, setLoop, true),
        FIELD(Item, playbackResponsePath, setPlaybackResponsePath, path),
        FIELD(Response, id, setId, text),
        FIELD(Response, type, setType, TavoNotificationPlayerResponseType::Failed),
        FIELD(Message, id, setId, text),
        FIELD(Message, title, setTitle, translatable),
        FIELD(Message, title, setTitle, plain),
        FIELD(Message, message, setMessage, translatable),
        FIELD(Message, timeout, setTimeout, -2147483647),
        FIELD(Message, priority, setPriority, TavoNotificationItemPriority::Enum(-1)),
        FIELD(Message, path, setPath, path),
        FIELD(Current, path, setPath, path),
        FIELD(Current, id, setId, text),
        FIELD(Current, priority, setPriority, TavoNotificationItemPriority::High),
        FIELD(Current, timeout, setTimeout, 5000),
        FIELD(Current, remaining, setRemaining, 1234),
        FIELD(Current, since, setSince, qint64(1) << 40),
        FIELD(Current, waiting, setWaiting, 9999),
        FIELD(Ended, path, setPath, path),
        FIELD(Ended, id, setId, text),
        FIELD(Ended, end, setEnd, TavoNotificationDisplayEnd::Overtaken),
        FIELD(Ended, remaining, setRemaining, 1234),
        FIELD(Ended, number, setNumber, qint64(1) << 40),
    };
}

std::vector<RecordField> attentionFields()
{
    using Action = TavoAttentionAction;
    using Item = TavoAttentionItem;
    using Outcome = TavoAttentionOutcome;
    using Ended = TavoAttentionEnded;
    using DoNotDisturb = TavoAttentionDoNotDisturb;
    using Inhibition = TavoAttentionInhibition;
    using History = TavoAttentionHistory;
    using Rule = TavoAttentionRule;
    using Rules = TavoAttentionRules;
    using Verdict = TavoAttentionVerdict;
    using Trial = TavoAttentionTrial;
    using Query = TavoAttentionQuery;
    using Record = TavoAttentionRecord;
    using Page = TavoAttentionPage;
    return {
        FIELD(Action, key, setKey, text),
        FIELD(Item, id, setId, text),
        FIELD(Item, title, setTitle, translatable),
        FIELD(Item, text, setText, translatable),
        FIELD(Item, path, setPath, path),
        FIELD(Item, application, setApplication, text),
        FIELD(Item, source, setSource, text),
        FIELD(Item, icon, setIcon, text),
        FIELD(Item, category, setCategory, text),
        FIELD(Item, group, setGroup, text),
        FIELD(Item, priority, setPriority, TavoNotificationItemPriority::High),
        FIELD(Item, timeout, setTimeout, 5000),
        FIELD(Item, actions, setActions, (TavoList<Action>{Action().setKey(text)})),
        FIELD(Item, sound, setSound, TavoNotificationPlayerItem().setId(text)),
        FIELD(Item, soundFollows, setSoundFollows, true),
        FIELD(Item, speech, setSpeech, text),
        FIELD(Item, language, setLanguage, text),
        FIELD(Outcome, id, setId, text),
        FIELD(Outcome, shown, setShown, true),
        FIELD(Outcome, sounding, setSounding, true),
        FIELD(Outcome, reason, setReason, text),
        FIELD(Ended, id, setId, text),
        FIELD(Ended, end, setEnd, TavoAttentionEnd::ActedOn),
        FIELD(Ended, action, setAction, text),
        FIELD(Ended, shownUntil, setShownUntil, qint64(1) << 40),
        FIELD(Ended, heardUntil, setHeardUntil, qint64(1) << 40),
        FIELD(DoNotDisturb, on, setOn, true),
        FIELD(DoNotDisturb, until, setUntil, qint64(1) << 40),
        FIELD(DoNotDisturb, inhibitions, setInhibitions,
              (TavoList<Inhibition>{Inhibition().setReason(text)})),
        FIELD(Inhibition, id, setId, text),
        FIELD(Inhibition, on, setOn, true),
        FIELD(Inhibition, application, setApplication, text),
        FIELD(Inhibition, reason, setReason, text),
        FIELD(History, kept, setKept, true),
        FIELD(History, file, setFile, text),
        FIELD(History, reason, setReason, text),
        FIELD(History, changes, setChanges, qint64(1) << 40),
        FIELD(Rule, name, setName, text),
        FIELD(Rules, file, setFile, text),
        FIELD_KEY(Rules, isRead, setRead, "read", true),
        FIELD(Rules, error, setError, text),
        FIELD(Verdict, rule, setRule, text),
        FIELD(Verdict, applies, setApplies, true),
        FIELD(Trial, verdicts, setVerdicts, (TavoList<Verdict>{Verdict().setRule(text)})),
        FIELD(Trial, shown, setShown, true),
        FIELD(Trial, sounding, setSounding, true),
        FIELD(Trial, spoken, setSpoken, true),
        FIELD(Trial, priority, setPriority, TavoNotificationItemPriority::High),
        FIELD(Trial, timeout, setTimeout, 5000),
        FIELD(Query, before, setBefore, qint64(1) << 40),
        FIELD(Query, limit, setLimit, 5000),
        FIELD(Query, search, setSearch, text),
        FIELD(Query, source, setSource, text),
        FIELD(Record, number, setNumber, qint64(1) << 40),
        FIELD(Record, id, setId, text),
        FIELD(Record, time, setTime, qint64(1) << 40),
        FIELD(Record, endTime, setEndTime, qint64(1) << 40),
        FIELD(Record, source, setSource, text),
        FIELD(Record, application, setApplication, text),
        FIELD(Record, category, setCategory, text),
        FIELD(Record, priority, setPriority, TavoNotificationItemPriority::High),
        FIELD(Record, title, setTitle, text),
        FIELD(Record, text, setText, text),
        FIELD(Record, state, setState, TavoAttentionState::Silenced),
        FIELD(Page, records, setRecords, (TavoList<Record>{Record().setTitle(text)})),
    };
}

std::vector<RecordField> serviceFields()
{
    using Register = TavoPowerManagerModuleRegister;
    using Request = TavoPowerManagerResourceRequest;
    using Revoke = TavoPowerManagerRevokeMessage;
    using Ducking = TavoPlayerAudioDuckingRequest;
    using Holders = TavoPowerManagerResourceHolders;
    using Main = TavoPlayerMainAudioState;
    using Names = TavoList<QString>;
    using Resources = TavoList<TavoPowerManagerResources::Enum>;
    using RowsTypes = TavoList<TavoRowsRolesType::Enum>;
    return {
        FIELD(Register, moduleName, setModuleName, text),
        FIELD(Register, revokeResourcesPath, setRevokeResourcesPath, path),
        FIELD(Register, postRevokeResourcesPath, setPostRevokeResourcesPath, path),
        FIELD(Request, moduleName, setModuleName, text),
        FIELD(Request, resource, setResource, TavoPowerManagerResources::Audio),
        FIELD(Request, action, setAction, TavoPowerModuleActions::Release),
        FIELD(Revoke, messageType, setMessageType, TavoPowerManagerRevokeMessageType::PostRevoked),
        FIELD(Revoke, revokeResources, setRevokeResources,
              (Resources{TavoPowerManagerResources::Audio, TavoPowerManagerResources::Enum(77)})),
        FIELD(Holders, resource, setResource, TavoPowerManagerResources::Network),
        FIELD(Holders, holders, setHolders, (Names{text, QStringLiteral("other")})),
        FIELD(TavoPowerManagerState, standby, setStandby, true),
        FIELD(TavoPowerManagerState, modules, setModules, (Names{text})),
        FIELD(TavoPowerManagerState, resources, setResources,
              (TavoList<Holders>{Holders().setHolders(Names{text})})),
        FIELD(Ducking, duckAudio, setDuckAudio, true),
        FIELD(Ducking, requester, setRequester, text),
        FIELD(TavoPlayerAudioDevice, device, setDevice, text),
        FIELD(Main, playing, setPlaying, true),
        FIELD(Main, source, setSource, text),
        FIELD(Main, volume, setVolume, 0.1),
        FIELD(Main, ducked, setDucked, true),
        FIELD(Main, requesters, setRequesters, (Names{text})),
        FIELD(Main, error, setError, text),
        FIELD(TavoRoles, type, setType, TavoRolesType::Text),
        FIELD(TavoRoles, title, setTitle, translatable),
        FIELD(TavoRoles, path, setPath, path),
        FIELD(TavoRoles, application, setApplication, text),
        FIELD(TavoRoles, desktopEntry, setDesktopEntry, text),
        FIELD(TavoRoles, icon, setIcon, text),
        FIELD(TavoRoles, category, setCategory, text),
        FIELD(TavoRoles, image, setImage, TavoImage().setSource(text)),
        FIELD(TavoRoles, markup, setMarkup, text),
        FIELD(TavoRoles, value, setValue, 55),
        FIELD_KEY(TavoRoles, isDefault, setDefault, "default", true),
        FIELD(TavoImage, source, setSource, text),
        FIELD(TavoImage, width, setWidth, 256),
        FIELD(TavoImage, height, setHeight, 1),
        FIELD_KEY(TavoRoles, isTransient, setTransient, "transient", true),
        FIELD(TavoRowsRoles, type, setType,
              (RowsTypes{TavoRowsRolesType::Title, TavoRowsRolesType::Path})),
    };
}

std::vector<RecordField> valueFields()
{
    return {
        FIELD_KEY(TavoValue, bool_, setBool_, "bool", true),
        FIELD_KEY(TavoValue, int_, setInt_, "int", 2147483647),
        FIELD_KEY(TavoValue, double_, setDouble_, "double", -0.1),
        FIELD_KEY(TavoValue, string_, setString_, "string", text),
        FIELD(TavoValue, path, setPath, path),
        FIELD(TavoValue, notificationPlayerItem, setNotificationPlayerItem,
              TavoNotificationPlayerItem()
                  .setId(text)
                  .setType(TavoNotificationPlayerItemType::Fake)
                  .setPlaybackResponsePath(path)),
        FIELD(TavoValue, notificationPlayerResponse, setNotificationPlayerResponse,
              TavoNotificationPlayerResponse().setId(text).setType(
                  TavoNotificationPlayerResponseType::Started)),
        FIELD(TavoValue, notificationDisplayItem, setNotificationDisplayItem,
              TavoNotificationDisplayItem().setMessage(translatable).setTimeout(5000)),
        FIELD(TavoValue, displayCurrent, setDisplayCurrent,
              TavoNotificationDisplayCurrent().setPath(path).setWaiting(3)),
        FIELD(TavoValue, displayEnded, setDisplayEnded,
              TavoNotificationDisplayEnded().setPath(path).setNumber(7)),
        FIELD(TavoValue, attentionItem, setAttentionItem, TavoAttentionItem().setId(text)),
        FIELD(TavoValue, attentionOutcome, setAttentionOutcome, TavoAttentionOutcome().setId(text)),
        FIELD(TavoValue, attentionEnded, setAttentionEnded, TavoAttentionEnded().setNumber(7)),
        FIELD(TavoValue, attentionDoNotDisturb, setAttentionDoNotDisturb,
              TavoAttentionDoNotDisturb().setOn(true)),
        FIELD(TavoValue, attentionInhibition, setAttentionInhibition,
              TavoAttentionInhibition().setId(text)),
        FIELD(TavoValue, attentionHistory, setAttentionHistory,
              TavoAttentionHistory().setFile(text)),
        FIELD(TavoValue, attentionRules, setAttentionRules, TavoAttentionRules().setFile(text)),
        FIELD(TavoValue, attentionTrial, setAttentionTrial, TavoAttentionTrial().setShown(true)),
        FIELD(TavoValue, attentionQuery, setAttentionQuery, TavoAttentionQuery().setSearch(text)),
        FIELD(TavoValue, attentionPage, setAttentionPage, TavoAttentionPage().setNext(7)),
        FIELD(TavoValue, mainAudioState, setMainAudioState,
              TavoPlayerMainAudioState().setSource(text).setVolume(0.5)),
        FIELD(TavoValue, powerManagerState, setPowerManagerState,
              TavoPowerManagerState().setModules({text})),
        FIELD(TavoValue, audioDevice, setAudioDevice, TavoPlayerAudioDevice().setDevice(text)),
    };
}
} // namespace

const std::vector<RecordField> &recordFields()
{
    static const std::vector<RecordField> all = [] {
        std::vector<RecordField> fields = notificationFields();
        for (const auto &more : {attentionFields(), serviceFields(), valueFields()}) {
            fields.insert(fields.end(), more.begin(), more.end());
        }
        return fields;
    }();
    return all;
}
