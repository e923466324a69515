"""Buttons: families of backgrounds for three states, and the pictures that lie over them when they are on.

A family is stretched in three slices: nothing but the ends varies along x. A plate on a bar stands 1 unit inside its
box at either side, so that neighbours keep a gap of 2.
"""

from kit import at, circle, frame, line, rect, ring, stroke
from registry import picture
from surfaces import ceiling_light, dark_glass, light_line, plate, plate_at_rest, tinted_glass, well
from text import text
from tokens import C

STATES = ('Normal', 'Active', 'Down')
WIDTH, HEIGHT = 60, 20


def family(word, draw, width=WIDTH, height=HEIGHT):
    """Three pictures; `draw` takes a Doc and 0 at rest, 1 under the pointer, 2 held down."""
    for index, state in enumerate(STATES):
        picture('Button%s%s' % (word, state), width, height)(lambda d, i=index: draw(d, i))


def bar(d, state):
    if state == 2: return well(d, 1, 0, 58, 20, 3.5, '#14171D')
    if state == 1: return plate(d, 1, 0, 58, 20, 3.5, '#323947', '#282E39', '#4A5364')
    return plate_at_rest(d, 1, 0, 58, 20)


def hide(d, state):
    """Nothing at rest, a plate under the pointer."""
    if state == 2: return well(d, 1, 0, 58, 20, 3.5, '#14171D')
    return plate(d, 1, 0, 58, 20, 3.5, '#282E39', '#222731', '#3B4352') if state else ''


def dark(d, state):
    """A well that holds a value."""
    fill, light = (('#0C0E13', 0), ('#171B22', .55), ('#07080B', .8))[state]
    return well(d, 0, 0, 60, 20, 3.5, fill) + (frame(0, 0, 60, 19.5, C['ice3'], 3.5, light) if light else '')


def transparent(d, state):
    fill, op = (('', 0), ('#FFFFFF', .07), ('#000000', .35))[state]
    return rect(0, 0, 60, 20, fill, 3.5, op) if op else ''


def meter(d, state):
    return dark_glass(*(('#171A21', .86, .10), ('#2C323E', .94, .18), ('#0B0D11', .94, .03))[state])


def hover(d, state):
    """Centred behind an icon, never stretched."""
    fill, op = (('', 0), ('#FFFFFF', .09), ('#000', .4))[state]
    return circle(10, 10, 9.5, fill, op) if op else ''


def advanced(d, state):
    """The tab that stands out of the advanced panel."""
    high, low, top, ink = (('#1C2028', '#171A21', '#3A4250', C['ink_lo']), ('#2F3643', '#262C37', '#4F596B', C['ice2']),
                           ('#12151A', '#14171D', '#0E1015', C['ice1']))[state]
    sliders = ''.join(line(5.5, 6.5 + 4 * i, 17.5, 6.5 + 4 * i, ink, 1, .55) + circle(5.5 + x, 6.5 + 4 * i, 1.75, ink)
                      for i, x in enumerate((4.5, 9, 6.5)))
    return ('<path d="M0 0H19.5a3.5 3.5 0 0 1 3.5 3.5V20H0Z" fill="%s" fill-opacity=".92"/>' % C['edge'] +
            '<path d="M0 .5H19.5a3 3 0 0 1 3 3V20H0Z" fill="%s"/>' % d.lin([(0, high), (1, low)]) +
            rect(0, .5, 20, 1, top, 0, .8) + sliders)


def channel(d, state):
    """Whether the centre or the low-frequency channel takes part in linking."""
    return well(d, 0, 0, 28, 16, 3, ('#0C0E13', '#1B1F27', '#07080B')[state])


def dialog(d, state, default=False):
    """Stands on a card, so it is a unit taller than a button on a bar and keeps no gap."""
    if state == 2: return well(d, 0, 0, 60, 30, 4, ('#171A21', '#222A4A')[default])
    shades = ((('#2A303B', '#222731', '#3B4352'), ('#363E4C', '#2B313D', '#4F596B')),
              (('#4A5A9E', '#384478', '#8398EE'), ('#4F61A9', '#3E4B86', '#A9BBFF')))[default][state]
    return plate(d, 0, 0, 60, 30, 4, *shades)


family('Bar', bar)
family('Hide', hide)
family('Dark', dark)
family('Transparent', transparent)
family('Meter', meter)
family('Hotspots', bar)
family('Hover', hover, 20, 20)
family('Advanced', advanced, 24, 20)
family('CLFE', channel, 28, 16)
family('Dialog', dialog, 60, 30)
family('DialogDefault', lambda d, state: dialog(d, state, True), 60, 30)


@picture('ButtonMeterOn', 20, 20)
@picture('ButtonBarOn', 20, 20)
def bar_on(d):
    """The ceiling light of a plate that is on, centred over its caption."""
    return (rect(3, 1, 14, 6, d.rad([(0, C['ice3'], .55), (1, C['ice3'], 0)], 10, 1, 8)) +
            rect(4, 1, 12, 1, light_line(d, .2)))


