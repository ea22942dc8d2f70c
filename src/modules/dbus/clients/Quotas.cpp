// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Quotas.h"

#include "Refusals.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {
constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

/// A client may send this many seconds' worth of requests at once.
constexpr double burstSeconds = 2;

/// Of each client, which needs one for each thing that it does. The module for attention accepts 1,000.
constexpr std::size_t maxInhibitions = 16;
constexpr std::size_t maxTotalInhibitions = 512;

/// Far from what a double can't hold.
constexpr double maxTimeUnit = 1e30;

/// About as long as one large call takes.
constexpr std::chrono::milliseconds minMeasuring(5);

/// What clients have left behind is given up first while it is more than this part of the total (a
/// divisor).
constexpr std::size_t leftPart = 16;

/// Of the bytes stored, this part (a divisor) may be taken besides by what is never given up.
constexpr std::size_t keptPart = 4;
} // namespace

Quotas::Account::Account(std::string name, User &owner, Amounts &all)
    : client(std::move(name))
    , user(&owner)
    , totals(all)
{
}

void Quotas::Account::add(const Amounts &amounts)
{
    for (std::size_t kind = 0; kind < kinds; ++kind) {
        held[kind] += amounts[kind];
        user->held[kind] += amounts[kind];
        totals[kind] += amounts[kind];
    }
}

void Quotas::Account::subtract(const Amounts &amounts)
{
    for (std::size_t kind = 0; kind < kinds; ++kind) {
        held[kind] -= amounts[kind];
        user->held[kind] -= amounts[kind];
        totals[kind] -= amounts[kind];
    }
}

Quotas::Item *Quotas::Account::firstOf(Kind kind) const
{
    if (kind == StoredBytes) {
        const auto first = std::find_if(items.begin(), items.end(), [](const auto &item) {
            return item.second->amounts[StoredBytes] > 0;
        });
        return first == items.end() ? nullptr : first->second;
    }
    const auto first = items.lower_bound({kind, std::numeric_limits<int>::min(), 0});
    const bool isOfKind = first != items.end() && std::get<Kind>(first->first) == kind;
    return isOfKind ? first->second : nullptr;
}

Quotas::Item::Item(std::shared_ptr<Account> owner, const Amounts &counted)
    : account(std::move(owner))
    , amounts(counted)
{
    account->add(amounts);
}

Quotas::Item::~Item()
{
    settle();
}

void Quotas::Item::settle()
{
    account->subtract(std::exchange(amounts, {}));
    if (release) {
        account->items.erase(key);
        release = {};
    }
}

void Quotas::Item::moveTo(const std::shared_ptr<Account> &other)
{
    account->subtract(amounts);
    account = other;
    account->add(amounts);
    account->items.emplace(key, this);
}

Quotas::Charge::Charge() = default;
Quotas::Charge::Charge(Charge &&other) noexcept = default;
Quotas::Charge &Quotas::Charge::operator=(Charge &&other) noexcept = default;
Quotas::Charge::~Charge() = default;

Quotas::Charge::Charge(std::unique_ptr<Item> item)
    : m_item(std::move(item))
{
}

const std::string &Quotas::Charge::client() const
{
    static const std::string nobody;
    return m_item ? m_item->account->client : nobody;
}

Quotas::UserId Quotas::Charge::user() const
{
    return m_item ? m_item->account->user->id : std::nullopt;
}

bool Quotas::Charge::isGivenUp() const
{
    return m_item && m_item->amounts == Amounts{};
}

Quotas::Quotas(const ClientLimits &limits)
{
    setLimits(limits);
    newUser(m_unknown);
}

