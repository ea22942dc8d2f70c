// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/connect.h"
#include "core/base/export.h"
#include "core/model/cmerror.h"

#include <QExplicitlySharedDataPointer>
#include <QObject>
#include <QVariant>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <limits>
#include <mutex>
#include <vector>

class CMVoidReply;

/// Is called once, when a reply is finished. Registered with CMReplyAbstractData::addWatcher().
/// Must exist until it has been called, which happens even if nobody ever answers.
class TAVO_API_EXPORT CMReplyWatcher
{
public:
    virtual ~CMReplyWatcher();

    /// Called in the thread that finishes the reply, or in the one that adds the watcher if the
    /// reply is finished already. No mutex is held. The watcher may delete itself.
    virtual void replyFinished(const CMVoidReply &reply) = 0;
};

/// The state that all copies of a reply share: unfinished until the first value or error, finished
/// from then on. Called from any thread.
class TAVO_API_EXPORT CMReplyAbstractData : public QSharedData
{
public:
    virtual ~CMReplyAbstractData();

    CMReplyAbstractData(const CMReplyAbstractData &) = delete;
    CMReplyAbstractData &operator=(const CMReplyAbstractData &) = delete;

    /// Returns whether there is a value or an error.
    bool isFinished() const { return m_finished; }

    /// Blocks until the reply is finished or the timeout has passed; the largest number means no
    /// timeout. Returns whether the reply is finished.
    bool waitForFinished(unsigned long ms = std::numeric_limits<unsigned long>::max()) const;

    /// Finishes the reply with an error. Does nothing if it is finished.
    void setError(const CMError &error);

    /// The error that finished the reply; empty if there is none.
    CMError error() const;

    /// Registers the watcher, which must exist until it has been called.
    void addWatcher(CMReplyWatcher *watcher);

protected:
    CMReplyAbstractData() = default;

    /// Watchers, in the order in which they are called.
    using Watchers = std::vector<CMReplyWatcher *>;

    /// Finishes the reply with what store() writes, unless it is finished. Wakes all waiting
    /// threads, then calls the watchers in their order, without the mutex.
    template <typename Store>
    void finish(Store store)
    {
        Watchers watchers;
        {
            const std::lock_guard lock(m_mutex);
            if (m_finished) {
                return;
            }
            store();
            m_finished = true;
            watchers.swap(m_watchers);
            m_done.notify_all();
        }
        tell(watchers);
    }

    /// Calls the watchers with the error that no answer came. They get the stand-in, a new reply of
    /// the same type, because this one is being destroyed. Called by the destructor of the derived
    /// class.
    void abandon(CMReplyAbstractData *standIn);

    /// Called by the destructor of the derived class.
    bool hasWatchers() const { return !m_watchers.empty(); }

    /// Protects the value, the error and the watchers.
    mutable std::mutex m_mutex;

private:
    void tell(const Watchers &watchers);

    mutable std::condition_variable m_done;
    std::atomic<bool> m_finished{false}; ///< written under the mutex, read without it
    CMError m_error;
    Watchers m_watchers;
};

/// The shared state of a reply that carries a value of the type.
template <typename T>
class CMReplyData : public CMReplyAbstractData
{
public:
    ~CMReplyData() override
    {
        if (hasWatchers()) {
            // Running out of memory ends the process.
            abandon(new CMReplyData); // NOLINT(bugprone-unhandled-exception-at-new)
        }
    }

    /// Waits until the reply is finished. Returns the type's default after an error.
    T value() const
    {
        waitForFinished();
        const std::lock_guard lock(m_mutex);
        return m_value;
    }

    /// Finishes the reply with a value. Does nothing if it is finished.
    void setValue(const T &value)
    {
        finish([this, &value] { m_value = value; });
    }

private:
    T m_value{};
};

extern template class TAVO_API_EXPORT CMReplyData<QVariant>;

/// Keeps a request answerable: exists while any copy of it can still be answered. When it is
/// destroyed without an answer, the request gets an error.
class TAVO_API_EXPORT CMAnswering : public QSharedData
{
public:
    CMAnswering() = default;
    virtual ~CMAnswering();

    CMAnswering(const CMAnswering &) = delete;
    CMAnswering &operator=(const CMAnswering &) = delete;
};

/// A view of a reply without its value type. Copies view the same reply; a default-constructed one
/// is empty. Called from any thread.
class TAVO_API_EXPORT CMVoidReply
{
public:
    /// How views hold the shared state.
    using DataPointer = QExplicitlySharedDataPointer<CMReplyAbstractData>;
    /// Called with the finished reply.
    using Callback = std::function<void(const CMVoidReply &)>;

    CMVoidReply() = default;
    /// A view of that state.
    explicit CMVoidReply(DataPointer data)
        : m_data(std::move(data))
    {
    }

