// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/reference/Completions.h"
#include "cli/reference/Writers.h"

namespace {
std::string offer(const std::string &valueName)
{
    switch (offerFor(valueName)) {
    case ValueOffer::Files:
        return "compopt -o filenames; _tavo_offer -f";
    case ValueOffer::NodePaths:
        return std::string("_tavo_offer_lines < <(") + s_listNodes + ')';
    case ValueOffer::MessagePaths:
        return std::string("_tavo_offer_lines < <(") + s_listMessages + ')';
    case ValueOffer::Words:
        return "_tavo_offer -W " + shellQuoted(offeredWords(valueName));
    case ValueOffer::Nothing:
        break;
    }
    return ":";
}

std::string optionNames(const CommandDefinition &command)
{
    std::string names;
    for (const OptionDefinition &option : command.options) {
        for (const std::string &name : option.names) {
            names += (names.empty() ? "" : " ") + name;
        }
    }
    return names;
}

std::string commandNames(const Definition &definition)
{
    std::string names;
    for (const CommandDefinition &command : definition.commands) {
        names += (names.empty() ? "" : " ") + command.name;
    }
    return names;
}

std::string valueCases(const std::map<std::string, std::string> &valued)
{
    std::string cases;
    for (const auto &[name, valueName] : valued) {
        cases += "        " + name + ") " + offer(valueName) + "; return ;;\n";
    }
    return cases;
}

std::string optionCases(const Definition &definition)
{
    std::string cases;
    for (const CommandDefinition &command : definition.commands) {
        cases += "            " + command.name +
                 ") options+=" + shellQuoted(' ' + optionNames(command)) + " ;;\n";
    }
    return cases;
}

std::string positionalCases(const Definition &definition)
{
    std::string cases;
    for (const CommandDefinition &command : definition.commands) {
        int place = 0;
        for (const OptionDefinition &positional : command.positionals) {
            cases += "        " + command.name + ':' + std::to_string(place++) + ") " +
                     offer(positional.valueName) + " ;;\n";
        }
    }
    return cases;
}

const char *const s_head = R"(# bash completion for tavo

_tavo_offer() {
    mapfile -t COMPREPLY < <(compgen "$@" -- "$current")
}

# Names chosen by others must not be expanded, neither here nor when the shell inserts them.
_tavo_offer_lines() {
    local line
    while IFS= read -r line; do
        if [[ $line == "$current"* ]]; then
            printf -v line %q "$line"
            COMPREPLY+=("$line")
        fi
    done
}

_tavo() {
    local current=${COMP_WORDS[COMP_CWORD]} before='' command='' options='' place=0 index word
    COMPREPLY=()
    ((COMP_CWORD > 0)) && before=${COMP_WORDS[COMP_CWORD - 1]}
    # The shell takes --option=value apart at the sign.
    if [[ $current == = ]]; then
        current=''
    elif [[ $before == = ]] && ((COMP_CWORD > 1)); then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
)";
} // namespace

std::string bashCompletion(const Definition &definition)
{
    const auto valued = valuedOptions(definition);
    std::string names;
    for (const auto &each : valued) {
        names += (names.empty() ? "" : " | ") + each.first;
    }
    return s_head +
           ("    for ((index = 1; index < COMP_CWORD; ++index)); do\n"
            "        word=${COMP_WORDS[index]}\n"
            "        case $word in\n"
            "        " +
            names +
            ")\n"
            "            ((++index))\n"
            "            [[ ${COMP_WORDS[index]} == = ]] && ((++index))\n"
            "            ;;\n"
            "        -?*) ;;\n"
            "        *) if [[ -z $command ]]; then command=$word; else ((++place)); fi ;;\n"
            "        esac\n"
            "    done\n"
            "    case $before in\n" +
            valueCases(valued) +
            "    esac\n"
            "    if [[ $current == -* ]]; then\n"
            "        options=" +
            shellQuoted(optionNames(definition.program)) +
            "\n"
            "        case $command in\n" +
            optionCases(definition) +
            "        esac\n"
            "        _tavo_offer -W \"$options\"\n"
            "        return\n"
            "    fi\n"
            "    case ${command:+$command:$place} in\n"
            "        '') _tavo_offer -W " +
            shellQuoted(commandNames(definition)) + " ;;\n" + positionalCases(definition) +
            "    esac\n"
            "}\n"
            "complete -F _tavo tavo\n");
}
