// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/bus/ClientProgram.h"
#include "support/bus/PrivateBus.h"
#include "support/EventLoop.h"
#include "support/host/HostProcess.h"
#include "support/sound/SoundFiles.h"
#include "support/sound/SoundServer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <csignal>
#include <utility>

using testing::HasSubstr;
using testing::Not;

/// The package, installed in a folder of its own. Uses the build tree and the sources only for what
/// is copied here.
class InstalledPackageTest : public testing::Test
{
protected:
    void SetUp() override
    {
        run(CMAKE_PROGRAM, {"--install", TAVO_BUILD_FOLDER, "--prefix", prefix()});
        m_host.setProgram(installedHost());
        // Hosts that the bus starts keep no history in the user's folder.
        qputenv("XDG_STATE_HOME", m_folder.path().toUtf8());
    }

    QString prefix() const { return m_folder.filePath("prefix"); }
    QString installedHost() const { return prefix() + "/" TAVO_INSTALL_BINDIR "/tavo-host"; }
    QString moduleFile(const QString &name) const
    {
        return prefix() + "/" TAVO_INSTALL_MODULE_DIR "/libtavo_" + name + ".so";
    }
    std::string contents(const QString &path) const
    {
        QFile file(prefix() + '/' + path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        return file.readAll().toStdString();
    }
    QString exampleBuild() const { return m_folder.filePath("build"); }
    QString exampleModules() const { return exampleBuild() + "/" TAVO_INSTALL_MODULE_DIR; }

    /// Runs a program, expects success and returns its output.
    static std::string run(const QString &program, const QStringList &arguments)
    {
        constexpr int timeoutMs = 200000;
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(program, arguments);
        EXPECT_TRUE(process.waitForFinished(timeoutMs));
        std::string output = process.readAll().toStdString();
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit) << output;
        EXPECT_EQ(process.exitCode(), 0) << output;
        return output;
    }

    /// Copies an example and builds it as its CMake file says.
    void buildExample(const QString &example = "demo")
    {
        const QString sources = m_folder.filePath(example);
        ASSERT_TRUE(QDir().mkpath(sources));
        const QDir original(TAVO_EXAMPLES_FOLDER "/" + example);
        for (const QFileInfo &file : original.entryInfoList(QDir::Files)) {
            ASSERT_TRUE(QFile::copy(file.filePath(), sources + '/' + file.fileName()));
        }
        const QString compiler = QStringLiteral("-DCMAKE_CXX_COMPILER=%1").arg(CXX_COMPILER);
        const QString flags = QStringLiteral("-DCMAKE_CXX_FLAGS=%1").arg(CXX_FLAGS);
        const QString package = "-DCMAKE_PREFIX_PATH=" + prefix();
        run(CMAKE_PROGRAM,
            {"-S", sources, "-B", exampleBuild(), "-G", GENERATOR, package, compiler, flags});
        run(CMAKE_PROGRAM, {"--build", exampleBuild()});
    }

    QTemporaryDir m_folder;
    SoundServer m_server;
    HostProcess m_host;
};

TEST_F(InstalledPackageTest, TheHostFindsItsModules)
{
    const std::string list = run(installedHost(), {"--list-modules"});
    for (const char *module : {"attention", "dbus", "notifications", "player", "powermanager"}) {
        EXPECT_THAT(
            list, HasSubstr(std::string(module) + '\t' + moduleFile(module).toStdString() + '\n'));
    }
}

TEST_F(InstalledPackageTest, TheHostRunsWithoutAConfiguration)
{
    ASSERT_TRUE(m_host.startReady()) << m_host.log().toStdString();
    EXPECT_TRUE(m_host.waitForLog("Host ready, 5 modules"));
    EXPECT_EQ(m_host.stop(), 0) << m_host.log().toStdString();
}

TEST_F(InstalledPackageTest, TheModulesUseTheInstalledLibraries)
{
    const std::pair<QString, std::string> uses[] = {
        {moduleFile("dbus"), "libtavo_api.so.0"},
        {moduleFile("notifications"), "libtavo_api.so.0"},
        {moduleFile("notifications"), "libtavo_simpleplayer.so.0"},
        {moduleFile("player"), "libtavo_api.so.0"},
        {moduleFile("player"), "libtavo_simpleplayer.so.0"},
        {moduleFile("powermanager"), "libtavo_api.so.0"},
    };
    for (const auto &[user, used] : uses) {
        // Except libraries that are preloaded into the tests' processes.
        const std::string libraries = run("env", {"-u", "LD_PRELOAD", "ldd", user});
        EXPECT_THAT(libraries, HasSubstr(used + " => " + prefix().toStdString()));
        EXPECT_THAT(libraries, Not(HasSubstr("not found")));
        EXPECT_THAT(libraries, Not(HasSubstr(TAVO_BUILD_FOLDER)));
    }
}

