#!/usr/bin/python3
"""contrast.py: the contrast of text and signs with what they stand on, at its worst. Fails below 4.5 : 1."""

import sys

from tokens import C, contrast, over

LEAST = 4.5
# The two fills of the display's curves, each from its top to its bottom: colour and alpha.
FILLS = (((255, 250, 238), 204, (97, 111, 157), 71), ((166, 193, 255), 178, (99, 110, 153), 71))
DISPLAY_HEIGHT = 480


def display(y, dim=0):
    """The display at height `y` with both fills over its ground, dimmed by black at `dim` of 255."""
    colour, t = C['ground'], y / DISPLAY_HEIGHT
    for front, front_alpha, back, back_alpha in FILLS:
        alpha = front_alpha + (back_alpha - front_alpha) * t
        mixed = [(u * front_alpha * (1 - t) + v * back_alpha * t) / alpha for u, v in zip(front, back)]
        colour = over('#' + ''.join('%02X' % round(v) for v in mixed), alpha / 255, colour)
    return over('#000000', dim / 255, colour)


def tint(name):
    """The middle of tinted glass, where its sign stands."""
    return over(C[name], .42, '#12151B')


def pairs():
    """What it is, its colour, the ground."""
    for ground in ('ground', 'bar', 'plate', 'plate_hi'):
        yield 'value on ' + ground, C['t1'], C[ground]
        yield 'button text on ' + ground, C['t2'], C[ground]
    yield 'caption on a bar', C['t3'], '#1B1F27'
    yield 'unit in a well', C['t3'], '#0C0E13'
    yield 'value in a well under the pointer', C['t1'], '#171B22'
    yield 'button text on a plate under the pointer', C['t2'], '#323947'
    yield 'icon on a plate under the pointer', C['ink'], '#323947'
    yield 'quiet icon on a plate', C['ink_lo'], '#252A34'
    yield 'icon on a toggle that is off', C['ink'], '#262B35'
    for name in ('red', 'blue', 'orange', 'yellow'):
        yield 'icon on a toggle, ' + name, C['ink'], tint(name)
    yield 'letters of a channel button that is on', '#FFFFFF', tint('ice3')
    yield 'letters of a channel button that is off', C['t3'], '#0C0E13'
    yield 'text on a dialog', C['t2'], '#232832'
    yield 'default button of a dialog', C['t1'], '#4A5A9E'
    yield 'default button of a dialog, under the pointer', C['t1'], '#4F61A9'
    yield 'help hint', C['t1'], '#2A303C'
    yield 'name in the value panel', C['t2'], '#262B36'
    yield 'MIDI learn prompt', C['t1'], C['ice5']
    yield 'menu item under the pointer', C['t1'], C['plate_hi']
    yield 'check mark of a menu item under the pointer', C['ice2'], C['plate_hi']
    yield 'arrow of a menu item under the pointer', C['t3'], C['plate_hi']
    yield 'text on the advanced panel', C['t1'], display(350, 50)
    yield 'text on the output card', C['t1'], display(355, 80)
    yield 'text on the dither panel', C['t1'], display(350, 128)
    yield 'button on the display', C['t2'], over(C['bar'], .86, display(55))
    yield 'tag of a peak', C['t1'], over('#0B0D11', .88, display(100))
    yield 'number of the scale on its strip', over('#FFFFFF', .706, over('#08090C', .62, display(80))), over(
        '#08090C', .62, display(80))
    yield 'GAIN on its shadow', '#FFFFFF', over('#000000', .18, display(318))
    yield 'letter of a meter on its plate, over any bar', '#FFFFFF', over('#07080B', .6, '#FFFFFF')


def main():
    failures = 0
    for name, front, back in pairs():
        ratio = contrast(front, back)
        failures += ratio < LEAST
        print('%5.1f  %s on %s  %s%s' % (ratio, front, back, name, '' if ratio >= LEAST else '  too little'))
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main())
