// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "AttentionWorker.h"

#include "AlarmClock.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Attention");

/// Of open notifications. What clients on a bus open is limited there.
constexpr int maxOpen = 20000;

/// And from one user, so that no source keeps others from opening theirs.
constexpr int maxOpenOfSource = 5000;

// One user can fill at most a tenth of the history in an hour.
constexpr int userShare = 10;
constexpr int userPeriodMs = 3'600'000;

/// Of the messages about floods.
constexpr int maxFloodMessages = 20;
constexpr int floodMessageMs = 60000;

/// Of one flood, so that it does not push everything else out of the history.
constexpr int maxRememberedOfFlood = 100;

const QString tooMany = QStringLiteral("its source has sent too many");

CMError error(const TrString &message)
{
    return {QStringLiteral("Attention"), message};
}

/// Of the names of programs and the like, in characters. They are kept to count notifications.
constexpr int maxNameLength = 256;

/// Of the titles that decisions depend on.
constexpr int maxTitleLength = 1000;

AttentionItem itemOf(const CMSetDataRequest &request)
{
    AttentionItem item = attentionItemIn(request.value());
    if (item.source.isEmpty()) {
        item.source = item.application;
    }
    for (QString *name : {&item.source, &item.application, &item.category, &item.group}) {
        if (name->size() > maxNameLength) {
            name->truncate(maxNameLength);
        }
    }
    return item;
}

/// The program's name for people.
QString programOf(const AttentionItem &item)
{
    return item.application.isEmpty() ? item.source : item.application;
}

bool isEmpty(const AttentionItem &item)
{
    return item.title.isEmpty() && item.text.isEmpty() && item.path.isEmpty() &&
           item.sound.isEmpty() && !item.soundFollows && item.speech.isEmpty();
}

AttentionInput inputOf(const AttentionItem &item)
{
    AttentionInput input;
    input.user = item.user;
    input.source = item.source;
    input.category = item.category;
    input.title = item.title.toString().left(maxTitleLength);
    input.text = item.text.toString();
    input.priority = item.priority;
    input.time = AlarmClock::now();
    return input;
}

TavoList<QString> namesOf(const Rules &rules, const std::vector<std::size_t> &indexes)
{
    TavoList<QString> names;
    for (const std::size_t index : indexes) {
        names.append(rules.list()[index].name());
    }
    return names;
}
} // namespace

TAVO_MODULE_EXPORT void *worker_create(const char *name, void *config)
{
    LOG4CPLUS_DEBUG(logger, "Creating worker " << (name != nullptr ? name : ""));
    CMWorker *worker = new AttentionWorker(*static_cast<const QVariantHash *>(config));
    return worker;
}

AttentionWorker::AttentionWorker(const QVariantHash &config)
    : AttentionWorker(config, AttentionConfiguration(config))
{
}

AttentionWorker::AttentionWorker(const QVariantHash &config,
                                 const AttentionConfiguration &configuration)
    : CMNodesWorker(config, QStringLiteral("Attention"))
    , m_entrance(std::make_shared<Entrance>(this))
    , m_rulesNode(new RulesNode(nodes(), configuration.settingsFiles.first()))
    , m_quietTimes(nodes(), *m_entrance, configuration.quietFile)
    , m_history(configuration.history)
    , m_historyNodes(nodes(), m_history, configuration.history.file)
    , m_speech(configuration.speech)
    , m_items(nodes(), *m_entrance, m_history, m_speech)
{
    m_clock.start();
    m_usualEntryBytes =
        std::max(configuration.history.maxBytes / configuration.history.maxEntries, qint64(1));
    m_userRates.setLimit({std::max(configuration.history.maxEntries / userShare, 1), userPeriodMs});
    watchSettings(configuration.settingsFiles);
    tavoConnect(&m_quietTimes, &QuietTimes::ended, this, &AttentionWorker::on_quietTimes_ended);
    m_quietTimes.start();
    tavoConnect(&m_floods, &Floods::over, this, &AttentionWorker::on_floods_over);
    tavoConnect(&m_history, &History::leftOpen, this, &AttentionWorker::on_history_leftOpen);
    const auto bind = [this](const CMPath &path, auto slot, const Entrance::AtOnce &atOnce = {}) {
        m_entrance->bind(nodes(), path, this, slot, atOnce);
    };
    bind(TavoAttentionNotifyPath(), &AttentionWorker::on_notify_activated,
         [this](const CMSetDataRequest &request) { return notifyAtOnce(request); });
    bind(TavoAttentionReplacePath(), &AttentionWorker::on_replace_activated);
    bind(TavoAttentionClosePath(), &AttentionWorker::on_close_activated);
    bind(TavoAttentionSoundPath(), &AttentionWorker::on_sound_activated);
    bind(TavoAttentionTryPath(), &AttentionWorker::on_try_activated);
}