void Quotas::setLimits(const ClientLimits &limits)
{
    m_requestsPerSecond = limits.requestsPerSecond;
    m_limits = {
        {{std::size_t(limits.openNotifications), std::size_t(limits.totalOpenNotifications),
          "notifications open"},
         {std::size_t(limits.sounds), std::size_t(limits.totalSounds), "sounds"},
         {std::size_t(limits.inboxes), unlimited, "inboxes"},
         {std::size_t(limits.subscriptions), unlimited, "subscriptions"},
         {maxInhibitions, maxTotalInhibitions, "inhibitions"},
         {unlimited, std::size_t(limits.totalRequestBytes),
          "bytes of requests that wait for their replies"},
         {unlimited, std::size_t(limits.totalUnreadBytes), "bytes unread"},
         {unlimited, std::size_t(limits.totalStoredBytes) / keptPart,
          "bytes of subscriptions and inboxes"},
         {std::size_t(limits.storedBytes), std::size_t(limits.totalStoredBytes), "bytes stored"}}};
}

Quotas::~Quotas() = default;

Quotas::User &Quotas::newUser(User &user)
{
    user.left = std::make_shared<Account>(std::string(), user, m_totals);
    return user;
}

Quotas::Account *Quotas::find(const std::string &client) const
{
    if (m_lastFound == nullptr || m_lastFound->client != client) {
        const auto known = m_accounts.find(client);
        m_lastFound = known == m_accounts.end() ? nullptr : known->second.get();
    }
    return m_lastFound;
}

Quotas::Account &Quotas::account(const std::string &client)
{
    if (Account *known = find(client)) {
        return *known;
    }
    auto added = std::make_shared<Account>(client, m_unknown, m_totals);
    added->requests = burstSeconds * m_requestsPerSecond;
    added->refilled = Clock::now();
    return *m_accounts.emplace(client, std::move(added)).first->second;
}

bool Quotas::countRequest(const std::string &client)
{
    Account &known = account(client);
    if (m_requestsPerSecond == 0) {
        return true;
    }
    const Clock::time_point now = Clock::now();
    const std::chrono::duration<double> elapsed = now - std::exchange(known.refilled, now);
    known.requests = std::min(burstSeconds * m_requestsPerSecond,
                              known.requests + elapsed.count() * m_requestsPerSecond);
    if (known.requests < 1) {
        return false;
    }
    known.requests -= 1;
    return true;
}

Quotas::Charge Quotas::charge(const std::string &client, const Cost &cost, Release release,
                              Left left)
{
    const std::shared_ptr<Account> known = account(client).shared_from_this();
    check(*known, cost.kind, cost.amount);
    const Kind bytes = release ? StoredBytes : KeptBytes;
    check(*known, bytes, cost.storedBytes);
    makeRoom(*known, cost.kind, cost.amount, cost.priority);
    makeRoom(*known, bytes, cost.storedBytes, cost.priority);
    Amounts amounts{};
    amounts[cost.kind] += cost.amount;
    amounts[bytes] += cost.storedBytes;
    auto item = std::make_unique<Item>(known, amounts);
    if (release) {
        item->key = {cost.kind, cost.priority, ++m_lastNumber};
        item->release = std::move(release);
        item->left = std::move(left);
        known->items.emplace(item->key, item.get());
    }
    return Charge(std::move(item));
}

void Quotas::change(Charge &charge, std::size_t storedBytes, Priority priority)
{
    Q_ASSERT(!charge.isGivenUp());
    Item &item = *charge.m_item;
    const std::shared_ptr<Account> account = item.account;
    const std::size_t before = item.amounts[StoredBytes];
    const std::size_t added = storedBytes > before ? storedBytes - before : 0;
    check(*account, StoredBytes, added);
    // It can't make room for itself.
    auto listed = account->items.extract(item.key);
    try {
        makeRoom(*account, StoredBytes, added, priority);
        Amounts amounts = item.amounts;
        amounts[StoredBytes] = storedBytes;
        account->subtract(std::exchange(item.amounts, amounts));
        account->add(amounts);
        std::get<int>(item.key) = priority;
        listed.key() = item.key;
    } catch (const BusError &) {
        account->items.insert(std::move(listed));
        throw;
    }
    account->items.insert(std::move(listed));
}

void Quotas::check(const Account &account, Kind kind, std::size_t amount) const
{
    if (amount > 0 && account.held[kind] + amount > m_limits[kind].perClient) {
        throw Refusals::clientHoldsTooMuch(m_limits[kind].perClient, m_limits[kind].what);
    }
}