TEST_F(InstalledPackageTest, AModuleIsBuiltAndTestedAgainstIt)
{
    buildExample("doorbell");
    const std::string tests = run(CMAKE_PROGRAM, {"--build", exampleBuild(), "--target", "test"});
    EXPECT_THAT(tests, HasSubstr("100% tests passed, 0 tests failed out of 1"));
    EXPECT_THAT(run(installedHost(), {"--config", exampleBuild() + "/try.json", "--check"}),
                HasSubstr("good, 5 modules"));
}

TEST_F(InstalledPackageTest, TheExampleRunsInTheHost)
{
    buildExample();
    m_host.addArguments({"--module-path", exampleModules()});
    const QString timeline = m_folder.filePath("timeline.jsonl");
    m_host.setConfiguration(
        {{"modules", QJsonArray{"powermanager", "player", "notifications",
                                QJsonObject{{"name", "demo"},
                                            {"config", QJsonObject{{"timeline", timeline}}}}}}});
    ASSERT_TRUE(m_host.startReady()) << m_host.log().toStdString();
    EXPECT_TRUE(waitFor([&] {
        QFile file(timeline);
        return file.open(QIODevice::ReadOnly) && file.readAll().contains("\"begun\"");
    }));
    EXPECT_EQ(m_host.stop(), 0) << m_host.log().toStdString();
}

TEST_F(InstalledPackageTest, ASessionBusStartsTheHostOnTheFirstCall)
{
    const QString services = prefix() + "/" TAVO_INSTALL_DATADIR "/dbus-1/services";
    const PrivateBus bus("<servicedir>" + services + "</servicedir>");
    const auto gdbus = [&bus](const QStringList &arguments) {
        ClientProgram client(bus, "gdbus", QStringList{"call", "--session"} + arguments);
        EXPECT_TRUE(client.succeeds()) << client.errors().toStdString();
        return client.output().trimmed();
    };
    const QString value =
        gdbus({"--dest", "org.tavo.Model1", "--object-path", "/org/tavo/Model1", "--method",
               "org.tavo.Model1.GetValue", "/notifications/player/isPlaying"});
    EXPECT_EQ(value.toStdString(), "(<{'bool': <false>}>,)");
    const QString process =
        gdbus({"--dest", "org.freedesktop.DBus", "--object-path", "/", "--method",
               "org.freedesktop.DBus.GetConnectionUnixProcessID", "org.tavo.Model1"});
    const int processId = process.mid(int(qstrlen("(uint32 "))).chopped(2).toInt();
    ASSERT_GT(processId, 1);
    EXPECT_EQ(::kill(processId, SIGTERM), 0);
}

TEST_F(InstalledPackageTest, InstallsTheInterfaceAndThePolicyOfTheSystemBus)
{
    const QString folder = prefix() + "/" TAVO_INSTALL_DATADIR "/dbus-1/";
    EXPECT_TRUE(QFile::exists(folder + "interfaces/org.freedesktop.Notifications.xml"));
    EXPECT_TRUE(QFile::exists(folder + "interfaces/org.tavo.Model1.xml"));
    EXPECT_TRUE(QFile::exists(folder + "system.d/org.tavo.Model1.conf"));
}

TEST_F(InstalledPackageTest, TheUnitsRunTheInstalledHost)
{
    const QString host = "ExecStart=" + installedHost();
    EXPECT_THAT(contents("lib/systemd/user/tavo-host.service"),
                HasSubstr((host + '\n').toStdString()));
    EXPECT_THAT(contents("lib/systemd/system/tavo-host.service"),
                HasSubstr((host + " --config " + prefix() + "/etc/tavo/host.json ").toStdString()));
}

TEST_F(InstalledPackageTest, TheBusesStartTheUnits)
{
    const std::string system =
        contents(TAVO_INSTALL_DATADIR "/dbus-1/system-services/org.tavo.Model1.service");
    EXPECT_THAT(system, HasSubstr("\nSystemdService=dbus-org.tavo.Model1.service\n"));
    EXPECT_THAT(contents("lib/systemd/system/tavo-host.service"),
                HasSubstr("\nAlias=dbus-org.tavo.Model1.service\n"));
    EXPECT_THAT(contents(TAVO_INSTALL_DATADIR "/dbus-1/services/org.tavo.Model1.service"),
                HasSubstr("\nSystemdService=tavo-host.service\n"));
}

TEST_F(InstalledPackageTest, TheConfigurationOfTheServiceIsGood)
{
    EXPECT_THAT(run(installedHost(), {"--check", "--config", prefix() + "/etc/tavo/host.json"}),
                HasSubstr("good, 5 modules"));
}

