// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0
//
// Tells ThreadSanitizer in which order Qt runs things in different threads.
//
// Qt is not instrumented, so the sanitizer does not see that an event is posted before it is
// delivered, nor Qt's mutexes. This library is loaded before Qt and so gets the calls that post and
// lock. It tells the sanitizer the order and passes the calls on. It marks only what Qt really
// orders, so a race between two slots is still reported.

#include <private/qobject_p.h>
#include <QCoreApplication>
#include <QEvent>
#include <QMutex>
#include <QObject>

#include <dlfcn.h>

// Functions of the runtime, which is linked into sanitized programs. Other programs that a test
// starts (a sound server, a build) load this library too, but do not have or need the runtime.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier)
__attribute__((weak)) void __tsan_acquire(void *address);
__attribute__((weak)) void __tsan_release(void *address);
// NOLINTEND(bugprone-reserved-identifier)
}

namespace {
using QtPrivate::QSlotObjectBase;

/// All that this thread has done so far happens before another thread acquires the key.
void release(const void *key)
{
    if (__tsan_release != nullptr) {
        __tsan_release(const_cast<void *>(key));
    }
}

void acquire(const void *key)
{
    if (__tsan_acquire != nullptr && key != nullptr) {
        __tsan_acquire(const_cast<void *>(key));
    }
}

template <typename Function>
Function next(const char *symbol)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, symbol));
}

/// Stands for a connected callable or slot. Qt counts its users, so the last one frees it after
/// every call, whatever the thread.
class OrderedSlot : public QSlotObjectBase
{
public:
    explicit OrderedSlot(QSlotObjectBase *slot)
        : QSlotObjectBase(&OrderedSlot::operate)
        , m_slot(slot)
    {
        release(this);
    }

    static QSlotObjectBase *around(QSlotObjectBase *slot)
    {
        return slot == nullptr ? nullptr : new OrderedSlot(slot);
    }

private:
    static void operate(int which, QSlotObjectBase *self, QObject *receiver, void **arguments,
                        bool *equal)
    {
        auto *ordered = static_cast<OrderedSlot *>(self);
        acquire(ordered);
        switch (which) {
        case Destroy:
            acquire(&ordered->m_calls);
            ordered->m_slot->destroyIfLastRef();
            delete ordered;
            break;
        case Call:
            ordered->m_slot->call(receiver, arguments);
            release(&ordered->m_calls);
            break;
        case Compare:
            *equal = ordered->m_slot->compare(arguments);
            break;
        default:
            break;
        }
    }

    /// The key of the calls: freeing comes after each of them, but they are not ordered among
    /// themselves.
    char m_calls = 0;
    QSlotObjectBase *m_slot; ///< owned, by a counted reference
};

/// Called by Qt for each event, in the receiver's thread, before the event is delivered.
bool on_delivery(void **parameters)
{
    auto *receiver = static_cast<QObject *>(parameters[0]);
    auto *event = static_cast<QEvent *>(parameters[1]);
    acquire(receiver);
    acquire(event);
    if (event->type() == QEvent::MetaCall) {
        acquire(static_cast<QAbstractMetaCallEvent *>(event)->sender());
    }
    return false;
}

[[gnu::constructor]] void watchDeliveries()
{
    // Looked up by name, since not every program that loads this library has Qt.
    const auto registerCallback =
        reinterpret_cast<bool (*)(QInternal::Callback, qInternalCallback)>(
            dlsym(RTLD_DEFAULT, "_ZN9QInternal16registerCallbackENS_8CallbackEPFbPPvE"));
    if (registerCallback != nullptr) {
        registerCallback(QInternal::EventNotifyCallback, on_delivery);
    }
}
} // namespace

// Each function below has the name of one of Qt's functions, so programs and libraries call it
// instead. Qt's calls of its own functions are not affected.
#define TAVO_STANDS_FOR(symbol) __asm__(symbol)
#define TAVO_QT(symbol, function) static const auto s_qt = next<decltype(&(function))>(symbol)

