// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/reference/Writers.h"

#include <map>

std::optional<std::string> writeReference(const Definition &definition, const std::string &kind)
{
    using Writer = std::string (*)(const Definition &);
    static const std::map<std::string, Writer> s_writers{{"man", manPage},
                                                         {"bash", bashCompletion},
                                                         {"zsh", zshCompletion},
                                                         {"fish", fishCompletion}};
    const auto writer = s_writers.find(kind);
    return writer == s_writers.end() ? std::nullopt : std::optional(writer->second(definition));
}
