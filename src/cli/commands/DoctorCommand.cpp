// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/DoctorCommand.h"

#include "base/Printable.h"
#include "cli/commands/AttentionState.h"
#include "cli/commands/ErrorText.h"
#include "cli/doctor/Disks.h"
#include "cli/doctor/HostModules.h"
#include "cli/doctor/RunningHost.h"
#include "cli/doctor/SoundDevice.h"
#include <core/base/connect.h>

#include <QFile>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QTimer>

#include <algorithm>
#include <attention/MissingFiles.h>
#include <stdexcept>

using State = Finding::State;

namespace {
constexpr int timeoutMs = 10000; ///< of other programs

QString deviceConfiguration()
{
    return QStringLiteral("/etc/tavo/host.json");
}

/// What the settings of attention name but this device does not have, as far as this user may read them.
QStringList missingFilesOf(const QString &name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QByteArray json = file.readAll();
    try {
        return missingFiles(AttentionSettings::fromJson(json, name), json, name);
    } catch (const std::runtime_error &) {
        return {}; // it has changed since the host read it
    }
}
} // namespace

DoctorCommand::DoctorCommand(const Options &options, TavoClient &client, Terminal &terminal)
    : Command(options, client, terminal)
    , m_messages(&client)
{
    tavoConnect(&m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
                &DoctorCommand::on_process_ended);
    tavoConnect(&m_check, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
                &DoctorCommand::on_check_ended);
    tavoConnect(&m_service, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
                &DoctorCommand::on_service_ended);
    tavoConnect(&m_displayService, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished),
                this, &DoctorCommand::on_displayService_ended);
    tavoConnect(&m_fleetService, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished),
                this, &DoctorCommand::on_fleetService_ended);
    tavoConnect(&m_display, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
                &DoctorCommand::on_display_ended);
}

void DoctorCommand::start()
{
    m_findings += lookAtDisks();
    lookAtModuleFiles();
}

void DoctorCommand::lookAtModuleFiles()
{
    const QString program = programBeside(QStringLiteral("tavo-host"));
    if (program.isEmpty()) {
        add(State::Notice, "modules", QStringLiteral("tavo-host is not installed here"),
            QStringLiteral("install it, unless the host runs elsewhere"));
        lookAtHost();
        return;
    }
    QTimer::singleShot(timeoutMs, &m_process, &QProcess::kill);
    m_process.start(program, {QStringLiteral("--list-modules")});
}

void DoctorCommand::on_process_ended()
{
    if (m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0) {
        m_findings += lookAtModules(m_process.readAllStandardOutput());
    } else {
        add(State::Missing, "modules", QStringLiteral("tavo-host --list-modules fails"),
            QStringLiteral("run it: %1 --list-modules").arg(m_process.program()));
    }
    lookAtConfiguration();
}

void DoctorCommand::lookAtConfiguration()
{
    if (!isSystemBus() || !QFile::exists(deviceConfiguration())) {
        lookAtRunningService();
        return;
    }
    QTimer::singleShot(timeoutMs, &m_check, &QProcess::kill);
    m_check.start(m_process.program(),
                  {QStringLiteral("--config"), deviceConfiguration(), QStringLiteral("--check")});
}

void DoctorCommand::on_check_ended()
{
    if (m_check.exitStatus() == QProcess::NormalExit && m_check.exitCode() == 0) {
        add(State::Good, "configuration",
            QString::fromLocal8Bit(m_check.readAllStandardOutput()).trimmed());
        lookAtRunningService();
        return;
    }
    add(State::Missing, "configuration",
        QString::fromLocal8Bit(m_check.readAllStandardError()).trimmed(),
        QStringLiteral("correct it, and start the host: systemctl restart tavo-host"));
    lookAtHost();
}

void DoctorCommand::lookAtRunningService()
{
    if (!askSystemd(&m_service, QStringLiteral("tavo-host"))) {
        lookAtHost();
    }
}

bool DoctorCommand::askSystemd(QProcess *process, const QString &unit)
{
    const QString systemctl = QStandardPaths::findExecutable(QStringLiteral("systemctl"));
    const bool isSession = options().bus == "session";
    if (systemctl.isEmpty() || !(isSession || isSystemBus())) {
        return false;
    }
    // systemd has a socket of its own. The bus may hang.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    process->setProcessEnvironment(environment);
    QTimer::singleShot(timeoutMs, process, &QProcess::kill);
    process->start(systemctl, {isSession ? QStringLiteral("--user") : QStringLiteral("--system"),
                               QStringLiteral("show"), unit,
                               QStringLiteral("--property=") + serviceProperties()});
    return true;
}

