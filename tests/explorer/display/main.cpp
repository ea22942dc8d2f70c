// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplaySystem.h"
#include "explorer/module/ModuleHost.h"

int main(int argc, char **argv)
{
    using exploration::Options;
    const exploration::Program program{
        "Explores the display side of the notifications module: every sequence of opening, "
        "closing,\n"
        "cancelling and passing time, each checked against the contract.",
        TAVO_NOTIFICATIONS_MODULE,
        {{"alive", 4, 1, 8, "notifications at once"},
         {"priorities", 3, 1, 4, "how many different ones"},
         {"max-timeout", 2, 1, 7,
          "the longest timeout in ticks; there is always one without a timeout"},
         {"forms", 3, 1, 3,
          "kinds of notifications: messages; of a shared node; of a client's own node"}},
        [](const Options &options) {
            const DisplayBounds bounds{
                options.numbers.at("alive"), options.numbers.at("priorities"),
                options.numbers.at("max-timeout"), options.numbers.at("forms")};
            return std::make_unique<DisplaySystem>(options.module, bounds);
        }};
    return runExplorer(program, argc, argv);
}
