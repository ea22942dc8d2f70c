// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/definition/Commands.h"

namespace {
bool isState(const std::string &text)
{
    return text == "on" || text == "off" || text == "until";
}

bool isRuleTask(const std::string &text)
{
    return text == "list" || text == "check" || text == "test";
}

OptionDefinition application()
{
    return {
        {"--app"}, ValueName::name, "The program's name, for people (tavo)", &Options::application};
}

OptionDefinition source()
{
    return {{"--source"},
            ValueName::name,
            "The program's name, as rules and the history know it (that for people)",
            &Options::source};
}

OptionDefinition category()
{
    return {{"--category"},
            ValueName::name,
            "What it is about, such as im.received",
            &Options::category};
}

OptionDefinition language()
{
    return {{"--language"},
            ValueName::name,
            "The language of what is read aloud, such as de (that of its script)",
            &Options::language};
}

/// The options that describe a notification.
std::vector<OptionDefinition> notificationOptions()
{
    return {application(),
            source(),
            category(),
            {{"--group"},
             ValueName::group,
             "Messages of one group may be shown as one (those of a source)",
             &Options::group},
            priorityOption(),
            {{"-t", "--timeout"},
             ValueName::milliseconds,
             "Show it for MS milliseconds; 0: until it is closed (5000)",
             &Options::timeout,
             notNegative()},
            {{"--icon"},
             ValueName::icon,
             "A name in an icon theme, an absolute path or a file: URI",
             &Options::icon},
            actionOption(),
            {{"--sound"},
             ValueName::file,
             "Play this too: a file, a URI, or - for standard input",
             &Options::file},
            {{"--speech"}, ValueName::text, "Read this aloud, after the sound", &Options::speech},
            language(),
            {{"--transient"},
             ValueName::none,
             "Keep no text of it in the history",
             &Options::isTransient}};
}

/// The options of a command that sends a notification.
std::vector<OptionDefinition> withEnd(std::vector<OptionDefinition> options)
{
    options.push_back({{"--id"}, ValueName::id, "The id to close it by (a new one)", &Options::id});
    options.push_back({{"-w", "--wait"},
                       ValueName::none,
                       "Wait for the end, and print how it ended",
                       &Options::wait});
    return options;
}

CommandDefinition notify()
{
    CommandDefinition command{Options::Command::Notify, "notify",
                              "Notify people, as their rules allow"};
    command.text = commandText(
        "Shows a message and plays a sound, if there is one, unless the rules or do-not-disturb of "
        "the host keep them from people. Prints the id of the notification, and exits. The host "
        "needs the module attention. tavo rules test says what would become of a notification.\n\n"
        "With --wait, the program waits until message and sound have ended, prints how they ended "
        "and, after the word action, the key of the action that a person chose. Interrupting the "
        "program closes the notification.",
        "  tavo notify Door 'Somebody rings' --sound bell.wav\n"
        "  tavo notify --source doorbell --priority high Door 'Somebody rings'\n"
        "  tavo notify --wait --action open=Open --action ignore=Ignore 'Let them in?'");
    command.positionals = {{{}, ValueName::title, "The title", &Options::title, {}, true},
                           {{}, ValueName::text, "The text", &Options::message}};
    command.options = withEnd(notificationOptions());
    return command;
}

CommandDefinition say()
{
    CommandDefinition command{Options::Command::Say, "say", "Read a text aloud"};
    command.text = commandText(
        "Has the host read the text aloud, as a sound with its priority, unless rules or "
        "do-not-disturb keep it from people. Prints the id, and exits; with --wait, does what tavo "
        "notify does. The host needs the module attention, and its settings a program that "
        "speaks, such as espeak-ng.",
        "  tavo say 'Dinner is ready'\n"
        "  tavo say --priority urgent --wait 'Leave the house'");
    command.positionals = {
        {{}, ValueName::text, "What to say", &Options::speech, notEmpty(), true}};
    command.options = withEnd({application(), source(), category(), priorityOption(), language()});
    return command;
}

OptionDefinition limit()
{
    return {{"-n", "--limit"},
            ValueName::number,
            "List at most N notifications (100)",
            &Options::limit,
            notNegative()};
}

CommandDefinition history()
{
    CommandDefinition command{Options::Command::History, "history",
                              "List notifications of the past"};
    command.text = commandText(
        "Prints one line for each notification, the newest first: when it came, what became of it, "
        "the program, title and text, in columns on a terminal, else separated by tabs. Times are "
        "local. The host needs the module attention.",
        "  tavo history\n"
        "  tavo history --search 'parcel door'\n"
        "  tavo history --source mail --limit 5 --json");
    command.options = {
        {{"--search"},
         ValueName::words,
         "Only those with these words in title, text or program; beginnings of words suffice",
         &Options::search},
        {{"--source"}, ValueName::name, "Only those of this program", &Options::source},
        {{"--missed"}, ValueName::none, "Only those that nobody has seen", &Options::missed},
        limit()};
    return command;
}

CommandDefinition missed()
{
    CommandDefinition command{Options::Command::Missed, "missed",
                              "List the notifications that nobody has seen"};
    command.text =
        commandText("Prints them as tavo history does, and how many there are. A notification is "
                    "missed if it expired, was silenced, or was open when the host ended.",
                    "  tavo missed\n"
                    "  tavo missed --seen\n"
                    "  tavo missed --json | jq .count");
    command.options = {
        {{"--seen"}, ValueName::none, "Mark them as seen, once they are printed", &Options::seen},
        limit()};
    return command;
}

CommandDefinition doNotDisturb()
{
    CommandDefinition command{Options::Command::DoNotDisturb, "dnd", "Show or set do-not-disturb"};
    command.text = commandText(
        "Without STATE, prints whether do-not-disturb is on, until when, and whether a person has "
        "chosen that or the schedule says so. on and off count until they are changed; off within "
        "the times of the schedule ends with these times. until TIME switches it on until then: "
        "until the next time that the clock shows HH:MM, until a date and time, or for a duration.",
        "  tavo dnd\n"
        "  tavo dnd on\n"
        "  tavo dnd until 07:00\n"
        "  tavo dnd until 1h30m\n"
        "  tavo dnd until '2026-12-27 08:00'");
    command.positionals = {{{},
                            ValueName::state,
                            "on, off or until",
                            &Options::state,
                            {isState, "must be on, off or until"}},
                           {{}, ValueName::time, "The time at which it ends", &Options::until}};
    return command;
}

CommandDefinition rules()
{
    CommandDefinition command{Options::Command::Rules, "rules", "List, check or test the rules"};
    command.text = commandText(
        "list prints the rules of the host, and how many notifications each has applied to. If "
        "their file is wrong, it says so, and the exit code is 1.\n\n"
        "check reads the file of rules and do-not-disturb, by default the one that the host would "
        "read, and needs no host. If the file is wrong, or names a program or a sound that is not "
        "there, it prints file, line and reason, and the exit code is 1.\n\n"
        "test says what would become of a notification now: a line for each rule says whether it "
        "applies, and what it sets or why it does not apply. Nothing is shown, played or counted. "
        "The options are those of tavo notify.",
        "  tavo rules list\n"
        "  tavo rules check ~/.config/tavo/attention.json\n"
        "  tavo rules test --source doorbell --priority high Door 'Somebody rings'");
    command.positionals = {
        {{},
         ValueName::ruleTask,
         "list, check or test",
         &Options::rulesAction,
         {isRuleTask, "must be list, check or test"},
         true},
        {{}, ValueName::fileOrTitle, "check: the file; test: the title", &Options::title},
        {{}, ValueName::text, "test: the text", &Options::message}};
    command.options = notificationOptions();
    return command;
}
} // namespace

std::vector<CommandDefinition> attentionCommands()
{
    return {notify(), say(), history(), missed(), doNotDisturb(), rules()};
}
