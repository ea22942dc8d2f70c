// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/ExitCode.h"
#include "cli/reference/Writers.h"

#include <algorithm>
#include <cctype>

namespace {
/// Escapes the text for roff.
std::string escaped(const std::string &text)
{
    std::string result;
    for (const char character : text) {
        switch (character) {
        case '\\':
            result += "\\e";
            break;
        case '-':
            result += "\\-";
            break;
        case '\'':
            result += "\\(aq";
            break;
        case '^':
            result += "\\(ha";
            break;
        case '~':
            result += "\\(ti";
            break;
        case '"':
            result += "\\(dq";
            break;
        default:
            result += character;
        }
    }
    // A dot at the start of a line begins a request.
    return (!result.empty() && result.front() == '.' ? "\\&" : "") + result;
}

std::string bold(const std::string &text)
{
    return "\\fB" + escaped(text) + "\\fR";
}

std::string italic(const std::string &text)
{
    return "\\fI" + escaped(text) + "\\fR";
}

std::string upper(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char character) { return char(std::toupper(character)); });
    return text;
}

std::string entry(const std::string &term, const std::string &description)
{
    return ".TP\n" + term + '\n' + escaped(description) + ".\n";
}

std::string option(const OptionDefinition &definition)
{
    std::string term;
    for (const std::string &name : definition.names) {
        term += (term.empty() ? "" : ", ") + bold(name);
    }
    if (!definition.valueName.empty()) {
        term += (term.empty() ? "" : " ") + italic(definition.valueName);
    }
    return entry(term, definition.description);
}

std::string blocks(const std::vector<TextBlock> &text, const std::string &headingRequest)
{
    std::string result;
    for (const TextBlock &block : text) {
        if (block.heading.empty()) {
            result += ".PP\n";
            for (const std::string &line : block.lines) {
                result += escaped(line) + '\n';
            }
            continue;
        }
        result += headingRequest + escaped(block.heading) + "\n.EX\n";
        for (const std::string &line : block.lines) {
            result += escaped(line) + '\n';
        }
        result += ".EE\n";
    }
    return result;
}

std::string command(const CommandDefinition &definition, const std::string &program)
{
    std::string page = ".SS " + program + ' ' + definition.name + '\n' + bold(program) + ' ' +
                       bold(definition.name) + ' ' + escaped(definition.synopsis()) + "\n.PP\n" +
                       escaped(definition.summary) + ".\n";
    for (const OptionDefinition &positional : definition.positionals) {
        page += option(positional);
    }
    for (const OptionDefinition &each : definition.options) {
        const bool isEverywhere = each.names.back() == "--help";
        page += isEverywhere ? std::string() : option(each);
    }
    return page + blocks(definition.text, ".PP\n");
}
} // namespace

std::string manPage(const Definition &definition)
{
    const CommandDefinition &program = definition.program;
    std::string page = ".TH " + upper(program.name) + " 1 \"\" \"" + program.name + ' ' +
                       TAVO_VERSION + "\"\n.SH NAME\n" + program.name +
                       " \\- play and show notifications\n.SH SYNOPSIS\n" + bold(program.name) +
                       " [" + italic("OPTIONS") + "] " + italic("COMMAND") +
                       " ...\n.SH DESCRIPTION\n" + escaped(program.summary) + "\n.SH OPTIONS\n";
    for (const OptionDefinition &each : program.options) {
        page += option(each);
    }
    page += ".SH COMMANDS\n";
    for (const CommandDefinition &each : definition.commands) {
        page += command(each, program.name);
    }
    page += ".SH EXIT STATUS\n";
    for (const ExitCodeText &code : exitCodeTexts) {
        page += ".TP\n" + bold(code.code) + '\n' + escaped(code.meaning) + '\n';
    }
    page += ".SH NOTES";
    page += blocks(program.text, ".SS ").insert(0, "\n");
    return page +
           ".SH SEE ALSO\n.BR tavo\\-host (1),\n.BR tavo\\-host.json (5),\n"
           ".BR tavo\\-display (1),\n.BR tavo\\-fleet (1),\n.BR notify\\-send (1),\n.BR busctl "
           "(1)\n"
           ".PP\nThe package tavo\\-doc has pages about everything, and examples of modules and "
           "clients, in\n" +
           bold("/usr/share/doc/tavo-doc") + ".\n";
}
