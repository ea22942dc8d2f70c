// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/Printable.h"
#include "base/StopSignals.h"
#include "display/attention/AttentionWindows.h"
#include "display/attention/HistoryRequests.h"
#include "display/CommandLine.h"
#include "display/ConfigurationFile.h"
#include "display/ExitCode.h"
#include "display/Language.h"
#include "display/message/DemoMessages.h"
#include "display/message/HostMessages.h"
#include "display/platform/Placement.h"
#include "display/platform/Platform.h"
#include "display/view/MessageWindow.h"
#include <client/TavoClient.h>
#include <core/base/connect.h>

#include <QCryptographicHash>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QLockFile>
#include <QStandardPaths>

#include <csignal>
#include <cstdio>
#include <dlfcn.h>
#include <malloc.h>
#include <stdexcept>
#include <thread>

namespace {
/// Those who ask whether a program runs have its lock for a moment.
constexpr int lockTimeoutMs = 300;

int exitWith(const ExitFailure &failure)
{
    std::fprintf(stderr, "%s\n", qUtf8Printable(printable(failure.reason)));
    return static_cast<int>(failure.code);
}

ExitFailure noDisplay(const Failure &failure)
{
    return {ExitCode::Unavailable, QStringLiteral("tavo-display: %1").arg(failure.reason)};
}

int print(const QString &text)
{
    std::printf("%s\n", qUtf8Printable(text));
    return static_cast<int>(ExitCode::Ok);
}

void warn(const QString &text)
{
    std::fprintf(stderr, "tavo-display: %s\n", qUtf8Printable(printable(text)));
}

/// In the threads that Qt starts before there is an event loop.
void blockStopSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

/// Does something beside everything else, and waits for it at the end.
class Aside
{
public:
    template <typename Function>
    explicit Aside(Function function)
        : m_thread(function)
    {
    }
    ~Aside() { m_thread.join(); }
    Aside(const Aside &) = delete;
    Aside &operator=(const Aside &) = delete;

private:
    std::thread m_thread;
};

// Fonts take half of the start.

/// Needs no application. Not by QLibrary: Qt takes the first thread that has a QObject for the main one.
void readFontConfiguration()
{
    if (void *fontconfig = dlopen("libfontconfig.so.1", RTLD_LAZY)) {
        if (void *initialize = dlsym(fontconfig, "FcInit")) {
            reinterpret_cast<int (*)()>(initialize)();
        }
    }
}

/// Fills Qt's list of fonts.
void listFonts()
{
    QFontMetrics(QFont()).height();
}

/// What a host has besides messages.
class Attention
{
public:
    Attention(TavoClient &client, QQmlEngine &engine, const QString &socket)
        : m_host(client)
        , m_windows(m_host, engine)
        , m_requests(socket, [this] { return m_windows.openHistory(); })
    {
    }

    void setConfiguration(const DisplayConfiguration &configuration)
    {
        m_windows.setConfiguration(configuration);
    }
    void start() { m_host.start(); }

private:
    HostAttention m_host;
    AttentionWindows m_windows;
    HistoryRequests m_requests;
};

/// The parts of the program, in the order of their destruction from the last.
class Display : public QObject
{
public:
    /// Shows the messages of a host, and its history to those who ask at the socket.
    Display(const CommandLine &line, const QString &bus, const QString &socket)
        : Display(line, std::make_unique<TavoClient>(bus))
    {
        m_attention = std::make_unique<Attention>(*m_client, m_window.engine(), socket);
        apply();
    }

    /// Shows every look without a host.
    explicit Display(const CommandLine &line)
        : Display(line, nullptr)
    {
        apply();
    }

