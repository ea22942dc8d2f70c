#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Plants a fault in a folder of C++ sources.

A fault file says, after a comment with the reason, which function is broken and how:

    in NotificationPlayer::cancel
    - m_stoppingItems.append(item);
    - item.player->stop();
    + item.player->stop();
    + m_stoppingItems.append(item);

The text of the "-" lines is replaced by that of the "+" lines, which may be missing. It is looked for in
the body of the named function, without regard to white space and comments, and must occur there exactly
once. A file may have several such replacements, separated by empty lines, each with an "in" line or in
the function of the one before.
"""

import argparse
import pathlib
import re
import sys


class Misfit(Exception):
    """The fault does not fit the sources."""


def read_edits(fault):
    """Yields (function, old text, new text) for each replacement of the fault file."""
    function = ''
    for block in re.split(r'\n\s*\n', fault.read_text()):
        old, new = [], []
        for line in block.splitlines():
            if line.startswith('in '):
                function = line[3:].strip()
            elif line.startswith('-'):
                old.append(line[1:])
            elif line.startswith('+'):
                new.append(line[1:])
            elif line and not line.startswith('#'):
                raise Misfit(f'what does this line mean: {line}')
        if old:
            yield function, '\n'.join(old), '\n'.join(new)


def find_function(texts, function):
    """Returns (file, start, end) of the definition: from a line that is not indented and has the name, to
    the next closing brace that is not indented."""
    pattern = re.compile(
        rf'^(?=\S)(?:[^\n;]*[^\w\n;:~])?{re.escape(function)}\([^;{{}}]*\{{.*?^\}}', re.M | re.S)
    found = [(file, match) for file, text in texts.items() for match in pattern.finditer(text)]
    if len(found) != 1:
        raise Misfit(f'{function}() is defined {len(found)} times')
    file, match = found[0]
    return file, match.start(), match.end()


def squeeze(text):
    """Returns the text without white space and comments, and where each of its characters stood."""
    places = []
    for part in re.finditer(r'"(?:\\.|[^"\\\n])*"|//[^\n]*|/\*.*?\*/|\S', text, re.S):
        if not part.group().startswith(('//', '/*')):
            places += [i for i in range(*part.span()) if not text[i].isspace()]
    return ''.join(text[i] for i in places), places


def plant(texts, fault):
    """Changes the texts as the fault says."""
    places_to_change = []
    for function, old, new in read_edits(fault):
        file, start, end = find_function(texts, function)
        body, places = squeeze(texts[file][start:end])
        sought, _ = squeeze(old)
        if body.count(sought) != 1:
            raise Misfit(f'{function}() has {body.count(sought)} times: {old.strip()}')
        first = body.index(sought)
        last = first + len(sought) - 1
        places_to_change.append((file, start + places[first], start + places[last] + 1, new))
    # From the end, so that the places before stay where they are.
    for file, first, end, new in sorted(places_to_change, key=lambda place: -place[1]):
        texts[file] = texts[file][:first] + new + texts[file][end:]


def main():
    parser = argparse.ArgumentParser(description='Plants a fault in a folder of C++ sources.')
    parser.add_argument('--check', action='store_true',
                        help='change nothing; only see whether each of the faults fits')
    parser.add_argument('folder', type=pathlib.Path)
    parser.add_argument('faults', type=pathlib.Path, nargs='+')
    arguments = parser.parse_args()
    files = [*arguments.folder.glob('*.cpp'), *arguments.folder.glob('*.h')]
    sources = {file: file.read_text() for file in files}
    misfits = 0
    for fault in arguments.faults:
        texts = dict(sources)
        try:
            plant(texts, fault)
        except Misfit as misfit:
            print(f'{fault}: {misfit}', file=sys.stderr)
            misfits += 1
            continue
        if texts == sources:
            print(f'{fault}: changes nothing', file=sys.stderr)
            misfits += 1
        elif not arguments.check:
            for file, text in texts.items():
                if text != sources[file]:
                    file.write_text(text)
    return 1 if misfits else 0


if __name__ == '__main__':
    sys.exit(main())
