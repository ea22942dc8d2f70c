// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistoryWriter.h"

#include <QDateTime>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {
constexpr std::chrono::milliseconds betweenRemovals(250); // of what is over the limits
const QString inMemory = QStringLiteral(":memory:");

bool isLong(const HistoryQuery &query)
{
    return !query.text.isEmpty() || !query.source.isEmpty();
}
} // namespace

HistoryWriter::HistoryWriter(const HistorySettings &settings, HistoryQueue &queue)
    : m_settings(settings)
    , m_queue(queue)
    , m_place(settings.file)
{
    qRegisterMetaType<QVector<HistoryEntry>>();
}

HistoryWriter::~HistoryWriter()
{
    m_queue.stop();
    m_thread.join();
}

void HistoryWriter::start()
{
    m_thread = std::thread(&HistoryWriter::run, this);
}

void HistoryWriter::run()
{
    open();
    bool isStopping = false;
    while (!isStopping) {
        HistoryQueue::Work work = m_queue.wait(nextRound());
        isStopping = work.isStopping;
        doRound(std::move(work));
    }
    m_file.reset();
}

std::optional<HistoryWriter::Clock::time_point> HistoryWriter::nextRound() const
{
    if (!m_requests.empty()) {
        return Clock::now();
    }
    // What has failed is not tried again before there is something to write.
    const bool isIdle = m_hasFailed && m_uncommitted.empty();
    return isIdle ? std::nullopt : m_nextRound;
}

void HistoryWriter::doRound(HistoryQueue::Work work)
{
    takeOver(work);
    const bool isTry =
        !m_hasFailed || work.isStopping || !m_nextRound || Clock::now() >= *m_nextRound;
    if (m_hasFailed && isTry) {
        m_file.reset();
        open();
    }
    applyAll();
    // One page in each round, so that the next entries need not wait for all of them. A search may take
    // long, and so follows the writing.
    const bool isSearch = !m_requests.empty() && isLong(m_requests.front().query);
    if (!isSearch) {
        readPage();
    }
    if (isTry) {
        commit();
    }
    if (isSearch) {
        readPage();
    }
}

void HistoryWriter::takeOver(HistoryQueue::Work &work)
{
    std::move(work.requests.begin(), work.requests.end(), std::back_inserter(m_requests));
    if (!m_file) {
        return;
    }
    for (HistoryStep &step : work.steps) {
        const auto dropped = appendStep(m_uncommitted, m_uncommittedBytes, std::move(step));
        if (dropped && *dropped < m_applied) {
            --m_applied;
        }
    }
    m_lost += work.lost;
    const std::size_t size = m_uncommitted.size();
    m_lost += dropExcess(m_uncommitted, m_uncommittedBytes);
    if (m_uncommitted.size() < size) {
        // The database must not grow either: it starts again with what is left.
        startAgain();
    }
}

void HistoryWriter::startAgain()
{
    m_applied = 0;
    try {
        if (m_isInMemory) {
            m_file = std::make_unique<HistoryFile>(inMemory, m_settings);
        } else {
            m_file->rollback();
        }
    } catch (const SqliteError &error) {
        replaceFile(error);
    }
}

void HistoryWriter::open()
{
    m_applied = 0;
    m_isInMemory = false;
    m_nextRound.reset();
    for (bool isTry = true; isTry;) {
        try {
            openFile();
            isTry = false;
        } catch (const SqliteError &error) {
            isTry = mend(error);
        }
    }
}

void HistoryWriter::openFile()
{
    m_place.prepare();
    auto file = std::make_unique<HistoryFile>(m_place.file(), m_settings);
    if (!m_wasOpen) {
        const qint64 last = file->lastNumber();
        const qint64 shift = last + 1 - m_queue.firstNumber(last);
        file->setShift(shift);
        const QVector<HistoryEntry> left = file->leftOpen();
        if (file->hasLeft()) {
            m_uncommitted.push_front(HistoryLeftEnd{QDateTime::currentMSecsSinceEpoch()});
            m_uncommittedBytes += memoryOf(m_uncommitted.front());
            m_nextRound = Clock::now();
        }
        m_wasOpen = true;
        m_shift = shift;
        if (!left.isEmpty()) {
            Q_EMIT leftOpen(left);
        }
    }
    file->setShift(m_shift);
    m_file = std::move(file);
    reportMissed();
}

