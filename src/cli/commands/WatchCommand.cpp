// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/WatchCommand.h"

#include "base/Printable.h"
#include <core/base/connect.h>

#include <QTime>

namespace {
/// The most rows that are printed: a queue may have a hundred thousand.
constexpr int maxRows = 20;

bool isUnsupported(const CMError &error)
{
    return error.name() == CMErrors::notSupported();
}
} // namespace

WatchCommand::WatchCommand(const Options &options, TavoClient &client, Terminal &terminal)
    : Command(options, client, terminal)
{
    tavoConnect(&client, &TavoClient::availableChanged, this,
                &WatchCommand::on_client_availableChanged);
    tavoConnect(&client, &TavoClient::valueChanged, this, &WatchCommand::on_client_valueChanged);
    tavoConnect(&client, &TavoClient::rowsChanged, this, &WatchCommand::on_client_rowsChanged);
    tavoConnect(&client, &TavoClient::nodeChanged, this, &WatchCommand::on_client_nodeChanged);
    tavoConnect(&client, &TavoClient::changesDropped, this,
                &WatchCommand::on_client_changesDropped);
    tavoConnect(&client, &TavoClient::subscriptionFailed, this,
                &WatchCommand::on_client_subscriptionFailed);
}

void WatchCommand::start()
{
    if (options().path.empty()) {
        follow(TavoNotificationPlayerIsPlayingPath(), Kind::Value);
        follow(TavoNotificationDisplayQueuePath(), Kind::Rows);
        follow(TavoPlayerMainAudioStatePath(), Kind::Value);
        follow(TavoPowerManagerStatePath(), Kind::Value);
    } else {
        const CMPath path = typedPath();
        if (path.isEmpty()) {
            return;
        }
        follow(path, Kind::Any);
        client().subscribe(path, TavoClient::Change::Node);
    }
    // Ends the program if there is no host at first.
    onAnswer<QString>(client().version(), {}, [](const QString &) {});
}

void WatchCommand::follow(const CMPath &path, Kind kind)
{
    m_followed.append({path, kind});
    if (kind != Kind::Rows) {
        client().subscribe(path, TavoClient::Change::Value);
    }
    if (kind != Kind::Value) {
        client().subscribe(path, TavoClient::Change::Rows);
    }
}

void WatchCommand::interrupt(int /*signal*/)
{
    finish(ExitCode::Ok); // its usual end
}

void WatchCommand::on_client_availableChanged(bool available)
{
    if (m_wasAvailable) {
        report({}, {{QStringLiteral("host"), false}},
               terminal().styled(QStringLiteral("the host has gone, waiting for it"),
                                 Terminal::Style::Bad));
    }
    m_wasAvailable = available;
    m_readings.clear();
    m_withoutValue.clear();
    if (available) {
        readAll();
    }
}

void WatchCommand::readAll()
{
    for (const Followed &followed : qAsConst(m_followed)) {
        read(followed);
    }
}

void WatchCommand::read(const Followed &followed)
{
    if (followed.kind != Kind::Rows) {
        readValue(followed.path);
    }
    if (followed.kind != Kind::Value) {
        on_client_rowsChanged(followed.path, {}, -1, 0);
    }
}

void WatchCommand::readValue(const CMPath &path)
{
    client().getValue(path).onFinished(this, [this, path](const CMReply<QVariant> &answer) {
        if (!answer.error().isError()) {
            on_client_valueChanged(path, answer.value());
        } else if (isUnsupported(answer.error())) {
            m_withoutValue.insert(path);
        }
    });
}

void WatchCommand::on_client_valueChanged(const CMPath &path, const QVariant &value)
{
    report(path, {{QStringLiteral("value"), value}},
           QString::fromUtf8(toJson(value, JsonForm::Line)));
}

void WatchCommand::on_client_rowsChanged(const CMPath &path, const QStringList &changes,
                                         int /*first*/, int /*count*/)
{
    // Rows that changed while they were read are read once more, not once for each change.
    const bool isReading = m_readings.contains(path);
    Reading &reading = m_readings[path];
    reading.changes += changes;
    reading.isDue = isReading;
    if (!isReading) {
        readRows(path);
    }
}