bool Quotas::hasRoom(const Account &asking, Kind kind, std::size_t amount) const
{
    const std::size_t own = asking.held[kind] + amount;
    const std::size_t ofUser = asking.user->held[kind];
    const std::size_t all = m_totals[kind];
    const std::size_t total = m_limits[kind].total;
    const std::size_t forUser = total - std::min(total, all - ofUser);
    return own <= freeBytes ||
           (all + amount + own <= total && ofUser + amount <= forUser - forUser / 4);
}

bool Quotas::hasRoom(const std::string &client, Kind kind, std::size_t amount) const
{
    const Account *known = find(client);
    return known == nullptr || hasRoom(*known, kind, amount);
}

void Quotas::add(const std::string &client, Kind kind, std::size_t amount)
{
    Amounts amounts{};
    amounts[kind] = amount;
    account(client).add(amounts);
}

void Quotas::subtract(const std::string &client, Kind kind, std::size_t amount)
{
    Amounts amounts{};
    amounts[kind] = amount;
    account(client).subtract(amounts);
}

void Quotas::makeRoom(const Account &asking, Kind kind, std::size_t amount, Priority priority)
{
    const Limit &limit = m_limits[kind];
    if (amount == 0 || limit.total == unlimited) {
        return;
    }
    if (limit.perClient == unlimited) {
        if (!hasRoom(asking, kind, amount)) {
            throw Refusals::allClientsHoldTooMuch(limit.total, limit.what);
        }
        return;
    }
    while (m_totals[kind] + amount > limit.total) {
        Item *victim = findVictim(asking, kind, amount, priority);
        if (victim == nullptr) {
            throw Refusals::allClientsHoldTooMuch(limit.total, limit.what);
        }
        const Release release = victim->release;
        victim->settle();
        release();
    }
}

template <typename Function>
void Quotas::forEachAccount(const Function &function) const
{
    function(*m_unknown.left);
    for (const auto &[id, user] : m_users) {
        function(*user.left);
    }
    for (const auto &[client, account] : m_accounts) {
        function(*account);
    }
}

Quotas::Item *Quotas::findVictim(const Account &asking, Kind kind, std::size_t amount,
                                 Priority priority) const
{
    const User &user = heaviestUser(asking, kind, amount);
    const std::size_t own = &user == asking.user ? asking.held[kind] + amount : 0;
    const std::size_t leftFirst = m_limits[kind].total / leftPart;
    const bool isUrgent = priority >= TavoNotificationItemPriority::Urgent;
    Item *fromHeaviest = nullptr;
    Item *lessUrgent = nullptr;
    std::size_t most = 0;
    std::size_t mostLessUrgent = 0;
    forEachAccount([&](const Account &account) {
        Item *item = account.firstOf(kind);
        if (item == nullptr) {
            return;
        }
        const bool goesFirst = account.client.empty() && account.held[kind] > leftFirst;
        const std::size_t weight = goesFirst ? unlimited : account.held[kind];
        if (account.user == &user && weight > std::max(own, most)) {
            fromHeaviest = item;
            most = weight;
        }
        const bool isLess = std::get<int>(item->key) < TavoNotificationItemPriority::Urgent;
        if (isLess && account.user == asking.user && weight > mostLessUrgent) {
            lessUrgent = item;
            mostLessUrgent = weight;
        }
    });
    return fromHeaviest == nullptr && isUrgent ? lessUrgent : fromHeaviest;
}

const Quotas::User &Quotas::heaviestUser(const Account &asking, Kind kind, std::size_t amount) const
{
    const User *heaviest = asking.user;
    std::size_t most = asking.user->held[kind] + amount;
    const auto compare = [&](const User &user) {
        if (user.held[kind] > most) {
            heaviest = &user;
            most = user.held[kind];
        }
    };
    compare(m_unknown);
    for (const auto &[id, user] : m_users) {
        compare(user);
    }
    return *heaviest;
}