#define POST_EVENT "_ZN16QCoreApplication9postEventEP7QObjectP6QEventi"
void postEvent(QObject *receiver, QEvent *event, int priority) TAVO_STANDS_FOR(POST_EVENT);
void postEvent(QObject *receiver, QEvent *event, int priority)
{
    TAVO_QT(POST_EVENT, postEvent);
    release(event);
    release(receiver); // the receiver may be deleted before the event is delivered
    s_qt(receiver, event, priority);
}

#define ACTIVATE "_ZN11QMetaObject8activateEP7QObjectPKS_iPPv"
void activate(QObject *sender, const QMetaObject *meta, int signal, void **arguments)
    TAVO_STANDS_FOR(ACTIVATE);
void activate(QObject *sender, const QMetaObject *meta, int signal, void **arguments)
{
    TAVO_QT(ACTIVATE, activate);
    release(sender);
    s_qt(sender, meta, signal, arguments);
}

#define INVOKE_METHOD                                                                              \
    "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTy" \
    "peEPv"
bool invokeMethod(QObject *receiver, QSlotObjectBase *slot, Qt::ConnectionType type, void *result)
    TAVO_STANDS_FOR(INVOKE_METHOD);
bool invokeMethod(QObject *receiver, QSlotObjectBase *slot, Qt::ConnectionType type, void *result)
{
    TAVO_QT(INVOKE_METHOD, invokeMethod);
    release(receiver);
    return s_qt(receiver, OrderedSlot::around(slot), type, result);
}

#define CONNECT                                                                                    \
    "_ZN7QObject11connectImplEPKS_PPvS1_S3_PN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeEPKi" \
    "PK11QMetaObject"
QMetaObject::Connection connectImpl(const QObject *sender, void **signal, const QObject *receiver,
                                    void **slotPointer, QSlotObjectBase *slot,
                                    Qt::ConnectionType type, const int *types,
                                    const QMetaObject *meta) TAVO_STANDS_FOR(CONNECT);
QMetaObject::Connection connectImpl(const QObject *sender, void **signal, const QObject *receiver,
                                    void **slotPointer, QSlotObjectBase *slot,
                                    Qt::ConnectionType type, const int *types,
                                    const QMetaObject *meta)
{
    TAVO_QT(CONNECT, connectImpl);
    return s_qt(sender, signal, receiver, slotPointer, OrderedSlot::around(slot), type, types,
                meta);
}

#define DELETE_LATER "_ZN7QObject11deleteLaterEv"
void deleteLater(QObject *object) TAVO_STANDS_FOR(DELETE_LATER);
void deleteLater(QObject *object)
{
    TAVO_QT(DELETE_LATER, deleteLater);
    release(object);
    s_qt(object);
}

#define MOVE_TO_THREAD "_ZN7QObject12moveToThreadEP7QThread"
void moveToThread(QObject *object, QThread *thread) TAVO_STANDS_FOR(MOVE_TO_THREAD);
void moveToThread(QObject *object, QThread *thread)
{
    TAVO_QT(MOVE_TO_THREAD, moveToThread);
    release(object);
    s_qt(object, thread);
}

// Deletes the events that were not delivered.
#define DESTRUCTOR "_ZN7QObjectD2Ev"
void destroy(QObject *object) TAVO_STANDS_FOR(DESTRUCTOR);
void destroy(QObject *object)
{
    TAVO_QT(DESTRUCTOR, destroy);
    acquire(object);
    s_qt(object);
}

#define LOCK "_ZN6QMutex4lockEv"
void lock(QMutex *mutex) TAVO_STANDS_FOR(LOCK);
void lock(QMutex *mutex)
{
    TAVO_QT(LOCK, lock);
    s_qt(mutex);
    acquire(mutex);
}

#define UNLOCK "_ZN6QMutex6unlockEv"
void unlock(QMutex *mutex) TAVO_STANDS_FOR(UNLOCK);
void unlock(QMutex *mutex)
{
    TAVO_QT(UNLOCK, unlock);
    release(mutex);
    s_qt(mutex);
}