bool HistoryWriter::mend(const SqliteError &error)
{
    m_file.reset();
    m_applied = 0;
    if (error.kind() == SqliteError::Kind::Unusable) {
        refuse(error);
        return false;
    }
    const Clock::time_point now = Clock::now();
    const bool mayPutAside = !m_putAside || now - *m_putAside > m_settings.betweenTries;
    if (error.kind() == SqliteError::Kind::Damaged && mayPutAside && !m_isInMemory) {
        try {
            const QString name = m_place.putAside();
            m_putAside = now;
            Q_EMIT damaged(QStringLiteral("%1 is damaged (%2); it is now %3, and a new one is used")
                               .arg(m_place.file(), error.reason(), name));
            return true;
        } catch (const SqliteError &secondError) {
            fail(secondError);
        }
    } else {
        fail(error);
    }
    useMemory();
    return false;
}

void HistoryWriter::useMemory()
{
    try {
        m_file = std::make_unique<HistoryFile>(inMemory, m_settings);
        m_isInMemory = true;
    } catch (const SqliteError &error) {
        refuse(error);
    }
}

void HistoryWriter::replaceFile(const SqliteError &error)
{
    if (mend(error)) {
        open();
        if (m_file && !m_isInMemory) {
            m_nextRound = Clock::now();
        }
    }
}

void HistoryWriter::refuse(const SqliteError &error)
{
    m_refusal = QStringLiteral("%1 is not used: %2").arg(m_place.file(), error.reason());
    m_uncommitted.clear();
    m_uncommittedBytes = 0;
    m_lost = 0;
    m_nextRound.reset();
    m_hasFailed = false;
    Q_EMIT failed(m_refusal + QStringLiteral("; notifications are not remembered"));
}

void HistoryWriter::fail(const SqliteError &error)
{
    m_nextRound = Clock::now() + m_settings.betweenTries;
    if (!m_hasFailed) {
        m_hasFailed = true;
        Q_EMIT failed(
            QStringLiteral("%1 cannot be used for now: %2; notifications are kept in memory")
                .arg(m_place.file(), error.reason()));
    }
}

void HistoryWriter::applyAll()
{
    bool hasChanged = false;
    while (m_file && m_applied < m_uncommitted.size()) {
        try {
            m_file->apply(m_uncommitted[m_applied]);
            ++m_applied;
            hasChanged = true;
        } catch (const SqliteError &error) {
            replaceFile(error);
        }
    }
    reportMissed();
    if (hasChanged) {
        Q_EMIT changed();
    }
}

void HistoryWriter::commit()
{
    if (!m_file || m_isInMemory) {
        return;
    }
    try {
        m_file->commit();
    } catch (const SqliteError &error) {
        if (error.kind() == SqliteError::Kind::Failed) {
            fail(error);
            startAgain();
        } else {
            replaceFile(error);
        }
        applyAll();
        return;
    }
    m_uncommitted.clear();
    m_uncommittedBytes = 0;
    m_applied = 0;
    m_nextRound.reset();
    if (m_file->isOverLimit()) {
        m_nextRound = Clock::now() + betweenRemovals;
    }
    if (m_hasFailed || m_lost > 0) {
        if (!m_hasFailed) {
            Q_EMIT failed(
                QStringLiteral("%1 was not written fast enough; some notifications are lost")
                    .arg(m_place.file()));
        }
        m_hasFailed = false;
        Q_EMIT recovered(std::exchange(m_lost, 0));
    }
    reportMissed();
}

void HistoryWriter::readPage()
{
    if (m_requests.empty()) {
        return;
    }
    const HistoryQueue::Request request = std::move(m_requests.front());
    m_requests.pop_front();
    // The receiver is called in the thread of the history's owner.
    QMetaObject::invokeMethod(
        this, [receiver = request.receiver, page = page(request.query)] { receiver(page); },
        Qt::QueuedConnection);
}

Result<HistoryPage> HistoryWriter::page(const HistoryQuery &query)
{
    if (!m_file) {
        return Failure{m_refusal};
    }
    try {
        return m_file->page(query);
    } catch (const SqliteError &error) {
        replaceFile(error);
        applyAll();
        return Failure{QStringLiteral("%1 cannot be read: %2").arg(m_place.file(), error.reason())};
    }
}

void HistoryWriter::reportMissed()
{
    const int missed = m_file ? m_file->missed() : 0;
    if (m_missed != missed) {
        m_missed = missed;
        Q_EMIT missedChanged(missed);
    }
}