AttentionWorker::~AttentionWorker()
{
    m_entrance->close();
}

void AttentionWorker::watchSettings(const QStringList &files)
{
    for (const QString &name : files) {
        m_settingsFiles.push_back(std::make_unique<WatchedFile>(name));
        const WatchedFile *file = m_settingsFiles.back().get();
        tavoConnect(file, &WatchedFile::changed, this,
                    [this, file] { on_settingsFile_changed(*file); });
        tavoConnect(file, &WatchedFile::vanished, this,
                    [this, file] { on_settingsFile_vanished(*file); });
    }
    if (const WatchedFile *file = settingsFile()) {
        readSettings(*file);
    }
}

const WatchedFile *AttentionWorker::settingsFile() const
{
    for (const auto &file : m_settingsFiles) {
        if (!file->content().isEmpty()) {
            return file.get();
        }
    }
    return nullptr;
}

void AttentionWorker::on_settingsFile_changed(const WatchedFile &file)
{
    if (&file == settingsFile()) {
        readSettings(file);
    }
}

void AttentionWorker::on_settingsFile_vanished(const WatchedFile &file)
{
    if (&file == settingsFile()) {
        LOG4CPLUS_WARN(logger, file.name() << " is missing, empty or can't be read; the previous"
                                              " settings stay until the host is started again");
    }
}

/// People write the file, also while the device runs: a mistake must not keep notifications from them.
void AttentionWorker::readSettings(const WatchedFile &file)
{
    AttentionSettings settings;
    try {
        settings = AttentionSettings::fromJson(file.content(), file.name());
    } catch (const std::runtime_error &error) {
        LOG4CPLUS_ERROR(logger, error.what()
                                    << (m_hasSettings ? "; the previous settings stay"
                                                      : "; there are no rules and no"
                                                        " do-not-disturb until it is mended"));
        m_rulesNode->setError(file.name(), QString::fromUtf8(error.what()));
        return;
    }
    const Entrance::Hold held = m_entrance->hold();
    m_settings = settings;
    m_hasSettings = true;
    QStringList names;
    for (const Rule &rule : m_settings.rules.list()) {
        names.append(rule.name());
    }
    m_rulesNode->setRules(file.name(), names);
    m_rates.setLimit(m_settings.rate);
    m_floods.setPeriod(m_settings.rate.periodMs);
    m_speech.setCommands(m_settings.speechCommand, m_settings.speechLanguages);
    m_items.setGroupFrom(m_settings.groupFrom);
    m_quietTimes.setSettings(m_settings.doNotDisturb);
    LOG4CPLUS_INFO(logger, "Read " << file.name() << ", rules: " << names.size());
}

Decision AttentionWorker::decide(const AttentionItem &item)
{
    const AttentionInput input = inputOf(item);
    Decision decision = Decision::of(input, m_settings.rules, m_quietTimes.doNotDisturb());
    remember(input, decision);
    return decision;
}

void AttentionWorker::remember(const AttentionInput &input, const Decision &decision)
{
    m_rulesNode->count(decision.rules);
    m_quietTimes.doNotDisturb().remember(input);
}

bool AttentionWorker::isOverRate(SourceRates &rates, const AttentionItem &item,
                                 const Decision &decision) const
{
    const bool isUrgent = decision.priority >= TavoNotificationItemPriority::Urgent;
    return !isUrgent && !rates.take(item.source, m_clock.elapsed());
}

void AttentionWorker::limitRate(const AttentionItem &item, Decision &decision)
{
    if (!isOverRate(m_rates, item, decision)) {
        return;
    }
    const bool wasKept = decision.isKept();
    const int count = m_floods.count(item.source, programOf(item), !wasKept);
    decision.isRemembered = count <= maxRememberedOfFlood;
    if (!wasKept) {
        decision.silence(tooMany);
    }
}

int AttentionWorker::shareOf(const AttentionItem &item, const Decision &decision) const
{
    qint64 bytes = 0;
    const auto add = [&bytes](const QString &text, int maxLength) {
        bytes += text.left(maxLength).toUtf8().size();
    };
    for (const QString &name : {item.id, item.source, item.application, item.category,
                                decision.treatment.group.value_or(item.group)}) {
        add(name, History::maxNameLength);
    }
    if (!item.isTransient && !decision.treatment.isPrivate.value_or(false)) {
        add(item.title.toString(), History::maxTitleLength);
        add(item.text.isEmpty() ? item.speech : item.text.toString(), History::maxTextLength);
    }
    return 1 + int(2 * bytes / m_usualEntryBytes);
}

