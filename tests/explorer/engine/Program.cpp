// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/engine/Program.h"

#include "explorer/engine/Report.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <thread>

namespace exploration {
namespace {
/// Reads a command line word by word.
class Words
{
public:
    explicit Words(const std::vector<std::string> &words)
        : m_words(words)
    {
    }

    bool atEnd() const { return m_next == m_words.size(); }
    const std::string &next() { return m_words[m_next++]; }

    const std::string &valueOf(const std::string &option)
    {
        if (atEnd()) {
            throw std::invalid_argument(option + " needs a value");
        }
        return next();
    }

    long numberOf(const std::string &option, long min, long max)
    {
        const std::string &text = valueOf(option);
        char *end = nullptr;
        const long number = std::strtol(text.c_str(), &end, 10);
        if (text.empty() || *end != '\0' || number < min || number > max) {
            throw std::invalid_argument(option + " takes a number from " + std::to_string(min) +
                                        " to " + std::to_string(max) + ", not " + text);
        }
        return number;
    }

private:
    const std::vector<std::string> &m_words;
    std::size_t m_next = 0;
};

constexpr long manyStates = 1L << 31;

bool parseBound(const std::string &word, Words *words, Bounds *bounds)
{
    if (word == "--jobs") {
        bounds->jobs = int(words->numberOf(word, 1, 256));
    } else if (word == "--max-depth") {
        bounds->maxDepth = std::size_t(words->numberOf(word, 0, manyStates));
    } else if (word == "--max-states") {
        bounds->maxStates = std::size_t(words->numberOf(word, 1, manyStates));
    } else if (word == "--max-minutes") {
        bounds->maxTime = std::chrono::minutes(words->numberOf(word, 1, 100000));
    } else if (word == "--hang-seconds") {
        bounds->hang = std::chrono::seconds(words->numberOf(word, 1, 3600));
    } else if (word == "--first") {
        bounds->first = true;
    } else if (word == "--twice") {
        bounds->twice = true;
    } else if (word == "--progress") {
        bounds->progress = true;
    } else {
        return false;
    }
    return true;
}

bool parseNumber(const Program &program, const std::string &word, Words *words, Options *options)
{
    const auto number =
        std::find_if(program.numbers.begin(), program.numbers.end(),
                     [&](const NumberOption &option) { return word == "--" + option.name; });
    if (number == program.numbers.end()) {
        return false;
    }
    options->numbers[number->name] = int(words->numberOf(word, number->min, number->max));
    return true;
}

/// Throws std::invalid_argument with a readable message for wrong usage.
Options parseOptions(const Program &program, const std::vector<std::string> &arguments)
{
    Options options;
    options.module = program.module;
    options.own = program.numbers;
    options.bounds.jobs = int(std::max(1U, std::thread::hardware_concurrency()));
    for (const NumberOption &number : program.numbers) {
        options.numbers[number.name] = number.value;
    }
    Words words(arguments);
    while (!words.atEnd()) {
        const std::string &word = words.next();
        if (word == "--module") {
            options.module = words.valueOf(word);
        } else if (word == "--replay") {
            options.replays = true;
            options.replay = sequenceFrom(words.valueOf(word));
        } else if (!parseBound(word, &words, &options.bounds) &&
                   !parseNumber(program, word, &words, &options)) {
            throw std::invalid_argument("unknown option " + word);
        }
    }
    return options;
}

void printHelp(const Program &program, std::ostream &stream)
{
    stream << program.what << R"(

  --module FILE      the library to explore ()"
           << program.module << R"()
)";
    for (const NumberOption &number : program.numbers) {
        std::string option = "--" + number.name + " N";
        option.resize(std::max<std::size_t>(option.size() + 1, 19), ' ');
        stream << "  " << option << number.help << " (" << number.value << ")\n";
    }
    stream << R"(  --jobs N           working processes (one a processor)
  --max-depth N      end with sequences of this length
  --max-states N     end with more states than this
  --max-minutes N    end after this time
  --hang-seconds N   a step that takes longer hangs (10)
  --first            end with the length that has the first finding
  --twice            go to every state by another way as well, and compare what follows: a check of
                     how states are recognised
  --progress         say on stderr how far it has come
  --replay SEQUENCE  go through one sequence, in words, as a finding prints it

The exit status is 0 when nothing was found, 1 when something was, 2 for a wrong call.
)";
}
} // namespace

int Program::run(int argc, char **argv) const
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    for (const std::string &argument : arguments) {
        if (argument == "-h" || argument == "--help") {
            printHelp(*this, std::cout);
            return 0;
        }
    }
    try {
        const Options options = parseOptions(*this, arguments);
        const SystemFactory factory = [&] { return makeSystem(options); };
        if (options.replays) {
            return replay(options, factory, std::cout) ? 0 : 1;
        }
        const Outcome outcome = explore(factory, options.bounds);
        report(options, factory, outcome, std::cout);
        return outcome.findings.empty() ? 0 : 1;
    } catch (const std::exception &exception) {
        std::cerr << argv[0] << ": " << exception.what() << '\n';
        return 2;
    }
}

} // namespace exploration
