// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ClientLimits.h"
#include <core/records/enumerations.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <unordered_map>
#include <vector>

/// Counts what each client holds, by kind, against the limits of one client and of all together.
///
/// Owned by Clients. A client is known by its unique name from its first request until it leaves,
/// and by its user once the bus has named it. Charges that outlive their client count for its user.
///
/// When a total is used up, charges are given up to make room, so that nobody can use up what
/// others need:
/// - They are taken from the user that holds most, if this is more than the asking client's user
///   would then hold.
/// - From this user, first what clients have left behind is taken, except for a small part of the
///   total.
/// - Then charges are taken from the client that holds most, if this is more than the asking client
///   would hold.
/// - If that makes no room for something urgent, something that is not urgent is taken from
///   the same user.
/// From one client, the least urgent is taken first, and the oldest of these.
class Quotas
{
    struct Account;
    struct Item;

public:
    enum Kind {
        OpenNotifications,
        Sounds,
        Inboxes,
        Subscriptions,
        Inhibitions,
        RequestBytes,
        UnreadBytes,
        KeptBytes, ///< stored bytes of what is never given up
        StoredBytes
    };
    using Priority = TavoNotificationItemPriority::Enum;

    /// The cost of something.
    struct Cost
    {
        Kind kind;
        std::size_t amount = 1;
        std::size_t storedBytes = 0;
        Priority priority = TavoNotificationItemPriority::Normal;
    };

    /// The number of a user. Nothing while the bus has not told it.
    using UserId = std::optional<std::uint32_t>;

    /// Gives up what was charged, because another client needs the room. Called when the charge no
    /// longer counts.
    using Release = std::function<void()>;

    /// Called when the client has left and what was charged stays.
    using Left = std::function<void()>;

    /// Something that a client holds. It counts until it is destroyed, and must not outlive the quotas.
    class Charge
    {
    public:
        Charge();
        Charge(Charge &&other) noexcept;
        Charge &operator=(Charge &&other) noexcept;
        ~Charge();

        /// Empty once the client has left.
        const std::string &client() const;

        /// Whose it is, also after the client has left. Nothing until the bus has told.
        UserId user() const;

        /// Whether it no longer counts, because another client needed the room.
        bool isGivenUp() const;

    private:
        friend class Quotas;
        explicit Charge(std::unique_ptr<Item> item);

        std::unique_ptr<Item> m_item; ///< null once it is moved from
    };

    /// Estimates the memory for something whose strings took this many bytes in a message: two
    /// bytes for each character, and a fixed overhead.
    static constexpr std::size_t storedBytes(std::size_t messageBytes)
    {
        return 2 * messageBytes + 2048;
    }

    explicit Quotas(const ClientLimits &limits);
    ~Quotas();

    /// What is held already stays.
    void setLimits(const ClientLimits &limits);

    /// Counts a request. False for a client that sends too many in too short a time: then it may send
    /// them by the hundred thousand, so nothing is thrown.
    bool countRequest(const std::string &client);

    /// Counts something that the client will hold. Without a release it is never given up for others, and
    /// left is not called; its stored bytes count as KeptBytes then, which have room as hasRoom() says.
    /// Throws BusError::limitExceeded() when that would exceed a limit.
    Charge charge(const std::string &client, const Cost &cost, Release release = {},
                  Left left = {});

    /// Changes the stored bytes and the priority of a charge that counts. Throws BusError::limitExceeded() as
    /// charge() does, and then changes nothing.
    void change(Charge &charge, std::size_t storedBytes, Priority priority);

    /// Whether there is room for this much more of something that can't be given up. The client
    /// must leave as much of the total free as it then holds, and its user a quarter of what other
    /// users leave. There is always room for freeBytes.
    bool hasRoom(const std::string &client, Kind kind, std::size_t amount) const;

    // For amounts that change with each message. The client must be known.
    void add(const std::string &client, Kind kind, std::size_t amount);
    void subtract(const std::string &client, Kind kind, std::size_t amount);

    /// Held by each client even when others have used up a total.
    static constexpr std::size_t freeBytes = 1 << 14;

    using Seconds = std::chrono::duration<double>;

    /// What time is spent on.
    enum Work {
        Handling,
        Sending,  ///< what others may have caused. It counts for sendingTurnOf() only.
        Measuring ///< large calls
    };

    /// Counts time that was spent on a client. It is forgotten by half in each second.
    void addTime(const std::string &client, Seconds time, Work work = Handling);

