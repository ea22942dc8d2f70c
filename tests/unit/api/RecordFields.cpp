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
class TypedField : public RecordField
{
public:
    using Get = T (Record::*)() const;
    using Set = Record &(Record::*)(const T &);
    TypedField(const char *record, const char *key, Get get, Set set, const T &sample)
        : RecordField(record, key, unsuitableFor(sample))
        , m_get(get)
        , m_set(set)
        , m_sample(sample)
    {
    }

    bool readsDefault(const QVariantHash &record) const override
    {
        return (Record(record).*m_get)() == T();
    }
    bool readsSample(const QVariantHash &record) const override
    {
        return (Record(record).*m_get)() == m_sample;
    }
    QVariantHash withSample() const override { return (Record().*m_set)(m_sample).fields(); }
    bool setterReturnsTheRecord() const override
    {
        Record made;
        return &(made.*m_set)(m_sample) == &made;
    }

private:
    const Get m_get;
    const Set m_set;
    const T m_sample;
};

template <typename Record, typename T>
const RecordField *field(const char *record, const char *key, T (Record::*get)() const,
                         Record &(Record::*set)(const T &), const T &sample)
{
    return new TypedField<Record, T>(record, key, get, set, sample);
}

#define FIELD_KEY(Record, getter, setter, key, sample)                                             \
    field(#Record, key, &Record::getter, &Record::setter, sample)
#define FIELD(Record, getter, setter, sample) FIELD_KEY(Record, getter, setter, #getter, sample)

const QString sampleText = QString::fromUtf8("Ünïcode \" \\ \n text");
const CMPath samplePath{QStringLiteral("/some/path")};
const TrString samplePlain(QStringLiteral("A message"));
const TrString sampleTranslation(TrCharData{"Context", "%1 of %2", "how many", 3},
                                 {TrArg(3), TrArg(QStringLiteral("four"))});

std::vector<const RecordField *> notificationFields()
{
    using Item = TavoNotificationPlayerItem;
    using Response = TavoNotificationPlayerResponse;
    using Message = TavoNotificationDisplayItem;
    using Current = TavoNotificationDisplayCurrent;
    using Ended = TavoNotificationDisplayEnded;
    return {
        FIELD(Item, id, setId, sampleText),
        FIELD(Item, content, setContent, sampleText),
        FIELD(Item, contentStreamFormat, setContentStreamFormat, sampleText),
        FIELD(Item, attenuation, setAttenuation, 12),
        FIELD(Item, type, setType, TavoNotificationPlayerItemType::Stream),
        FIELD(Item, type, setType, TavoNotificationPlayerItemType::Enum(-5)),
        FIELD(Item, priority, setPriority, TavoNotificationItemPriority::Urgent),
        FIELD(Item, priority, setPriority, TavoNotificationItemPriority::Enum(1000)),
        FIELD(Item, loop, setLoop, true),
        FIELD(Item, playbackResponsePath, setPlaybackResponsePath, samplePath),
        FIELD(Response, id, setId, sampleText),
        FIELD(Response, type, setType, TavoNotificationPlayerResponseType::Failed),
        FIELD(Message, id, setId, sampleText),
        FIELD(Message, title, setTitle, sampleTranslation),
        FIELD(Message, title, setTitle, samplePlain),
        FIELD(Message, message, setMessage, sampleTranslation),
        FIELD(Message, timeout, setTimeout, -2147483647),
        FIELD(Message, priority, setPriority, TavoNotificationItemPriority::Enum(-1)),
        FIELD(Message, path, setPath, samplePath),
        FIELD(Current, path, setPath, samplePath),
        FIELD(Current, id, setId, sampleText),
        FIELD(Current, priority, setPriority, TavoNotificationItemPriority::High),
        FIELD(Current, timeout, setTimeout, 5000),
        FIELD(Current, remaining, setRemaining, 1234),
        FIELD(Current, since, setSince, qint64(1) << 40),
        FIELD(Current, waiting, setWaiting, 9999),
        FIELD(Ended, path, setPath, samplePath),
        FIELD(Ended, id, setId, sampleText),
        FIELD(Ended, end, setEnd, TavoNotificationDisplayEnd::Overtaken),
        FIELD(Ended, remaining, setRemaining, 1234),
        FIELD(Ended, number, setNumber, qint64(1) << 40),
    };
}

std::vector<const RecordField *> attentionFields()
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
        FIELD(Action, key, setKey, sampleText),
        FIELD(Action, label, setLabel, sampleTranslation),
        FIELD(Action, icon, setIcon, sampleText),
        FIELD(Item, id, setId, sampleText),
        FIELD(Item, title, setTitle, sampleTranslation),
        FIELD(Item, text, setText, sampleTranslation),
        FIELD(Item, path, setPath, samplePath),
        FIELD(Item, application, setApplication, sampleText),
        FIELD(Item, source, setSource, sampleText),
        FIELD(Item, icon, setIcon, sampleText),
        FIELD(Item, category, setCategory, sampleText),
        FIELD(Item, group, setGroup, sampleText),
        FIELD(Item, priority, setPriority, TavoNotificationItemPriority::High),
        FIELD(Item, timeout, setTimeout, 5000),
        FIELD(Item, actions, setActions, (TavoList<Action>{Action().setKey(sampleText)})),
        FIELD(Item, sound, setSound, TavoNotificationPlayerItem().setId(sampleText)),
        FIELD(Item, soundFollows, setSoundFollows, true),
        FIELD(Item, speech, setSpeech, sampleText),
        FIELD(Item, language, setLanguage, sampleText),
        FIELD(Item, user, setUser, sampleText),
        FIELD(Outcome, id, setId, sampleText),
        FIELD(Outcome, shown, setShown, true),
        FIELD(Outcome, sounding, setSounding, true),
        FIELD(Outcome, reason, setReason, sampleText),
        FIELD(Ended, id, setId, sampleText),
        FIELD(Ended, end, setEnd, TavoAttentionEnd::ActedOn),
        FIELD(Ended, action, setAction, sampleText),
        FIELD(Ended, shownUntil, setShownUntil, qint64(1) << 40),
        FIELD(Ended, heardUntil, setHeardUntil, qint64(1) << 40),
        FIELD(DoNotDisturb, on, setOn, true),
        FIELD(DoNotDisturb, until, setUntil, qint64(1) << 40),
        FIELD(DoNotDisturb, inhibitions, setInhibitions,
              (TavoList<Inhibition>{Inhibition().setReason(sampleText)})),
        FIELD(Inhibition, id, setId, sampleText),
        FIELD(Inhibition, on, setOn, true),
        FIELD(Inhibition, application, setApplication, sampleText),
        FIELD(Inhibition, reason, setReason, sampleText),
        FIELD(History, kept, setKept, true),
        FIELD(History, file, setFile, sampleText),
        FIELD(History, reason, setReason, sampleText),
        FIELD(History, changes, setChanges, qint64(1) << 40),
        FIELD(Rule, name, setName, sampleText),
        FIELD(Rules, file, setFile, sampleText),
        FIELD_KEY(Rules, isRead, setRead, "read", true),
        FIELD(Rules, error, setError, sampleText),
        FIELD(Verdict, rule, setRule, sampleText),
        FIELD(Verdict, applies, setApplies, true),
        FIELD(Trial, verdicts, setVerdicts, (TavoList<Verdict>{Verdict().setRule(sampleText)})),
        FIELD(Trial, shown, setShown, true),
        FIELD(Trial, sounding, setSounding, true),
        FIELD(Trial, spoken, setSpoken, true),
        FIELD(Trial, priority, setPriority, TavoNotificationItemPriority::High),
        FIELD(Trial, timeout, setTimeout, 5000),
        FIELD(Query, before, setBefore, qint64(1) << 40),
        FIELD(Query, limit, setLimit, 5000),
        FIELD(Query, search, setSearch, sampleText),
        FIELD(Query, source, setSource, sampleText),
        FIELD(Record, number, setNumber, qint64(1) << 40),
        FIELD(Record, id, setId, sampleText),
        FIELD(Record, time, setTime, qint64(1) << 40),
        FIELD(Record, endTime, setEndTime, qint64(1) << 40),
        FIELD(Record, source, setSource, sampleText),
        FIELD(Record, application, setApplication, sampleText),
        FIELD(Record, category, setCategory, sampleText),
        FIELD(Record, priority, setPriority, TavoNotificationItemPriority::High),
        FIELD(Record, title, setTitle, sampleText),
        FIELD(Record, text, setText, sampleText),
        FIELD(Record, state, setState, TavoAttentionState::Silenced),
        FIELD(Page, records, setRecords, (TavoList<Record>{Record().setTitle(sampleText)})),
    };
}

