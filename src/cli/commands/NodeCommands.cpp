// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/NodeCommands.h"

#include "base/Printable.h"
#include "cli/output/ValueText.h"

#include <QFile>

void GetCommand::start()
{
    const CMPath path = typedPath();
    if (path.isEmpty()) {
        return;
    }
    onAnswer<QVariant>(client().getValue(path), path, [this](const QVariant &value) {
        print(value, valueText(value));
        finish(ExitCode::Ok);
    });
}

void RowsCommand::start()
{
    const CMPath path = typedPath();
    if (path.isEmpty()) {
        return;
    }
    const auto use = [this](const QVariantList &rows) {
        if (options().json) {
            print(rows, {});
        } else {
            printRows(rows);
        }
        finish(ExitCode::Ok);
    };
    onAnswer<QVariantList>(client().rows(path, options().first, options().count), path, use);
}

void RowsCommand::printRows(const QVariantList &rows)
{
    bool isFirst = true;
    bool wasLong = false;
    for (const QVariant &row : rows) {
        const QString text = valueText(row);
        const bool isLong = text.contains(QLatin1Char('\n'));
        // A blank line separates rows of several lines.
        const bool isApart = !isFirst && (isLong || wasLong);
        terminal().print(isApart ? QLatin1Char('\n') + text : text);
        isFirst = false;
        wasLong = isLong;
    }
}

void CallCommand::start()
{
    const CMPath path = typedPath();
    if (path.isEmpty()) {
        return;
    }
    QByteArray json = QByteArray::fromStdString(options().value);
    if (json == "-") {
        QFile input;
        if (!input.open(stdin, QIODevice::ReadOnly)) {
            fail(ExitCode::NoInput, QStringLiteral("standard input can't be read"));
            return;
        }
        json = input.readAll();
    }
    QVariant value;
    if (!json.isEmpty()) {
        const auto read = fromJson(json);
        if (const auto *failure = std::get_if<Failure>(&read)) {
            fail(ExitCode::Usage,
                 QStringLiteral("the value is not JSON: %1. A string needs its quotes: "
                                "'\"like this\"'")
                     .arg(failure->reason));
            return;
        }
        value = std::get<QVariant>(read);
    }
    onAnswer<QVariant>(client().call(path, value), path, [this](const QVariant &answer) {
        if (answer.isValid() || options().json) {
            print(answer, valueText(answer));
        }
        finish(ExitCode::Ok);
    });
}

void TreeCommand::start()
{
    CMPath path;
    if (!options().path.empty() && options().path != "/") {
        path = typedPath();
        if (path.isEmpty()) {
            return;
        }
    }
    onAnswer<QVector<TavoClientNode>>(
        client().tree(path), path, [this, path](const QVector<TavoClientNode> &nodes) {
            if (nodes.isEmpty() && !path.isEmpty()) {
                fail(CMError(CMErrors::noSuchNode(), QString()), path);
                return;
            }
            printNodes(nodes);
            finish(ExitCode::Ok);
        });
}

void TreeCommand::printNodes(const QVector<TavoClientNode> &nodes)
{
    if (!options().json) {
        const QString text = terminal().isTerminal() ? treeOf(nodes) : textOf(nodes);
        if (!text.isEmpty()) {
            terminal().print(text);
        }
        return;
    }
    QVariantList list;
    for (const TavoClientNode &node : nodes) {
        list.append(QVariantHash{{QStringLiteral("path"), node.path.toString()},
                                 {QStringLiteral("kind"), node.kind},
                                 {QStringLiteral("title"), node.title}});
    }
    print(list, {});
}

QString TreeCommand::textOf(const QVector<TavoClientNode> &nodes)
{
    QStringList lines;
    for (const TavoClientNode &node : nodes) {
        lines.append(printable(node.path.toString()) + QLatin1Char('\t') + printable(node.kind) +
                     QLatin1Char('\t') + printable(node.title));
    }
    return lines.join(QLatin1Char('\n'));
}

QString TreeCommand::nodeText(const QString &name, const TavoClientNode &node)
{
    const QString text = terminal().styled(name, Terminal::Style::Bold) + QLatin1Char(' ') +
                         terminal().styled(printable(node.kind), Terminal::Style::Faint);
    return node.title.isEmpty() ? text : text + QStringLiteral("  ") + printable(node.title);
}

QString TreeCommand::treeOf(const QVector<TavoClientNode> &nodes)
{
    constexpr int step = 2;
    QStringList lines;
    QStringList above; // the segments of the line before
    for (const TavoClientNode &node : nodes) {
        const QStringList segments = node.path.toString().mid(1).split(QLatin1Char('/'));
        int shared = 0;
        while (shared < above.size() && shared < segments.size() - 1 &&
               above[shared] == segments[shared]) {
            ++shared;
        }
        for (int depth = shared; depth < segments.size(); ++depth) {
            const bool isNode = depth == segments.size() - 1;
            const QString name = printable(segments[depth]);
            lines.append(QString(depth * step, QLatin1Char(' ')) +
                         (isNode ? nodeText(name, node) : name));
        }
        above = segments;
    }
    return lines.join(QLatin1Char('\n'));
}
