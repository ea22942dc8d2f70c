// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/module/ModuleHost.h"
#include "explorer/sound/SoundSystem.h"

int main(int argc, char **argv)
{
    exploration::Program program;
    program.what = "Usage: sound_explorer [option...]\n\n"
                   "Takes the module's sound side through every interleaving of requests, replies, "
                   "revokes, players' ends and the idle time, and checks it after every step.";
    program.module = TAVO_NOTIFICATIONS_MODULE;
    program.numbers = {
        {"alive", 3, 1, 6, "items that are queued or stopping at once"},
        {"priorities", 3, 1, 3, "priorities that they have"},
        {"invalid", 6, 0, 6, "of them at most, of a type that nothing plays"},
        {"unanswered", 0, 0, 6, "of them at most, without a response path"},
    };
    program.makeSystem = [](const exploration::Options &options) {
        SoundBounds bounds;
        bounds.alive = options.numbers.at("alive");
        bounds.priorities = options.numbers.at("priorities");
        bounds.invalid = options.numbers.at("invalid");
        bounds.unanswered = options.numbers.at("unanswered");
        return std::make_unique<SoundSystem>(options.module, bounds);
    };
    return runExplorer(program, argc, argv);
}
