// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/commands/Command.h"

// The commands that send one request to the host and print the reply.

class GetCommand : public Command
{
    Q_OBJECT

public:
    using Command::Command;

    void start() override;
};

class RowsCommand : public Command
{
    Q_OBJECT

public:
    using Command::Command;

    void start() override;

private:
    void printRows(const QVariantList &rows);
};

class CallCommand : public Command
{
    Q_OBJECT

public:
    using Command::Command;

    void start() override;
};

class TreeCommand : public Command
{
    Q_OBJECT

public:
    using Command::Command;

    void start() override;

private:
    void printNodes(const QVector<TavoClientNode> &nodes);
    QString textOf(const QVector<TavoClientNode> &nodes);
    QString nodeText(const QString &name, const TavoClientNode &node);
    QString treeOf(const QVector<TavoClientNode> &nodes);
};