@picture('ButtonMeterOff', 20, 20)
def nothing(d):
    return ''


@picture('ButtonHoverOn', 20, 20)
def hover_on(d):
    return circle(10, 10, 9, C['ice3'], .24) + ring(10, 10, 8.5, C['ice3'], 1, .9)


@picture('ButtonBarFullScreen', 22, 20)
def full_screen(d):
    return plate_at_rest(d, 0, 0, 22, 20)


for _word, _size in (('C', 9.625), ('LFE', 9)):
    _letters = lambda colour, word=_word, size=_size: text(14, 11.5, word, size, 'semi', colour, 'middle', .3)
    picture('Button%sOff' % _word, 28, 16)(lambda d, letters=_letters: letters(C['t1']))
    picture('Button%sOn' % _word, 28, 16)(
        lambda d, letters=_letters: tinted_glass(d, C['ice3'], 28, 16, 3) + letters('#FFFFFF'))


# Toggles are 20 x 16, so that they clear the bar that they stand on.
@picture('ButtonToggleOff', 20, 16)
def toggle_off(d):
    return (rect(0, 0, 20, 16, C['edge'], 4) + rect(.5, .5, 19, 15, d.lin([(0, '#353C49'), (1, '#252A34')]), 3.5) +
            rect(.5, 1.5, 19, 14, d.lin([(0, '#262B35'), (1, '#1D2129')]), 3.5))


for _colour in ('Red', 'Blue', 'Orange', 'Yellow'):
    picture('ButtonToggle' + _colour, 20, 16)(lambda d, c=_colour: tinted_glass(d, C[c.lower()], 20, 16))


def worded(d, width, on, icon, x, word):
    """A bar button with its icon and word in the picture."""
    return (plate_at_rest(d, 1, 0, width - 2, 20) + (ceiling_light(d, 3, width - 6) if on else '') + icon +
            text(x, 14, word, 11, 'medium', C['t1'] if on else C['t2']))


def output_lock(d, on):
    """A padlock, open when off."""
    ink = C['ice1'] if on else C['ink_lo']
    shackle = 'M11 9.5V7.75a2.5 2.5 0 0 1 5 0V9.5' if on else 'M11 9.5V6.5a2.5 2.5 0 0 1 5 0V7'
    return worded(d, 66, on, rect(9, 9, 9, 7, ink, 1.5) + stroke(shackle, ink, 1.5, cap='butt'), 22.5, 'Output')


def true_peak(d, on):
    """A peak between two samples."""
    ink = C['ice1'] if on else C['ink_lo']
    icon = stroke('M7.5 14.5Q13 1.5 18.5 14.5', ink, 1.25) + circle(9.5, 10.6, 1.3, ink) + circle(16.5, 10.6, 1.3, ink)
    return worded(d, 80, on, icon, 23, 'True Peak')


picture('OutputLockOn', 66, 20)(lambda d: output_lock(d, True))
picture('OutputLockOff', 66, 20)(lambda d: output_lock(d, False))
picture('ButtonTruePeakLimitingOn', 80, 20)(lambda d: true_peak(d, True))
picture('ButtonTruePeakLimitingOff', 80, 20)(lambda d: true_peak(d, False))


# The display's modes, one cell each: moving fast, slow, slowing down, without end, off.
PEAKS = 'M3 13.5L6 7.5L8.5 12L11 6L13 10'
MODES = (('M3 13L6 8.5L8 11L10 7L12 10', 'M15.5 5.5V14.5', 'M18.5 10H20.5'),
         (PEAKS, 'M15 7L18 10L15 13M18.5 7L21.5 10L18.5 13'),
         (PEAKS, 'M16 7L19 10L16 13'),
         ('M12 10C10 6.5 5 6.5 5 10C5 13.5 10 13.5 12 10C14 6.5 19 6.5 19 10C19 13.5 14 13.5 12 10Z',),
         ('M4 10H20',))


def modes(colour):
    return ''.join(at(24 * i, 0, ''.join(stroke(p, colour, 1.25) for p in paths)) for i, paths in enumerate(MODES))


picture('DisplayIconsOff', 120, 20)(lambda d: modes(C['ink_lo']))
picture('DisplayIconsOn', 120, 20)(lambda d: modes(C['ice1']))


@picture('DisplayMenu', 30, 20)
def display_menu(d):
    return (rect(1, 0, 28, 20, C['edge'], 3.5, .55) + rect(1.5, .5, 27, 19, C['bar'], 3, .86) +
            rect(3, .5, 24, 1, '#FFFFFF', 0, .1) + stroke('M6 14L9.5 7.5L12 11.5L14.5 6L16.5 10', C['ink'], 1.25) +
            stroke('M20 8.75L22.25 11L24.5 8.75', C['ink_lo'], 1.25))