    void start()
    {
        m_source->start();
        if (m_attention) {
            m_attention->start();
        }
    }

private:
    Display(const CommandLine &line, std::unique_ptr<TavoClient> client)
        : m_line(line)
        , m_client(std::move(client))
        , m_source(makeSource(m_client.get()))
        , m_file(line.configurationFile)
        , m_message(m_source.get())
        , m_window(&m_message)
    {
        tavoConnect(&m_file, &ConfigurationFile::changed, this, &Display::applyChange);
        tavoConnect(&m_file, &ConfigurationFile::failed, this, [](const QString &reason) {
            warn(reason + QStringLiteral("; the configuration stays as it was"));
        });
    }

    static std::unique_ptr<MessageSource> makeSource(TavoClient *client)
    {
        if (client != nullptr) {
            return std::make_unique<HostMessages>(*client);
        }
        auto demo = std::make_unique<DemoMessages>();
        tavoConnect(demo.get(), &DemoMessages::finished, qGuiApp, &QCoreApplication::quit,
                    Qt::QueuedConnection);
        return demo;
    }

    void apply()
    {
        m_configuration = m_file.configuration();
        m_configuration.mode = m_line.mode.value_or(m_configuration.mode);
        m_language.set(m_configuration.language);
        m_window.setConfiguration(m_configuration);
        if (m_attention) {
            m_attention->setConfiguration(m_configuration);
        }
    }

    void applyChange()
    {
        const bool needsRestart = m_configuration.needsRestart(m_file.configuration());
        apply();
        warn(QStringLiteral("the configuration has been read again") +
             (needsRestart ? QStringLiteral("; bus and renderer change with a restart")
                           : QString()));
    }

    const CommandLine &m_line;
    const std::unique_ptr<TavoClient> m_client; ///< null without a host
    const std::unique_ptr<MessageSource> m_source;
    DisplayConfiguration m_configuration;
    ConfigurationFile m_file;
    Language m_language;
    ShownMessage m_message;
    MessageWindow m_window;
    std::unique_ptr<Attention> m_attention; ///< null without a host
};

QString busOf(const CommandLine &line, const DisplayConfiguration &configuration)
{
    const QString variable = qEnvironmentVariable("TAVO_BUS");
    if (!line.bus.isEmpty()) {
        return line.bus;
    }
    const bool isConfigured = configuration.bus != DisplayConfiguration().bus;
    return variable.isEmpty() || isConfigured ? configuration.bus : variable;
}

QString lockFile(const QString &bus, const QString &screen)
{
    const QByteArray hash = QCryptographicHash::hash((bus + QLatin1Char(' ') + screen).toUtf8(),
                                                     QCryptographicHash::Sha1);
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) +
           QStringLiteral("/tavo-display-%1.lock").arg(QString::fromLatin1(hash.toHex().left(12)));
}

/// Where the running program listens, beside its lock.
QString socketOf(const QString &lockFile)
{
    return lockFile + QStringLiteral(".socket");
}

int run(int argc, char **argv, const CommandLine &line, const DisplayConfiguration &configuration)
{
    // Writing to a bus that has gone must fail, not end the program.
    std::signal(SIGPIPE, SIG_IGN);
    const auto screen = choosePlatform(configuration.renderer);
    if (const auto *failure = std::get_if<Failure>(&screen)) {
        return exitWith(noDisplay(*failure));
    }
    blockStopSignals();
    mallopt(M_ARENA_MAX, 1); // Each heap takes memory, and the other threads use little of it.
    const Aside fontConfiguration(readFontConfiguration);
    Placement::preparePlatform();
    QGuiApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QGuiApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QGuiApplication app(argc, argv);
    const Aside fonts(listFonts);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QGuiApplication::setDesktopFileName(QStringLiteral("tavo-display"));
    const auto stopSignals = StopSignals::install();
    if (stopSignals) { // Without them, a signal ends the program at once.
        tavoConnect(stopSignals.get(), &StopSignals::received, &app, &QCoreApplication::quit);
    }
    const QString bus = busOf(line, configuration);
    const QString lockName = lockFile(bus, std::get<QString>(screen));
    QLockFile lock(lockName);
    lock.setStaleLockTime(0);
    if (line.action == CommandLine::Action::Run && !lock.tryLock(lockTimeoutMs) &&
        lock.error() == QLockFile::LockFailedError) {
        return exitWith(
            {ExitCode::AlreadyRunning,
             QStringLiteral("tavo-display: another one shows the messages of the bus %1 on "
                            "this display")
                 .arg(bus)});
    }
    const auto display = line.action == CommandLine::Action::Demo
                             ? std::make_unique<Display>(line)
                             : std::make_unique<Display>(line, bus, socketOf(lockName));
    display->start();
    return QGuiApplication::exec();
}