void Quotas::setTimeUnit()
{
    const Clock::time_point now = Clock::now();
    m_timeUnit *= std::exp2(Seconds(now - std::exchange(m_timeUnitSet, now)).count());
    if (m_timeUnit < maxTimeUnit) {
        return;
    }
    const double unit = std::exchange(m_timeUnit, 1);
    const auto divide = [unit](Times &times) {
        for (double &time : times) {
            time /= unit;
        }
    };
    divide(m_unknown.times);
    for (auto &[id, user] : m_users) {
        divide(user.times);
    }
    for (const auto &[client, account] : m_accounts) {
        divide(account->times);
    }
}

void Quotas::addTime(const std::string &client, Seconds time, Work work)
{
    Account *known = find(client);
    if (known == nullptr) {
        return;
    }
    setTimeUnit();
    for (Times *times : {&known->times, &known->user->times}) {
        times->at(work) += time.count() * m_timeUnit;
    }
}

Quotas::Seconds Quotas::timeOfUser(const std::string &client)
{
    setTimeUnit();
    const Account *known = find(client);
    return known == nullptr ? Seconds(0) : seconds(known->user->times[Handling]);
}

Quotas::Seconds Quotas::measuringTimeOf(const std::string &client)
{
    const Account *known = find(client);
    if (known == nullptr) {
        return Seconds(0);
    }
    setTimeUnit();
    const bool hasUser = known->user->id.has_value();
    return seconds((hasUser ? known->user->times : known->times)[Measuring]);
}

bool Quotas::hasTimeToMeasure(const std::string &client, Seconds ofAll)
{
    const Seconds taken = measuringTimeOf(client);
    if (taken <= minMeasuring || !userOf(client)) {
        return taken <= minMeasuring;
    }
    Seconds left = ofAll + taken;
    for (const auto &[id, user] : m_users) {
        left -= seconds(user.times[Measuring]);
    }
    return taken <= left / 2;
}

Quotas::Turn Quotas::sendingTurnOf(const std::string &client) const
{
    const Account *known = find(client);
    const auto time = [](const Times &times) { return times[Handling] + times[Sending]; };
    return known == nullptr ? Turn{0, 0} : Turn{time(known->user->times), time(known->times)};
}

Quotas::Turn Quotas::turnOf(const std::string &client, Seconds next) const
{
    const Account *known = find(client);
    return known == nullptr ? Turn{0, 0}
                            : Turn{known->user->times[Handling],
                                   known->times[Handling] + next.count() * m_timeUnit};
}

void Quotas::setUser(const std::string &client, std::uint32_t id)
{
    Account *known = find(client);
    if (known == nullptr) {
        return;
    }
    Account &account = *known;
    const Amounts held = account.held;
    account.subtract(held);
    const auto move = [&account](double sign) {
        for (std::size_t work = 0; work < account.times.size(); ++work) {
            account.user->times[work] += sign * account.times[work];
        }
    };
    move(-1);
    const auto [user, isNew] = m_users.try_emplace(id);
    user->second.id = id;
    account.user = isNew ? &newUser(user->second) : &user->second;
    account.add(held);
    move(1);
}

Quotas::UserId Quotas::userOf(const std::string &client) const
{
    const Account *known = find(client);
    return known == nullptr ? std::nullopt : known->user->id;
}

std::size_t Quotas::held(const std::string &client, Kind kind) const
{
    const Account *known = find(client);
    return known == nullptr ? 0 : known->held[kind];
}

std::vector<std::string> Quotas::clients() const
{
    std::vector<std::string> names;
    for (const auto &[name, account] : m_accounts) {
        names.push_back(name);
    }
    return names;
}

void Quotas::forget(const std::string &client)
{
    const auto known = m_accounts.find(client);
    if (known == m_accounts.end()) {
        return;
    }
    const std::shared_ptr<Account> account = known->second;
    m_lastFound = nullptr;
    m_accounts.erase(known);
    account->client.clear();
    if (account->user == &m_unknown) {
        // These are clients of many users: the time of one that has left must not put the next ones last.
        for (std::size_t work = 0; work < account->times.size(); ++work) {
            m_unknown.times[work] -= account->times[work];
        }
    }
    for (const auto &[key, item] : std::exchange(account->items, {})) {
        item->moveTo(account->user->left);
        if (item->left) {
            item->left();
        }
    }
}