void WatchCommand::readRows(const CMPath &path)
{
    client()
        .rows(path, 0, maxRows + 1)
        .onFinished(this, [this, path](const CMReply<QVariantList> &answer) {
            if (!m_readings.contains(path)) {
                return; // the reply of a host that has gone
            }
            if (m_readings[path].isDue) {
                m_readings[path].isDue = false;
                readRows(path);
                return;
            }
            if (!answer.error().isError()) {
                printRows(path, answer.value());
            } else {
                on_rows_refused(path, answer.error());
            }
            m_readings.remove(path);
        });
}

void WatchCommand::on_rows_refused(const CMPath &path, const CMError &error)
{
    if (error.name() == CMErrors::noSuchNode()) {
        if (!m_readings[path].changes.isEmpty()) {
            return; // nodeChanged() reports it
        }
        report(path, {{QStringLiteral("published"), false}}, QStringLiteral("is not there"));
    } else if (!isUnsupported(error)) {
        fail(error, path);
    } else if (m_withoutValue.contains(path)) {
        // Its value was requested first.
        fail(ExitCode::Refused, QStringLiteral("%1 takes requests and has neither a value nor rows")
                                    .arg(path.toString()));
    }
}

void WatchCommand::printRows(const CMPath &path, const QVariantList &rows)
{
    const QVariantList shown = rows.mid(0, maxRows);
    const bool isCut = rows.size() > maxRows;
    QStringList changes = m_readings[path].changes;
    changes.removeDuplicates();
    const QString rowsText = QString::fromUtf8(toJson(shown, JsonForm::Line));
    report(path,
           {{QStringLiteral("changes"), changes},
            {QStringLiteral("rows"), shown},
            {QStringLiteral("more"), isCut}},
           (changes.isEmpty() ? QString() : changes.join(QLatin1Char(',')) + QLatin1Char(' ')) +
               rowsText + (isCut ? QStringLiteral(" and more") : QString()));
}

void WatchCommand::on_client_nodeChanged(const CMPath &path, bool published)
{
    report(path, {{QStringLiteral("published"), published}},
           published ? QStringLiteral("is there") : QStringLiteral("has gone"));
    if (published) {
        readAll();
    }
}

void WatchCommand::on_client_changesDropped(const CMPath &path, uint count)
{
    report(
        path, {{QStringLiteral("dropped"), count}},
        terminal().styled(QStringLiteral("changes left out: %1").arg(count), Terminal::Style::Bad));
    if (m_readings.contains(path)) {
        // The signal that the node has gone may be among them: on_rows_refused() reports it then.
        m_readings[path].changes.clear();
    }
    for (const Followed &followed : qAsConst(m_followed)) {
        if (followed.path == path) {
            read(followed);
        }
    }
}

void WatchCommand::on_client_subscriptionFailed(const CMPath &path, const CMError &error)
{
    fail(error, path);
}

void WatchCommand::report(const CMPath &path, const QVariantHash &fields, const QString &text)
{
    printChange(path, fields, text);
    if (!terminal().isGood()) {
        finish(ExitCode::SystemError);
    }
}

void WatchCommand::printChange(const CMPath &path, const QVariantHash &fields, const QString &text)
{
    const QTime now = QTime::currentTime();
    if (!options().json) {
        const QString time = now.toString(QStringLiteral("HH:mm:ss.zzz"));
        constexpr int maxSize = 4000;
        const QString name =
            path.isEmpty() ? QString() : printable(path.toString()) + QLatin1Char(' ');
        terminal().print(terminal().styled(time, Terminal::Style::Faint) + QLatin1Char(' ') +
                         terminal().styled(name, Terminal::Style::Bold) +
                         (terminal().isTerminal() ? shortened(text, maxSize) : text));
        return;
    }
    QVariantHash line = fields;
    if (!path.isEmpty()) {
        line.insert(QStringLiteral("path"), path.toString());
    }
    terminal().printJson(toJson(line, JsonForm::Line));
}