std::vector<const RecordField *> serviceFields()
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
        FIELD(Register, moduleName, setModuleName, sampleText),
        FIELD(Register, revokeResourcesPath, setRevokeResourcesPath, samplePath),
        FIELD(Register, postRevokeResourcesPath, setPostRevokeResourcesPath, samplePath),
        FIELD(Request, moduleName, setModuleName, sampleText),
        FIELD(Request, resource, setResource, TavoPowerManagerResources::Audio),
        FIELD(Request, action, setAction, TavoPowerModuleActions::Release),
        FIELD(Revoke, messageType, setMessageType, TavoPowerManagerRevokeMessageType::PostRevoked),
        FIELD(Revoke, revokeResources, setRevokeResources,
              (Resources{TavoPowerManagerResources::Audio, TavoPowerManagerResources::Enum(77)})),
        FIELD(Holders, resource, setResource, TavoPowerManagerResources::Network),
        FIELD(Holders, holders, setHolders, (Names{sampleText, QStringLiteral("other")})),
        FIELD(TavoPowerManagerState, standby, setStandby, true),
        FIELD(TavoPowerManagerState, modules, setModules, (Names{sampleText})),
        FIELD(TavoPowerManagerState, resources, setResources,
              (TavoList<Holders>{Holders().setHolders(Names{sampleText})})),
        FIELD(Ducking, duckAudio, setDuckAudio, true),
        FIELD(Ducking, requester, setRequester, sampleText),
        FIELD(TavoPlayerAudioDevice, device, setDevice, sampleText),
        FIELD(Main, playing, setPlaying, true),
        FIELD(Main, source, setSource, sampleText),
        FIELD(Main, volume, setVolume, 0.1),
        FIELD(Main, ducked, setDucked, true),
        FIELD(Main, requesters, setRequesters, (Names{sampleText})),
        FIELD(Main, error, setError, sampleText),
        FIELD(TavoRoles, type, setType, TavoRolesType::Text),
        FIELD(TavoRoles, title, setTitle, sampleTranslation),
        FIELD(TavoRoles, path, setPath, samplePath),
        FIELD(TavoRoles, application, setApplication, sampleText),
        FIELD(TavoRoles, desktopEntry, setDesktopEntry, sampleText),
        FIELD(TavoRoles, icon, setIcon, sampleText),
        FIELD(TavoRoles, category, setCategory, sampleText),
        FIELD(TavoRoles, image, setImage, TavoImage().setSource(sampleText)),
        FIELD(TavoRoles, markup, setMarkup, sampleText),
        FIELD(TavoRoles, value, setValue, 55),
        FIELD_KEY(TavoRoles, isDefault, setDefault, "default", true),
        FIELD(TavoImage, source, setSource, sampleText),
        FIELD(TavoImage, width, setWidth, 256),
        FIELD(TavoImage, height, setHeight, 1),
        FIELD_KEY(TavoRoles, isTransient, setTransient, "transient", true),
        FIELD(TavoRowsRoles, type, setType,
              (RowsTypes{TavoRowsRolesType::Title, TavoRowsRolesType::Path})),
    };
}

