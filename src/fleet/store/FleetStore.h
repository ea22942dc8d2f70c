// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

/// What is to be published until the broker has it.
struct OutgoingMessage
{
    qint64 number = 0; ///< given by the store
    QString topic;
    QByteArray payload;
    qint64 expires =
        0; ///< of no use then, in ms since the epoch; the largest number: of use for ever
};

/// A call that the device has received.
struct StoredCall
{
    QString id;
    QByteArray call;        ///< as it came
    QString group;          ///< by which it came; empty: to this device
    QByteArray answer;      ///< empty: it has begun, and has not been answered
    QString path;           ///< of its message; empty: it has none
    bool isOpen = false;    ///< its end is awaited
    qint64 forgetAfter = 0; ///< in ms since the epoch
};

/// What is written at once.
struct StoreChanges
{
    std::vector<StoredCall> begun; ///< remembered before they are carried out
    std::vector<StoredCall>
        answered;               ///< by their ids: answer, path and isOpen of calls that have begun
    std::vector<QString> ended; ///< ids of calls whose end is not awaited any more
    std::vector<OutgoingMessage> messages; ///< to be published

    std::vector<QString>
        known; ///< set by FleetStore::write(): ids in begun that the store had already

    bool isEmpty() const
    {
        return begun.empty() && answered.empty() && ended.empty() && messages.empty();
    }
};

/// Remembers calls and answers over restarts, so that each call is carried out once, and each answer arrives. A file
/// in which one process at a time may write. What a function has changed is in the file when it returns, but
/// for remove(). The end of the process does not undo it; a power cut may.
///
/// The functions throw SqliteError.
class FleetStore
{
public:
    static constexpr int maxOutgoing = 10000;
    static constexpr int maxOutgoingBytes = 4 << 20;
    static constexpr int maxCalls = 100000;

    /// Opens the file, or makes it. A damaged one is put aside; the reason is told by damage().
    explicit FleetStore(const QString &file);
    ~FleetStore();
    FleetStore(const FleetStore &) = delete;
    FleetStore &operator=(const FleetStore &) = delete;

    /// What was wrong with the file that was there; empty if nothing was.
    const QString &damage() const { return m_damage; }

    std::optional<StoredCall> find(const QString &id);

    /// Writes all of this or nothing, and numbers the messages. A call that the store has is left as it is.
    void write(StoreChanges &changes);

    /// Removes a message from the file with the next one that is written, or by flush().
    void remove(qint64 number);
    void flush();

    /// What is to be published after this number, the oldest first.
    std::vector<OutgoingMessage> outgoing(qint64 after, int count);

    /// Those without an answer, the oldest first.
    std::vector<StoredCall> begun();
    /// Those whose end is awaited.
    std::vector<StoredCall> open();

    /// Forgets what is no longer needed at this time.
    void tidy(qint64 now);

    /// How many messages have been given up, as too old or too many, since the start.
    qint64 dropped() const { return m_dropped; }

private:
    struct Statements;

    void openFile(const QString &file);
    void readTotals();
    template <typename Change>
    void change(const Change &change);
    void removeSent();
    bool insert(const StoredCall &call);
    void insert(OutgoingMessage &message);
    void makeRoom(qint64 bytes);

    std::unique_ptr<Statements> m_statements;
    QString m_damage;
    qint64 m_dropped = 0;
    qint64 m_count = 0; ///< of outgoing messages
    qint64 m_bytes = 0; ///< of these, at most
    qint64 m_calls = 0;
    qint64 m_lastCall = 0; ///< number of the last one, in the order of their arrival
    qint64 m_lastOutgoing = 0;
    std::vector<qint64> m_removed; ///< and still in the file
};
