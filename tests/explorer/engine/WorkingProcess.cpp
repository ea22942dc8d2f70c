// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/engine/WorkingProcess.h"

#include "explorer/engine/Expander.h"
#include "explorer/engine/Ipc.h"

#include <exception>
#include <new>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace exploration {
namespace {
Position *newPosition()
{
    return new (sharedMemory(sizeof(Position))) Position;
}

/// Exits without running the destructors, which belong to the parent.
[[noreturn]] void leave(int status)
{
    ::_exit(status);
}

/// Disables core dumps, because an explored step may kill the process. Makes the process die with
/// the explorer.
void prepareChild()
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && !defined(__clang__)
    // A step that never stops allocating must kill only its own process. Sanitizers reserve more
    // memory than there is, so they get no limit.
    constexpr rlim_t maxMemory = rlim_t(4) << 30;
    const rlimit memory{maxMemory, maxMemory};
    ::setrlimit(RLIMIT_AS, &memory);
#endif
}
} // namespace

WorkingProcess::WorkingProcess(const SystemFactory &factory)
    : m_position(newPosition())
{
    const Pipe tasks;
    const Pipe results;
    m_pid = forkAlone();
    if (m_pid == 0) {
        ::close(tasks.writing);
        ::close(results.reading);
        work(factory, m_position, tasks.reading, results.writing);
    }
    ::close(tasks.reading);
    ::close(results.writing);
    m_input = tasks.writing;
    m_output = results.reading;
}

WorkingProcess::~WorkingProcess()
{
    kill();
    end();
    freeSharedMemory(m_position, sizeof(Position));
}

void WorkingProcess::work(const SystemFactory &factory, Position *position, int input, int output)
{
    prepareChild();
    try {
        const std::unique_ptr<System> system = factory();
        Recorder recorder(position);
        Expander expander(system.get(), &recorder);
        while (const auto message = readMessage(input)) {
            BytesReader reader(*message);
            std::vector<Task> tasks;
            reader.getAll(&tasks, [&] { return readTask(&reader); });
            for (const Task &task : tasks) {
                Bytes bytes;
                write(&bytes, expander.expand(task));
                if (!writeMessage(output, bytes.bytes())) {
                    leave(0);
                }
            }
        }
        leave(0);
    } catch (const std::exception &exception) {
        position->setMessage(exception.what());
        leave(1);
    }
}

void WorkingProcess::send(const std::vector<Task> &tasks)
{
    m_lastMove = std::chrono::steady_clock::now();
    Bytes bytes;
    bytes.addAll(tasks, [&](const Task &task) { write(&bytes, task); });
    // If the process has died, this is noticed when its results are read.
    writeMessage(m_input, bytes.bytes());
}

std::optional<Expansion> WorkingProcess::receive()
{
    const auto message = readMessage(m_output);
    if (!message) {
        return {};
    }
    BytesReader reader(*message);
    return readExpansion(&reader);
}

bool WorkingProcess::hangs(std::chrono::milliseconds limit)
{
    const auto now = std::chrono::steady_clock::now();
    if (m_position->steps != m_lastSteps) {
        m_lastSteps = m_position->steps;
        m_lastMove = now;
    }
    return now - m_lastMove > limit;
}

void WorkingProcess::kill()
{
    if (m_pid > 0) {
        ::kill(m_pid, SIGKILL);
    }
}

std::string WorkingProcess::end()
{
    if (m_pid <= 0) {
        return {};
    }
    ::close(m_input);
    ::close(m_output);
    const int pid = m_pid;
    m_pid = 0;
    return collect(pid);
}

Narration narrate(const SystemFactory &factory, const Sequence &sequence, bool inspecting,
                  std::chrono::milliseconds limit)
{
    const Pipe words;
    const int pid = forkAlone();
    if (pid == 0) {
        prepareChild();
        ::close(words.reading);
        Position position;
        Recorder recorder(&position);
        recorder.setNarrator([&](const std::string &line, bool newLine) {
            writeMessage(words.writing, (newLine ? 'W' : 'A') + line); // a line, or more of it
        });
        try {
            const std::unique_ptr<System> system = factory();
            const auto seen = Expander(system.get(), &recorder).narrate(sequence, inspecting);
            for (const Observation &observation : seen) {
                const char kind = observation.kind == Observation::Kind::Finding ? 'F' : 'N';
                writeMessage(words.writing, kind + observation.rule + '\0' + observation.detail);
            }
        } catch (const std::exception &exception) {
            writeMessage(words.writing, std::string("W") + exception.what());
            leave(1);
        }
        leave(0);
    }
    ::close(words.writing);
    Narration narration;
    pollfd file{words.reading, POLLIN, 0};
    while (::poll(&file, 1, int(limit.count())) > 0) {
        const auto message = readMessage(words.reading);
        if (!message) {
            break;
        }
        const std::string text = message->substr(1);
        if (message->front() == 'W') {
            narration.lines.push_back(text);
            continue;
        }
        if (message->front() == 'A' && !narration.lines.empty()) {
            narration.lines.back() += text;
            continue;
        }
        const auto middle = text.find('\0');
        narration.observations.push_back(
            {message->front() == 'F' ? Observation::Kind::Finding : Observation::Kind::Note,
             text.substr(0, middle), text.substr(middle + 1)});
    }
    // A process that has closed its pipe exits by itself.
    if (file.revents == 0) {
        ::kill(pid, SIGKILL);
    }
    ::close(words.reading);
    narration.end = collect(pid);
    return narration;
}

} // namespace exploration
