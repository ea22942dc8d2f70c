// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/definition/Definition.h"

#include <algorithm>
#include <sstream>

namespace {
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

std::string OptionDefinition::synopsis() const
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

std::string CommandDefinition::synopsis() const
{
    std::string text = "[OPTIONS]";
    for (const OptionDefinition &positional : positionals) {
        text +=
            positional.isRequired ? ' ' + positional.valueName : " [" + positional.valueName + ']';
    }
    return text;
}

const CommandDefinition *Definition::find(const std::string &command) const
{
    const auto found =
        std::find_if(commands.begin(), commands.end(),
                     [&](const CommandDefinition &each) { return each.name == command; });
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
