// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Writes the fuzzers' seeds: fuzz_seeds FOLDER. This made the seeds in the corpus.

#include "fuzz/seeds/Seeds.h"

#include <exception>
#include <iostream>

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::cerr << "Usage: fuzz_seeds FOLDER\n";
        return 2;
    }
    try {
        const QString corpus = QString::fromLocal8Bit(argv[1]);
        writeRequestSeeds(corpus);
        writeValueSeeds(corpus);
        writeConfigurationSeeds(corpus);
        writeSoundSeeds(corpus);
        writeFleetSeeds(corpus);
    } catch (const std::exception &error) {
        std::cerr << "fuzz_seeds: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