/// The names of what the program is going to use, and whether another one uses it already.
int check(const CommandLine &line, const DisplayConfiguration &configuration)
{
    print(line.configurationFile.isEmpty()
              ? QStringLiteral("built-in configuration: good")
              : QStringLiteral("%1: good").arg(line.configurationFile));
    const auto screen = choosePlatform(configuration.renderer);
    if (const auto *failure = std::get_if<Failure>(&screen)) {
        return exitWith(noDisplay(*failure));
    }
    QLockFile lock(lockFile(busOf(line, configuration), std::get<QString>(screen)));
    lock.setStaleLockTime(0);
    const bool isRunning = !lock.tryLock() && lock.error() == QLockFile::LockFailedError;
    return print(isRunning ? QStringLiteral("running") : QStringLiteral("not running"));
}

/// Has the running program show the history.
int openHistory(const CommandLine &line, const DisplayConfiguration &configuration)
{
    const auto screen = choosePlatform(configuration.renderer);
    if (const auto *failure = std::get_if<Failure>(&screen)) {
        return exitWith(noDisplay(*failure));
    }
    const QString bus = busOf(line, configuration);
    const QString lockName = lockFile(bus, std::get<QString>(screen));
    QLockFile lock(lockName);
    lock.setStaleLockTime(0);
    if (lock.tryLock() || lock.error() != QLockFile::LockFailedError) {
        return exitWith(noDisplay({QStringLiteral("none shows the messages of the bus %1 on this "
                                                  "display; start tavo-display first")
                                       .arg(bus)}));
    }
    const auto failure = HistoryRequests::send(socketOf(lockName));
    return failure ? exitWith(noDisplay(*failure)) : static_cast<int>(ExitCode::Ok);
}

int act(int argc, char **argv, CommandLine line)
{
    if (line.configurationFile.isEmpty()) {
        line.configurationFile = ConfigurationFile::find();
    }
    DisplayConfiguration configuration;
    try {
        if (!line.configurationFile.isEmpty()) {
            configuration = DisplayConfiguration::fromFile(line.configurationFile);
        }
        if (line.action == CommandLine::Action::Check) {
            return check(line, configuration);
        }
        if (line.action == CommandLine::Action::History) {
            return openHistory(line, configuration);
        }
        return run(argc, argv, line, configuration);
    } catch (const std::runtime_error &error) {
        return exitWith({ExitCode::Configuration, QString::fromStdString(error.what())});
    }
}
} // namespace

int main(int argc, char **argv)
{
    // Qt's own event dispatcher: GLib's wakes up more often.
    qputenv("QT_NO_GLIB", "1");
    QCoreApplication::setApplicationName(QStringLiteral("tavo-display"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TAVO_VERSION));
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    const auto line = CommandLine::parse(arguments);
    if (const auto *failure = std::get_if<Failure>(&line)) {
        return exitWith({ExitCode::Usage, failure->reason});
    }
    switch (std::get<CommandLine>(line).action) {
    case CommandLine::Action::ShowHelp: {
        const QCoreApplication app(argc, argv); // The help shows its name.
        return print(CommandLine::helpText().trimmed());
    }
    case CommandLine::Action::ShowVersion:
        return print(QStringLiteral("tavo-display %1").arg(QCoreApplication::applicationVersion()));
    default:
        return act(argc, argv, std::get<CommandLine>(line));
    }
}