void DoctorCommand::on_service_ended()
{
    if (const auto finding = lookAtService(m_service.readAllStandardOutput(),
                                           isSystemBus() ? deviceConfiguration() : QString())) {
        m_findings.append(*finding);
    }
    lookAtHost();
}

void DoctorCommand::lookAtHost()
{
    client().version().onFinished(this, [this](const CMReply<QString> &answer) {
        const CMError error = answer.error();
        const QString bus = QString::fromStdString(options().bus);
        if (error.name() == TavoClientError::noBus()) {
            add(State::Missing, "bus",
                QStringLiteral("%1 can't be reached: %2").arg(bus, error.message().toString()),
                isSystemBus() ? QStringLiteral("start dbus: systemctl start dbus")
                              : QStringLiteral("log in to a session, start one with "
                                               "dbus-run-session -- bash, or name the host's bus "
                                               "with --bus or TAVO_BUS"));
            conclude();
            return;
        }
        if (error.name() == TavoClientError::busTimedOut()) {
            add(State::Missing, "bus",
                QStringLiteral("%1 takes connections but does not answer").arg(bus),
                QStringLiteral("restart it: its daemon hangs, or has been stopped (kill -CONT "
                               "resumes it)"));
            conclude();
            return;
        }
        add(State::Good, "bus", QStringLiteral("%1 can be reached").arg(bus));
        if (error.name() == TavoClientError::notPermitted()) {
            add(State::Missing, "host", QStringLiteral("this user may not call it"),
                errorText(error, {}, bus));
            conclude();
            return;
        }
        if (error.isError()) {
            add(State::Missing, "host", error.message().toString(),
                (isSystemBus() ? QStringLiteral("systemctl enable --now tavo-host; or ")
                               : QString()) +
                    QStringLiteral(
                        "start tavo-host with a configuration whose modules include dbus, "
                        "with \"bus\": \"%1\" in its config; its log says what it serves, or why "
                        "it "
                        "has ended")
                        .arg(bus));
            conclude();
            return;
        }
        if (isOutdated(answer.value())) {
            add(State::Notice, "host", outdatedText(answer.value()),
                isSystemBus() ? QStringLiteral("systemctl restart tavo-host")
                              : QStringLiteral("systemctl --user restart tavo-host"));
        } else {
            add(State::Good, "host", QStringLiteral("version %1").arg(answer.value()));
        }
        lookAtNodes();
    });
}

void DoctorCommand::lookAtNodes()
{
    client().tree().onFinished(this, [this](const CMReply<QVector<TavoClientNode>> &answer) {
        if (!answer.error().isError()) {
            lookForModules(answer.value());
            lookAtAttention();
            return;
        }
        add(State::Missing, "host", QStringLiteral("did not tell what it runs"),
            errorText(answer.error(), {}, QString::fromStdString(options().bus)));
        conclude();
    });
}

void DoctorCommand::lookForModules(const QVector<TavoClientNode> &nodes)
{
    const auto isThere = [&nodes](const CMPath &path) {
        return std::any_of(nodes.begin(), nodes.end(),
                           [&path](const TavoClientNode &node) { return node.path == path; });
    };
    const std::pair<const char *, CMPath> usual[] = {
        {"powermanager", TavoPowerManagerStatePath()},
        {"player", TavoPlayerMainAudioStatePath()},
        {"notifications", TavoNotificationPlayerEnqueuePath()}};
    for (const auto &[module, path] : usual) {
        if (isThere(path)) {
            add(State::Good, "host", QStringLiteral("runs %1").arg(QLatin1String(module)));
        } else {
            add(State::Missing, "host",
                QStringLiteral("does not run %1").arg(QLatin1String(module)),
                QStringLiteral("list it in the host's configuration: \"modules\": [\"%1\", ...]")
                    .arg(QLatin1String(module)));
        }
    }
}

