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

/// Is told of a reply's end, once. Registered with CMReplyAbstractData::addWatcher(); belongs to
/// itself and must stay until it has been told, which happens even if nobody ever answers.
class TAVO_API_EXPORT CMReplyWatcher
{
public:
    virtual ~CMReplyWatcher();

    /// Called in the thread that finished the reply, or in the one that added the watcher if the
    /// reply was finished already; no lock is held. The watcher may delete itself.
    virtual void replyFinished(const CMVoidReply &reply) = 0;
};

/// The state that requester and answerer share: unfinished, then finished for good by the first
/// answer. Every member may be called from any thread.
class TAVO_API_EXPORT CMReplyAbstractData : public QSharedData
{
public:
    virtual ~CMReplyAbstractData();

    CMReplyAbstractData(const CMReplyAbstractData &) = delete;
    CMReplyAbstractData &operator=(const CMReplyAbstractData &) = delete;

    bool isFinished() const { return m_finished; }

    /// Blocks until the reply is finished or the milliseconds have passed; the largest number means
    /// no limit. Returns whether it is finished.
    bool waitForFinished(unsigned long ms = std::numeric_limits<unsigned long>::max()) const;

    /// Finishes with an error; does nothing if finished.
    void setError(const CMError &error);

    /// The error of a finished reply; empty for a good answer and before the end.
    CMError error() const;

    void addWatcher(CMReplyWatcher *watcher);

protected:
    CMReplyAbstractData() = default;

    using Watchers = std::vector<CMReplyWatcher *>;

    /// Finishes with whatever store() writes, unless finished: wakes who waits, then tells the
    /// watchers outside the lock, in their order.
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

    /// Called by the destructor of the outermost class, which alone can make a stand-in of the same
    /// type: watchers that still wait are told through it that no answer comes.
    void abandon(CMReplyAbstractData *standIn);

    bool hasWatchers() const { return !m_watchers.empty(); }

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
            // Out of memory ends the process, here as anywhere.
            abandon(new CMReplyData); // NOLINT(bugprone-unhandled-exception-at-new)
        }
    }

    /// Waits for the end, then gives the value; the type's default after an error.
    T value() const
    {
        waitForFinished();
        const std::lock_guard lock(m_mutex);
        return m_value;
    }

    void setValue(const T &value)
    {
        finish([this, &value] { m_value = value; });
    }

private:
    T m_value{};
};

extern template class TAVO_API_EXPORT CMReplyData<QVariant>;

/// What stands behind a reply on the answering side: while anybody there can still answer it lives,
/// and when it goes without an answer the requester is told.
class TAVO_API_EXPORT CMAnswering : public QSharedData
{
public:
    CMAnswering() = default;
    virtual ~CMAnswering();

    CMAnswering(const CMAnswering &) = delete;
    CMAnswering &operator=(const CMAnswering &) = delete;
};

/// A view of a reply without its value type. Copies are views of the same reply; default-made it
/// views nothing. Thread: any.
class TAVO_API_EXPORT CMVoidReply
{
public:
    using DataPointer = QExplicitlySharedDataPointer<CMReplyAbstractData>;
    using Callback = std::function<void(const CMVoidReply &)>;

    CMVoidReply() = default;
    explicit CMVoidReply(DataPointer data)
        : m_data(std::move(data))
    {
    }

    /// True when there is no reply behind the view.
    bool operator!() const { return !m_data; }

    bool isFinished() const { return m_data && m_data->isFinished(); }
    bool waitForFinished(unsigned long ms = std::numeric_limits<unsigned long>::max()) const
    {
        return m_data && m_data->waitForFinished(ms);
    }

    /// Finishes the reply with an error, unless it has been answered.
    void setError(const CMError &error) const;

    /// The error of a finished reply; one without a name is none.
    CMError error() const { return m_data ? m_data->error() : CMError(); }

    /// Calls back once, when the reply is finished (or is already): through the context with that
    /// connection type, and not any more once the context is gone. Without a context the call is
    /// made in the thread that is calling now, which needs an event loop for all but direct
    /// connections.
    void addWatcher(QObject *context, const Callback &callback,
                    Qt::ConnectionType type = Qt::AutoConnection) const;
    void addWatcher(CMReplyWatcher *watcher) const;

    /// The same for a slot of the receiver.
    template <typename Receiver>
    void connectFinished(Receiver *receiver, void (Receiver::*slot)(const CMVoidReply &),
                         Qt::ConnectionType type = Qt::AutoConnection) const;

    /// Returns whether both view the same reply.
    bool operator==(const CMVoidReply &other) const { return m_data == other.m_data; }
    bool operator!=(const CMVoidReply &other) const { return m_data != other.m_data; }

protected:
    DataPointer m_data;

    /// Set on the answering side only.
    QExplicitlySharedDataPointer<CMAnswering> m_answering;
};

/// Re-emits a reply's end as a signal. Made with new for one reply; deletes itself once it has
/// told.
class TAVO_API_EXPORT CMReplyWatcherObject : public QObject, public CMReplyWatcher
{
    Q_OBJECT

public:
    void replyFinished(const CMVoidReply &reply) override;

Q_SIGNALS:
    void finishedSignal(const CMVoidReply &reply);
};

Q_DECLARE_METATYPE(CMVoidReply)

/// The answer to a request, shared between requester and answerer. Default-made it is a new,
/// unfinished reply. Thread: any.
template <typename T>
class CMReply : public CMVoidReply
{
public:
    using TypedCallback = std::function<void(const CMReply &)>;

    CMReply()
        : CMVoidReply(DataPointer(new CMReplyData<T>))
    {
    }

    /// The same reply on its answering side: while this view or a copy lives, an answer may come.
    CMReply(const CMReply &reply, CMAnswering *answering)
        : CMReply(reply)
    {
        m_answering = QExplicitlySharedDataPointer<CMAnswering>(answering);
    }

    /// Views a reply as one of this type; views nothing when it is of another.
    explicit CMReply(const CMVoidReply &reply)
        : CMVoidReply(reply)
    {
        if (dynamic_cast<CMReplyData<T> *>(m_data.data()) == nullptr) {
            m_data.reset();
        }
    }

    /// Waits for the end without a limit. The type's default after an error.
    T value() const { return checked()->value(); }

    /// Answers, unless the reply has been answered.
    void setValue(const T &value) const { checked()->setValue(value); }

    /// Calls back once with the finished reply, as CMVoidReply::addWatcher() does.
    void onFinished(QObject *context, const TypedCallback &callback,
                    Qt::ConnectionType type = Qt::AutoConnection) const
    {
        addWatcher(context, finishCallback(callback), type);
    }

    /// Makes a callback for replies of this type out of one for this type.
    static Callback finishCallback(const TypedCallback &callback)
    {
        return [callback](const CMVoidReply &reply) {
            const CMReply typedReply(reply);
            Q_ASSERT_X(!!typedReply, "CMReply", "Wrong type passed to CMReply::onFinished()!");
            callback(typedReply);
        };
    }

private:
    /// Of this type, as every constructor has seen to.
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
