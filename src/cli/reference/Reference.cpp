// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/reference/Reference.h"

#include <CLI/App.hpp>
#include <CLI/Option.hpp>

#include <algorithm>
#include <sstream>

namespace {
OptionReference referenceOf(const CLI::Option &option)
{
    OptionReference reference;
    for (const std::string &name : option.get_snames()) {
        reference.names.push_back('-' + name);
    }
    for (const std::string &name : option.get_lnames()) {
        reference.names.push_back("--" + name);
    }
    if (option.get_items_expected_max() > 0) {
        reference.valueName = option.get_type_name();
    }
    reference.description = option.get_description();
    reference.isRequired = option.get_required();
    return reference;
}

CommandReference referenceOf(const CLI::App &app)
{
    CommandReference reference;
    reference.name = app.get_name();
    reference.summary = app.get_description();
    reference.text = textBlocks(app.get_footer());
    for (const CLI::Option *option : app.get_options()) {
        const bool isHidden = option->get_group().empty();
        if (!isHidden) {
            OptionReference each = referenceOf(*option);
            (each.isPositional() ? reference.positionals : reference.options)
                .push_back(std::move(each));
        }
    }
    return reference;
}

void addParagraph(std::vector<TextBlock> &blocks, std::vector<std::string> lines)
{
    if (lines.empty()) {
        return;
    }
    const bool hasHeading = lines.size() > 1 && lines.front().back() == ':' &&
                            std::all_of(lines.begin() + 1, lines.end(),
                                        [](const std::string &line) { return line[0] == ' '; });
    TextBlock block;
    if (hasHeading) {
        block.heading = lines.front().substr(0, lines.front().size() - 1);
        lines.erase(lines.begin());
    }
    block.lines = std::move(lines);
    blocks.push_back(std::move(block));
}
} // namespace

std::string OptionReference::synopsis() const
{
    std::string text;
    for (const std::string &name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    if (!valueName.empty()) {
        text += (text.empty() ? "" : " ") + valueName;
    }
    return text;
}

std::string CommandReference::synopsis() const
{
    std::string text = "[OPTIONS]";
    for (const OptionReference &positional : positionals) {
        text +=
            positional.isRequired ? ' ' + positional.valueName : " [" + positional.valueName + ']';
    }
    return text;
}

Reference Reference::of(const CLI::App &app)
{
    Reference reference;
    reference.program = referenceOf(app);
    for (const CLI::App *command : app.get_subcommands({})) {
        reference.commands.push_back(referenceOf(*command));
    }
    return reference;
}

const CommandReference *Reference::find(const std::string &command) const
{
    const auto found =
        std::find_if(commands.begin(), commands.end(),
                     [&](const CommandReference &each) { return each.name == command; });
    return found == commands.end() ? nullptr : &*found;
}

std::vector<TextBlock> textBlocks(const std::string &text)
{
    std::vector<TextBlock> blocks;
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (line.empty()) {
            addParagraph(blocks, std::move(lines));
            lines.clear();
        } else {
            lines.push_back(line);
        }
    }
    addParagraph(blocks, std::move(lines));
    return blocks;
}