    /// The time that was spent on handling for the client's user of late.
    Seconds timeOfUser(const std::string &client);

    /// The time that measuring took of late for the client's user; while that is unknown, for the client.
    Seconds measuringTimeOf(const std::string &client);

    /// Whether large calls of the client may be measured: its user may take half of what the other users leave of
    /// this much time, and always a little. While its user is unknown, the client has that little only.
    bool hasTimeToMeasure(const std::string &client, Seconds ofAll);

    bool hasManyUsers() const { return m_users.size() > 1; }

    /// The time spent on a client's user, and on the client including what comes next: the least is
    /// next.
    struct Turn
    {
        double user;
        double client;

        bool operator<(const Turn &other) const
        {
            return user != other.user ? user < other.user : client < other.client;
        }
    };
    Turn turnOf(const std::string &client, Seconds next) const;
    Turn sendingTurnOf(const std::string &client) const;

    /// The client runs as this user. What it holds counts for the user from now on.
    void setUser(const std::string &client, std::uint32_t user);

    /// The user of a client. Nothing until the bus has told.
    UserId userOf(const std::string &client) const;

    bool knows(const std::string &client) const { return find(client) != nullptr; }
    std::size_t held(const std::string &client, Kind kind) const;
    std::size_t total(Kind kind) const { return m_totals[kind]; } ///< of all clients
    std::vector<std::string> clients() const;

    /// The client has left the bus. Its name may belong to another client from now on.
    void forget(const std::string &client);

private:
    static constexpr std::size_t kinds = StoredBytes + 1;
    using Clock = std::chrono::steady_clock;
    using Amounts = std::array<std::size_t, kinds>;

    struct Limit
    {
        std::size_t perClient;
        std::size_t total;
        const char *what;
    };

    /// Time that was spent on each work; see m_timeUnit.
    using Times = std::array<double, Measuring + 1>;

    struct User
    {
        UserId id;
        Times times{};
        Amounts held{};
        std::shared_ptr<Account> left; ///< what clients have left behind
    };

    struct Account : std::enable_shared_from_this<Account>
    {
        Account(std::string name, User &owner, Amounts &all);

        void add(const Amounts &amounts);
        void subtract(const Amounts &amounts);
        Item *firstOf(Kind kind) const;

        std::string client; ///< empty once it has left
        User *user;
        Amounts &totals; ///< of all clients
        Amounts held{};
        Times times{};
        double requests = 0; ///< how many it may send at once; refilled with time
        Clock::time_point refilled;

        /// Kind, priority and number: in this order they are given up.
        using Key = std::tuple<Kind, int, std::uint64_t>;
        std::map<Key, Item *> items; ///< those that can be given up
    };

    /// The data of a charge.
    struct Item
    {
        Item(std::shared_ptr<Account> account, const Amounts &amounts);
        ~Item();

        /// Stops counting.
        void settle();
        void moveTo(const std::shared_ptr<Account> &other);

        std::shared_ptr<Account> account;
        Amounts amounts;
        Account::Key key;
        Release release; ///< empty when it can't be given up
        Left left;       ///< may be empty
    };

    Account *find(const std::string &client) const; ///< null if it is not known
    Account &account(const std::string &client);
    User &newUser(User &user);
    void check(const Account &account, Kind kind, std::size_t amount) const;
    bool hasRoom(const Account &asking, Kind kind, std::size_t amount) const;
    void makeRoom(const Account &asking, Kind kind, std::size_t amount, Priority priority);
    Item *findVictim(const Account &asking, Kind kind, std::size_t amount, Priority priority) const;
    const User &heaviestUser(const Account &asking, Kind kind, std::size_t amount) const;
    void setTimeUnit();
    Seconds seconds(double time) const { return Seconds(time / m_timeUnit); }
    template <typename Function>
    void forEachAccount(const Function &function) const;

    int m_requestsPerSecond = 0; ///< 0: no limit
    std::array<Limit, kinds> m_limits{};
    Amounts m_totals{};
    std::uint64_t m_lastNumber = 0;

    /// What a second counts in the times of accounts and users: it doubles each second, so that only the
    /// latest seconds matter.
    double m_timeUnit = 1;
    Clock::time_point m_timeUnitSet = Clock::now();
    User m_unknown;                        ///< all clients whose user is not known yet
    std::map<std::uint32_t, User> m_users; ///< by id
    std::unordered_map<std::string, std::shared_ptr<Account>> m_accounts;
    mutable Account *m_lastFound =
        nullptr; ///< of m_accounts: several look-ups in turn are for one client
};