    /// Returns true if the view is empty.
    bool operator!() const { return !m_data; }

    /// Returns whether there is a value or an error. False for an empty view.
    bool isFinished() const { return m_data && m_data->isFinished(); }
    /// Blocks until the reply is finished or the timeout has passed; the largest number means no timeout.
    /// Returns whether it is finished. A worker that waits for its own node waits for ever.
    bool waitForFinished(unsigned long ms = std::numeric_limits<unsigned long>::max()) const
    {
        return m_data && m_data->waitForFinished(ms);
    }

    /// Finishes the reply with an error, unless it is finished.
    void setError(const CMError &error) const;

    /// The error that finished the reply; see CMError::isError().
    CMError error() const { return m_data ? m_data->error() : CMError(); }

    /// Calls back once the reply is finished, through the context with the connection type; not if
    /// the context has been destroyed. Without a context the call is made in the thread that calls
    /// this function, which then needs an event loop unless the connection is direct.
    void addWatcher(QObject *context, const Callback &callback,
                    Qt::ConnectionType type = Qt::AutoConnection) const;
    /// Registers the watcher, which must exist until it has been called.
    void addWatcher(CMReplyWatcher *watcher) const;

    /// Calls a slot of the receiver once, in the same way.
    template <typename Receiver>
    void connectFinished(Receiver *receiver, void (Receiver::*slot)(const CMVoidReply &),
                         Qt::ConnectionType type = Qt::AutoConnection) const;

    /// Returns whether both view the same reply.
    bool operator==(const CMVoidReply &other) const { return m_data == other.m_data; }
    /// Returns whether they view different replies.
    bool operator!=(const CMVoidReply &other) const { return m_data != other.m_data; }

protected:
    /// Null for an empty view.
    DataPointer m_data;

    /// Set on the answering side only.
    QExplicitlySharedDataPointer<CMAnswering> m_answering;
};

/// Emits a signal when a reply is finished. Made with new for one reply; deletes itself afterwards.
class TAVO_API_EXPORT CMReplyWatcherObject : public QObject, public CMReplyWatcher
{
    Q_OBJECT

public:
    void replyFinished(const CMVoidReply &reply) override;

Q_SIGNALS:
    /// Emitted once, in the thread that finishes the reply.
    void finishedSignal(const CMVoidReply &reply);
};

Q_DECLARE_METATYPE(CMVoidReply)

/// The reply to a request, shared by the two sides. A default-constructed one is new and
/// unfinished. Called from any thread.
template <typename T>
class CMReply : public CMVoidReply
{
public:
    /// Called with the finished reply.
    using TypedCallback = std::function<void(const CMReply &)>;

    CMReply()
        : CMVoidReply(DataPointer(new CMReplyData<T>))
    {
    }

    /// The same reply for the side that answers. The request stays answerable while a copy of this
    /// exists.
    CMReply(const CMReply &reply, CMAnswering *answering)
        : CMReply(reply)
    {
        m_answering = QExplicitlySharedDataPointer<CMAnswering>(answering);
    }

    /// Views a reply as one of this type; empty if it has another type.
    explicit CMReply(const CMVoidReply &reply)
        : CMVoidReply(reply)
    {
        if (dynamic_cast<CMReplyData<T> *>(m_data.data()) == nullptr) {
            m_data.reset();
        }
    }

    /// Waits without a timeout until the reply is finished. Returns the type's default after an
    /// error.
    T value() const { return checked()->value(); }

    /// Finishes the reply with a value, unless it is finished.
    void setValue(const T &value) const { checked()->setValue(value); }

    /// Like CMVoidReply::addWatcher(), with the typed reply.
    void onFinished(QObject *context, const TypedCallback &callback,
                    Qt::ConnectionType type = Qt::AutoConnection) const
    {
        addWatcher(context, finishCallback(callback), type);
    }

    /// Wraps a typed callback so that it takes any reply; asserts that its type is this one.
    static Callback finishCallback(const TypedCallback &callback)
    {
        return [callback](const CMVoidReply &reply) {
            const CMReply typedReply(reply);
            Q_ASSERT_X(!!typedReply, "CMReply", "Wrong type passed to CMReply::onFinished()!");
            callback(typedReply);
        };
    }

private:
    // Every constructor has checked the type.
    CMReplyData<T> *checked() const
    {
        Q_ASSERT_X(m_data, "CMReply", "there is no reply of this type behind the view");
        return static_cast<CMReplyData<T> *>(m_data.data());
    }
};

template <typename Receiver>
void CMVoidReply::connectFinished(Receiver *receiver, void (Receiver::*slot)(const CMVoidReply &),
                                  Qt::ConnectionType type) const
{
    auto *watcher = new CMReplyWatcherObject;
    tavoConnect(watcher, &CMReplyWatcherObject::finishedSignal, receiver, slot, type);
    addWatcher(watcher);
}
