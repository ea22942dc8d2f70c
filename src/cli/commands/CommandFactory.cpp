// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/CancelCommand.h"
#include "cli/commands/DoctorCommand.h"
#include "cli/commands/DoNotDisturbCommand.h"
#include "cli/commands/fleet/FleetCommand.h"
#include "cli/commands/HistoryCommands.h"
#include "cli/commands/ListCommand.h"
#include "cli/commands/NodeCommands.h"
#include "cli/commands/NotifyCommand.h"
#include "cli/commands/RulesCommand.h"
#include "cli/commands/ShowCommand.h"
#include "cli/commands/SoundCommand.h"
#include "cli/commands/StatusCommand.h"
#include "cli/commands/WatchCommand.h"

std::unique_ptr<Command> Command::create(const Options &options, TavoClient &client,
                                         Terminal &terminal)
{
    switch (options.command) {
    case Options::Command::Sound:
        return std::make_unique<SoundCommand>(options, client, terminal);
    case Options::Command::Show:
        return std::make_unique<ShowCommand>(options, client, terminal);
    case Options::Command::Cancel:
        return std::make_unique<CancelCommand>(options, client, terminal);
    case Options::Command::List:
        return std::make_unique<ListCommand>(options, client, terminal);
    case Options::Command::Notify:
    case Options::Command::Say:
        return std::make_unique<NotifyCommand>(options, client, terminal);
    case Options::Command::History:
        return std::make_unique<HistoryCommand>(options, client, terminal);
    case Options::Command::Missed:
        return std::make_unique<MissedCommand>(options, client, terminal);
    case Options::Command::DoNotDisturb:
        return std::make_unique<DoNotDisturbCommand>(options, client, terminal);
    case Options::Command::Rules:
        return std::make_unique<RulesCommand>(options, client, terminal);
    case Options::Command::Fleet:
        return FleetCommand::create(options, client, terminal);
    case Options::Command::Watch:
        return std::make_unique<WatchCommand>(options, client, terminal);
    case Options::Command::Get:
        return std::make_unique<GetCommand>(options, client, terminal);
    case Options::Command::Rows:
        return std::make_unique<RowsCommand>(options, client, terminal);
    case Options::Command::Call:
        return std::make_unique<CallCommand>(options, client, terminal);
    case Options::Command::Tree:
        return std::make_unique<TreeCommand>(options, client, terminal);
    case Options::Command::Status:
        return std::make_unique<StatusCommand>(options, client, terminal);
    case Options::Command::Doctor:
        return std::make_unique<DoctorCommand>(options, client, terminal);
    case Options::Command::Generate:
        break;
    }
    return nullptr;
}