void AttentionWorker::limitMemory(const AttentionItem &item, Decision &decision)
{
    if (!decision.isRemembered || item.user.isEmpty() ||
        m_userRates.take(item.user, m_clock.elapsed(), shareOf(item, decision))) {
        return;
    }
    decision.isRemembered = false;
    if (!m_forgottenUsers.contains(item.user)) {
        m_forgottenUsers.insert(item.user);
        LOG4CPLUS_WARN(logger, "The user " << item.user
                                           << " sends too many notifications: some are left out"
                                              " of the history");
    }
}

void AttentionWorker::on_notify_activated(const CMSetDataRequest &request)
{
    AttentionItem item = itemOf(request);
    if (const TrString reason = refusal(item); !reason.isEmpty()) {
        request.reply().setError(error(reason));
        return;
    }
    if (item.id.isEmpty()) {
        item.id = tavoGenerateUuid();
    }
    Decision decision = decide(item);
    limitRate(item, decision);
    limitMemory(item, decision);
    if (decision.isQuiet) {
        m_quietTimes.countMissed(item.user, programOf(item), 1);
    }
    reply(request, m_items.open(item, decision), decision);
}

bool AttentionWorker::notifyAtOnce(const CMSetDataRequest &request)
{
    const AttentionItem item = itemOf(request);
    if (item.id.isEmpty() || !refusal(item).isEmpty()) {
        return false;
    }
    const AttentionInput input = inputOf(item);
    auto decision = Decision::atOnce(input, m_settings.rules, m_quietTimes.doNotDisturb());
    if (!decision || decision->isQuiet || !m_items.opensAtOnce(item, *decision) ||
        isOverRate(m_rates, item, *decision)) {
        return false;
    }
    remember(input, *decision);
    limitMemory(item, *decision);
    reply(request, m_items.open(item, *decision), *decision);
    return true;
}

TrString AttentionWorker::refusal(const AttentionItem &item) const
{
    if (isEmpty(item)) {
        return TAVO_TR("There is nothing to show or to play");
    }
    if (m_items.isOpen(item.id) || m_items.isOnDisplay(item.id)) {
        return TAVO_TR("A notification with this id is open");
    }
    if (m_items.count() >= maxOpen || m_items.countLike(item) >= maxOpenOfSource) {
        return TAVO_TR("There are too many notifications");
    }
    return {};
}

void AttentionWorker::reply(const CMSetDataRequest &request, AttentionOutcome outcome,
                            const Decision &decision) const
{
    outcome.rules = namesOf(m_settings.rules, decision.rules);
    request.reply().setValue(isAttentionItem(request.value())
                                 ? QVariant::fromValue(outcome)
                                 : TavoValue().setAttentionOutcome(outcome.record()).__variant());
}

void AttentionWorker::on_replace_activated(const CMSetDataRequest &request)
{
    const AttentionItem item = itemOf(request);
    if (!m_items.isOpen(item.id)) {
        request.reply().setError(error(TAVO_TR("There is no such notification")));
        return;
    }
    // Only modules say that something gives way. A request without a user is a module's, or of the host's own user.
    if (!item.user.isEmpty() && !item.givesWay && item.user != m_items.userOf(item.id)) {
        request.reply().setError(error(TAVO_TR("The notification is another user's")));
        return;
    }
    const Decision decision = item.givesWay ? m_items.givingWay(item) : decide(item);
    reply(request, m_items.replace(item, decision), decision);
}

void AttentionWorker::on_close_activated(const CMSetDataRequest &request)
{
    const TavoValue value(request.value().toHash());
    const TavoAttentionEnded ended = value.attentionEnded();
    const QString id = ended.id().isEmpty() ? value.string_() : ended.id();
    if (!m_items.isOpen(id)) {
        request.reply().setError(error(TAVO_TR("There is no such notification")));
        return;
    }
    const auto end =
        ended.end() == TavoAttentionEnd::Unknown ? TavoAttentionEnd::Closed : ended.end();
    m_items.close(id, end, ended.action());
    request.reply().setValue(QVariant());
}

void AttentionWorker::on_sound_activated(const CMSetDataRequest &request)
{
    const TavoValue value(request.value().toHash());
    if (value.fields().contains(QStringLiteral("bool"))) {
        m_items.setAwaitsSound(value.string_(), value.bool_());
        request.reply().setValue(QVariant());
        return;
    }
    const bool isLimited = value.fields().contains(QStringLiteral("int"));
    const int maxPriority = isLimited ? value.int_() : std::numeric_limits<int>::max();
    m_items.play(value.string_(), value.notificationPlayerItem(), maxPriority, request.reply());
}