void DoctorCommand::lookAtAttention()
{
    readAttention(client(), this, [this](const AttentionState &state, const CMError &error) {
        if (error.isError()) {
            add(State::Notice, "attention",
                QStringLiteral("the host does not run attention: there is no do-not-disturb and no "
                               "history"),
                QStringLiteral("list it in the host's configuration: \"modules\": "
                               "[\"attention\", ...]"));
        } else {
            const bool isOn = state.doNotDisturb.on();
            add(isOn ? State::Notice : State::Good, "attention",
                QStringLiteral("do-not-disturb is ") + doNotDisturbText(state.doNotDisturb),
                isOn ? QStringLiteral("to be disturbed: tavo dnd off") : QString());
            lookAtSettings(state.rules);
            lookAtHistory(state.history, state.missed);
        }
        lookAtMessages();
    });
}

void DoctorCommand::lookAtSettings(const TavoAttentionRules &rules)
{
    if (!rules.error().isEmpty()) {
        add(State::Missing, "settings", rules.error(),
            QStringLiteral("correct them; %1 until then")
                .arg(rules.isRead() ? QStringLiteral("the previous ones stay in use")
                                    : QStringLiteral("there are no rules and no schedule")));
        return;
    }
    const QStringList missing = rules.isRead() ? missingFilesOf(rules.file()) : QStringList();
    for (const QString &each : missing) {
        add(State::Missing, "settings", each,
            QStringLiteral("install it, or name another; tavo rules check tells when it is right"));
    }
    if (!missing.isEmpty()) {
        return;
    }
    add(State::Good, "settings",
        rules.isRead() ? QStringLiteral("%1, rules: %2").arg(rules.file()).arg(rules.rules().size())
                       : QStringLiteral("none: there is no %1").arg(rules.file()));
}

void DoctorCommand::lookAtHistory(const TavoAttentionHistory &history, int missed)
{
    if (history.kept()) {
        add(State::Good, "history",
            QStringLiteral("%1, missed: %2").arg(history.file()).arg(missed));
        return;
    }
    const bool isChosen = history.file().isEmpty();
    add(isChosen ? State::Notice : State::Missing, "history", history.reason(),
        isChosen ? QStringLiteral("to keep one, remove \"file\" from \"history\" in the "
                                  "configuration of attention")
                 : QStringLiteral("see the logger Attention in the host's log"));
}

void DoctorCommand::lookAtMessages()
{
    m_messages.isDesktopServer().onFinished(this, [this](const CMReply<bool> &answer) {
        if (answer.error().isError()) {
            add(State::Notice, "messages",
                QStringLiteral("no program shows notifications of desktop programs"),
                QStringLiteral("set \"notifications\": true in the host's configuration of the "
                               "module dbus"));
        } else if (!answer.value()) {
            add(State::Notice, "messages",
                QStringLiteral("another program shows notifications of desktop programs"),
                QStringLiteral(
                    "end the other notification server; the host then takes over. busctl "
                    "--user status org.freedesktop.Notifications names it"));
        } else {
            add(State::Good, "messages",
                QStringLiteral("notifications of desktop programs are accepted"));
        }
        lookAtMusic();
    });
}

void DoctorCommand::lookAtMusic()
{
    client()
        .getValue(TavoPlayerMainAudioStatePath())
        .onFinished(this, [this](const CMReply<QVariant> &answer) {
            const QString error = TavoValue(answer.value().toHash()).mainAudioState().error();
            if (!error.isEmpty()) {
                add(State::Missing, "main audio", error,
                    QStringLiteral("see the loggers Player and SimplePlayer in the host's log"));
            }
            lookAtDevices();
        });
}

void DoctorCommand::lookAtDevices()
{
    lookAtDevice(QStringLiteral("notifications' device"), TavoPlayerAlsaDeviceNotificationsPath(),
                 [this] {
                     lookAtDevice(QStringLiteral("main audio's device"),
                                  TavoPlayerAlsaDeviceMainPath(), [this] { lookAtDisplay(); });
                 });
}

void DoctorCommand::lookAtDisplay()
{
    // The device's screen may be known to its service only.
    if (!isSystemBus() || !askSystemd(&m_displayService, QLatin1String(displayService.name))) {
        checkDisplay();
    }
}

void DoctorCommand::on_displayService_ended()
{
    if (const auto finding =
            lookAtOtherService(displayService, m_displayService.readAllStandardOutput())) {
        m_findings.append(*finding);
        lookAtFleet();
        return;
    }
    checkDisplay();
}

