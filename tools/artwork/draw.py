#!/usr/bin/python3
"""draw.py FOLDER: writes the SVG source of every picture into FOLDER.
draw.py --check FOLDER: compares instead, and fails with the names that differ."""

import pathlib
import sys

import pictures  # noqa: F401  (fills the registry)
from registry import PICTURES, source


def differences(folder):
    for name in PICTURES:
        file = folder / (name + '_2x.svg')
        if not file.exists():
            yield '%s is missing' % file
        elif file.read_text() != source(name):
            yield '%s is not what tools/artwork draws: run make artwork, or take the picture out of tools/artwork' % file


def main(arguments):
    if len(arguments) == 2 and arguments[0] == '--check':
        found = list(differences(pathlib.Path(arguments[1])))
        print('\n'.join(found) or '%d pictures are as drawn' % len(PICTURES))
        return 1 if found else 0
    if len(arguments) != 1 or arguments[0].startswith('-'):
        print(__doc__, file=sys.stderr)
        return 2
    for name in PICTURES:
        file = pathlib.Path(arguments[0]) / (name + '_2x.svg')
        if not file.exists() or file.read_text() != source(name):  # what stays is not rendered again
            file.write_text(source(name))
    return 0


if __name__ == '__main__':
    sys.exit(main(sys.argv[1:]))