void AttentionWorker::on_try_activated(const CMSetDataRequest &request)
{
    const AttentionItem item = itemOf(request);
    const AttentionInput input = inputOf(item);
    Decision decision = Decision::of(input, m_settings.rules, m_quietTimes.doNotDisturb());
    SourceRates rates = m_rates; // a trial counts nothing
    if (isOverRate(rates, item, decision) && !decision.isKept()) {
        decision.silence(tooMany);
    }
    TavoList<TavoAttentionVerdict> verdicts;
    auto applied = decision.rules.begin();
    for (std::size_t index = 0; index < m_settings.rules.list().size(); ++index) {
        const Rule &rule = m_settings.rules.list()[index];
        const bool applies = applied != decision.rules.end() && *applied == index;
        QString reason = rule.mismatch(input);
        if (applies) {
            ++applied;
            reason = rule.treatment().toString();
        } else if (reason.isEmpty()) {
            reason = QStringLiteral("an earlier rule applies");
        }
        verdicts.append(
            TavoAttentionVerdict().setRule(rule.name()).setApplies(applies).setReason(reason));
    }
    const QString speech = OpenItems::spokenText(item, decision);
    const QString obstacle =
        speech.isEmpty() ? QString() : m_speech.obstacle(speech, item.language);
    if (!obstacle.isEmpty()) {
        decision.reason += decision.reason.isEmpty() ? obstacle : QStringLiteral("; ") + obstacle;
    }
    request.reply().setValue(
        TavoValue()
            .setAttentionTrial(TavoAttentionTrial()
                                   .setVerdicts(verdicts)
                                   .setShown(decision.isShown)
                                   .setSounding(decision.isHeard)
                                   .setSpoken(!speech.isEmpty() && obstacle.isEmpty())
                                   .setPriority(decision.priority)
                                   .setTimeout(decision.timeout(item.timeout))
                                   .setReason(decision.reason))
            .__variant());
}

void AttentionWorker::on_floods_over(QString source, QString application, int count)
{
    const Entrance::Hold held = m_entrance->hold();
    if (m_quietTimes.isOn()) {
        m_quietTimes.countMissed({}, application, count);
        return;
    }
    for (auto other = m_floodMessages.begin(); other != m_floodMessages.end();) {
        other = isOwn(other->id) ? std::next(other) : m_floodMessages.erase(other);
    }
    if (m_floodMessages.size() >= maxFloodMessages && !m_floodMessages.contains(source)) {
        source.clear();
        application.clear();
    }
    FloodMessage &message = m_floodMessages[source];
    if (!isOwn(message.id)) {
        message = {tavoGenerateUuid(), 0};
    }
    message.count += count;
    QString title = QStringLiteral("%1 more").arg(message.count);
    if (!application.isEmpty()) {
        title += QStringLiteral(" of ") + application;
    }
    AttentionItem item;
    item.id = message.id;
    item.title = title;
    item.text = TAVO_TR("They came too fast to be shown.");
    item.application = application;
    item.source = source;
    item.timeout = floodMessageMs;
    showOwn(item, {});
}

void AttentionWorker::on_quietTimes_ended(const QMap<QString, int> &missed)
{
    if (missed.isEmpty() || !m_settings.doNotDisturb.hasSummary) {
        return;
    }
    if (!isOwn(m_summaryId)) {
        m_summaryId = tavoGenerateUuid();
        m_summary.clear();
    }
    for (auto program = missed.begin(); program != missed.end(); ++program) {
        QuietTimes::addMissed(m_summary, program.key(), program.value());
    }
    QStringList lines;
    for (auto program = m_summary.cbegin(); program != m_summary.cend(); ++program) {
        lines.append(QStringLiteral("%1: %2").arg(program.key()).arg(program.value()));
    }
    AttentionItem item;
    item.id = m_summaryId;
    item.title = TAVO_TR("While you were not to be disturbed");
    item.text = lines.join(QLatin1Char('\n'));
    Decision decision;
    decision.isRemembered = false; // what it counts is
    showOwn(item, decision);
}

/// Others may take the id of one that has ended.
bool AttentionWorker::isOwn(const QString &id) const
{
    return m_items.isOpen(id) && m_items.userOf(id).isEmpty();
}

void AttentionWorker::showOwn(const AttentionItem &item, Decision decision)
{
    decision.priority = TavoNotificationItemPriority::Low;
    decision.treatment.groupFrom = 0;
    if (m_items.isOpen(item.id)) {
        m_items.replace(item, decision);
    } else {
        m_items.open(item, decision);
    }
}

void AttentionWorker::on_history_leftOpen(const QVector<HistoryEntry> &entries)
{
    const Entrance::Hold held = m_entrance->hold();
    for (const HistoryEntry &entry : entries) {
        m_items.openAgain(entry);
    }
}