void DoctorCommand::checkDisplay()
{
    const QString program = programBeside(QStringLiteral("tavo-display"));
    if (program.isEmpty()) {
        add(State::Notice, "screen", QStringLiteral("tavo-display is not installed here"),
            QStringLiteral("install it to see messages, if the device has a screen"));
        lookAtFleet();
        return;
    }
    QTimer::singleShot(timeoutMs, &m_display, &QProcess::kill);
    m_display.start(program, {QStringLiteral("--check"), QStringLiteral("--bus"),
                              QString::fromStdString(options().bus)});
}

void DoctorCommand::on_display_ended()
{
    if (m_display.exitStatus() != QProcess::NormalExit || m_display.exitCode() != 0) {
        add(State::Notice, "screen",
            QString::fromLocal8Bit(m_display.readAllStandardError()).trimmed(),
            QStringLiteral("tavo-display --check tells when it is right"));
    } else if (m_display.readAllStandardOutput().endsWith("\nrunning\n")) {
        add(State::Good, "screen", QStringLiteral("tavo-display shows the messages"));
    } else if (isSystemBus()) {
        add(State::Notice, "screen",
            QStringLiteral("tavo-display does not run for this user, and those of others can't be "
                           "seen"),
            QStringLiteral("systemctl status tavo-display tells whether the device's runs"));
    } else {
        add(State::Notice, "screen", QStringLiteral("tavo-display does not run for this user"),
            QStringLiteral("start it: tavo-display, or on a device: systemctl enable --now "
                           "tavo-display"));
    }
    lookAtFleet();
}

void DoctorCommand::lookAtFleet()
{
    if (!isSystemBus() || !askSystemd(&m_fleetService, QLatin1String(fleetService.name))) {
        conclude();
    }
}

void DoctorCommand::on_fleetService_ended()
{
    if (const auto finding =
            lookAtOtherService(fleetService, m_fleetService.readAllStandardOutput())) {
        m_findings.append(*finding);
    }
    conclude();
}

bool DoctorCommand::isSystemBus() const
{
    return options().bus == "system";
}

void DoctorCommand::lookAtDevice(const QString &subject, const CMPath &path,
                                 std::function<void()> next)
{
    client().getValue(path).onFinished(
        this, [this, subject, next](const CMReply<QVariant> &answer) {
            const QString device = TavoValue(answer.value().toHash()).audioDevice().device();
            if (!device.isEmpty()) {
                m_findings.append(lookAtSoundDevice(subject, device));
            }
            next();
        });
}

void DoctorCommand::add(State state, const char *subject, const QString &text,
                        const QString &remedy)
{
    m_findings.append({state, QString::fromLatin1(subject), text, remedy});
}

void DoctorCommand::conclude()
{
    printFindings();
    const bool isMissing =
        std::any_of(m_findings.begin(), m_findings.end(),
                    [](const Finding &finding) { return finding.state == State::Missing; });
    finish(isMissing ? ExitCode::Refused : ExitCode::Ok);
}

void DoctorCommand::printFindings()
{
    static const struct
    {
        const char *word;
        Terminal::Style style;
    } s_states[] = {{"good", Terminal::Style::Good},
                    {"notice", Terminal::Style::Notice},
                    {"missing", Terminal::Style::Bad}};
    QVariantList list;
    QStringList lines;
    for (const Finding &finding : qAsConst(m_findings)) {
        const auto &state = s_states[static_cast<int>(finding.state)];
        const QString word = QString::fromLatin1(state.word);
        list.append(QVariantHash{{QStringLiteral("state"), word},
                                 {QStringLiteral("subject"), finding.subject},
                                 {QStringLiteral("finding"), finding.text},
                                 {QStringLiteral("remedy"), finding.remedy}});
        constexpr int width = 9;
        lines.append(terminal().styled(word.leftJustified(width), state.style) +
                     terminal().styled(finding.subject, Terminal::Style::Bold) +
                     QStringLiteral(": ") + printable(finding.text));
        if (!finding.remedy.isEmpty()) {
            lines.append(QString(width, QLatin1Char(' ')) + printable(finding.remedy));
        }
    }
    print(list, lines.join(QLatin1Char('\n')));
}