TEST_F(InstalledPackageTest, AnotherInstallationKeepsAChangedConfiguration)
{
    QFile file(prefix() + "/etc/tavo/host.json");
    ASSERT_TRUE(file.open(QIODevice::Append));
    file.write("\n\n");
    file.close();
    const std::string changed = contents("etc/tavo/host.json");
    SetUp();
    EXPECT_EQ(contents("etc/tavo/host.json"), changed);
}

TEST_F(InstalledPackageTest, PkgConfigFindsTheLibraries)
{
    const QString folder = QFileInfo(moduleFile("x")).path() + "/../../pkgconfig";
    const std::string flags = run("env", {"PKG_CONFIG_PATH=" + folder, "pkg-config", "--cflags",
                                          "--libs", "tavo-client", "tavo-simpleplayer"});
    EXPECT_THAT(flags, HasSubstr("include/tavo"));
    EXPECT_THAT(flags, HasSubstr("-ltavo_client"));
    EXPECT_THAT(flags, HasSubstr("-ltavo_simpleplayer"));
}

/// A host without sound devices, and the clients among the examples, each of which plays a sound and then
/// shows a message.
class InstalledClientsTest : public InstalledPackageTest
{
protected:
    void SetUp() override
    {
        InstalledPackageTest::SetUp();
        const QJsonObject silent{{"mainDevice", "null"}, {"notificationsDevice", "null"}};
        const QJsonObject onBus{{"bus", m_bus.address()}};
        m_host.setConfiguration(
            {{"modules",
              QJsonArray{"powermanager", QJsonObject{{"name", "player"}, {"config", silent}},
                         "notifications", QJsonObject{{"name", "dbus"}, {"config", onBus}}}}});
        ASSERT_TRUE(m_host.startReady()) << m_host.log().toStdString();
        ASSERT_TRUE(m_host.waitForLog("Serving org.freedesktop.Notifications"));
        writeSound(sound(), SF_FORMAT_WAV | SF_FORMAT_PCM_16, 8000, countingSamples(800));
    }
    void TearDown() override
    {
        EXPECT_THAT(runOnBus(program("tavo"), {"list"}), HasSubstr("Somebody rang"));
        EXPECT_EQ(m_host.stop(), 0) << m_host.log().toStdString();
    }

    QString sound() const { return m_folder.filePath("bell.wav"); }
    QString program(const QString &name) const
    {
        return prefix() + "/" TAVO_INSTALL_BINDIR "/" + name;
    }
    static QString source(const QString &name) { return TAVO_EXAMPLES_FOLDER "/clients/" + name; }

    std::string runOnBus(const QString &command, const QStringList &arguments) const
    {
        const QString path = prefix() + "/" TAVO_INSTALL_BINDIR ":" + qEnvironmentVariable("PATH");
        const QStringList environment{"DBUS_SESSION_BUS_ADDRESS=" + m_bus.address(), "PATH=" + path,
                                      command};
        return run("env", environment + arguments);
    }

    const PrivateBus m_bus;
};

TEST_F(InstalledClientsTest, AClientInCppBuildsAgainstItAndReachesTheHost)
{
    buildExample("client");
    EXPECT_EQ(run(exampleBuild() + "/doorbell", {m_bus.address(), sound()}), "Started\nFinished\n");
}

TEST_F(InstalledClientsTest, AClientInCReachesTheHost)
{
    const QString client = m_folder.filePath("client");
    run("sh",
        {"-c", "cc -Wall -Wextra -Werror \"$0\" -o \"$1\" $(pkg-config --cflags --libs gio-2.0)",
         source("doorbell.c"), client});
    EXPECT_EQ(runOnBus(client, {sound()}), "Started\nFinished\n");
}

TEST_F(InstalledClientsTest, AClientInPythonReachesTheHost)
{
    EXPECT_EQ(runOnBus(source("doorbell.py"), {sound()}), "Started\nFinished\n");
}

TEST_F(InstalledClientsTest, AClientInShellReachesTheHost)
{
    EXPECT_THAT(runOnBus(source("doorbell.sh"), {sound()}), testing::EndsWith("finished\n"));
}

TEST_F(InstalledPackageTest, ComesWithManPagesAndCompletions)
{
    EXPECT_THAT(run(prefix() + "/" TAVO_INSTALL_BINDIR "/tavo", {"--version"}),
                testing::StartsWith("tavo "));
    for (const char *file : {"man/man1/tavo.1", "man/man1/tavo-host.1", "man/man5/tavo-host.json.5",
                             "bash-completion/completions/tavo", "zsh/site-functions/_tavo",
                             "fish/vendor_completions.d/tavo.fish"}) {
        EXPECT_GT(QFileInfo(prefix() + "/" TAVO_INSTALL_DATADIR "/" + file).size(), 1000) << file;
    }
}