std::vector<const RecordField *> valueFields()
{
    return {
        FIELD_KEY(TavoValue, bool_, setBool_, "bool", true),
        FIELD_KEY(TavoValue, int_, setInt_, "int", 2147483647),
        FIELD_KEY(TavoValue, double_, setDouble_, "double", -0.1),
        FIELD_KEY(TavoValue, string_, setString_, "string", sampleText),
        FIELD(TavoValue, path, setPath, samplePath),
        FIELD(TavoValue, notificationPlayerItem, setNotificationPlayerItem,
              TavoNotificationPlayerItem()
                  .setId(sampleText)
                  .setType(TavoNotificationPlayerItemType::Fake)
                  .setPlaybackResponsePath(samplePath)),
        FIELD(TavoValue, notificationPlayerResponse, setNotificationPlayerResponse,
              TavoNotificationPlayerResponse()
                  .setId(sampleText)
                  .setType(TavoNotificationPlayerResponseType::Started)),
        FIELD(TavoValue, notificationDisplayItem, setNotificationDisplayItem,
              TavoNotificationDisplayItem().setMessage(sampleTranslation).setTimeout(5000)),
        FIELD(TavoValue, displayCurrent, setDisplayCurrent,
              TavoNotificationDisplayCurrent().setPath(samplePath).setWaiting(3)),
        FIELD(TavoValue, displayEnded, setDisplayEnded,
              TavoNotificationDisplayEnded().setPath(samplePath).setNumber(7)),
        FIELD(TavoValue, attentionItem, setAttentionItem, TavoAttentionItem().setId(sampleText)),
        FIELD(TavoValue, attentionOutcome, setAttentionOutcome,
              TavoAttentionOutcome().setId(sampleText)),
        FIELD(TavoValue, attentionEnded, setAttentionEnded, TavoAttentionEnded().setNumber(7)),
        FIELD(TavoValue, attentionDoNotDisturb, setAttentionDoNotDisturb,
              TavoAttentionDoNotDisturb().setOn(true)),
        FIELD(TavoValue, attentionInhibition, setAttentionInhibition,
              TavoAttentionInhibition().setId(sampleText)),
        FIELD(TavoValue, attentionHistory, setAttentionHistory,
              TavoAttentionHistory().setFile(sampleText)),
        FIELD(TavoValue, attentionRules, setAttentionRules,
              TavoAttentionRules().setFile(sampleText)),
        FIELD(TavoValue, attentionTrial, setAttentionTrial, TavoAttentionTrial().setShown(true)),
        FIELD(TavoValue, attentionQuery, setAttentionQuery,
              TavoAttentionQuery().setSearch(sampleText)),
        FIELD(TavoValue, attentionPage, setAttentionPage, TavoAttentionPage().setNext(7)),
        FIELD(TavoValue, mainAudioState, setMainAudioState,
              TavoPlayerMainAudioState().setSource(sampleText).setVolume(0.5)),
        FIELD(TavoValue, powerManagerState, setPowerManagerState,
              TavoPowerManagerState().setModules({sampleText})),
        FIELD(TavoValue, audioDevice, setAudioDevice,
              TavoPlayerAudioDevice().setDevice(sampleText)),
    };
}
} // namespace

RecordField::RecordField(const char *record, const char *key, const QVariantList &unsuitable)
    : name(std::string(record) + '.' + key)
    , key(QString::fromLatin1(key))
    , unsuitable(unsuitable)
{
}

const std::vector<const RecordField *> &recordFields()
{
    // The fields stay until the program ends.
    static const auto *const s_all = [] {
        auto *fields = new std::vector<const RecordField *>(notificationFields());
        for (const auto &more : {attentionFields(), serviceFields(), valueFields()}) {
            fields->insert(fields->end(), more.begin(), more.end());
        }
        return fields;
    }();
    return *s_all;
}
