"""The bars at the top and the bottom, the name on the upper one, and the backdrops of the whole."""

from kit import rect, stroke
from registry import picture
from surfaces import well
from tokens import C

# The letters of the name, 14 high, as strokes. Their points run past the edges that cut them flat. At the scale in which
# it stands on the bar (13 / 14) strokes are 2 wide and upright ones lie on whole units.
AIR = 3.23  # from the middle of the ceiling to the letters
STROKE = 28 / 13
STROKES = (((-.6, AIR - 1.2), (6, 14.6), (12.6, AIR - 1.2)),  # V
           ((13.9, 15.2), (20.5, AIR - .6), (27.1, 15.2)),  # A
           ((50, 0), (50, 15)),  # T
           ((56.9, 15.2), (63.5, AIR - .6), (70.1, 15.2)))  # A
TWO = (80.3, 7.0, 80.6, 2.9, 88.4, 2.8, 88.4, 6.9, 88.4, 9.6, 82.2, 10.4, 80.6, 13.05)


def letter_n(m):
    """Drawn as a face, since the corners of a stroke would stand out of it; `m` is half the stroke's width."""
    left, right = 30.6154, 40.3077
    return ((left - m, 14), (left - m, AIR), (left + m + .5, AIR), (right - m, 14 - 3.2), (right - m, AIR),
            (right + m, AIR), (right + m, 14), (right - m - .5, 14), (left + m, AIR + 3.2), (left + m, 14))


def name(d, x, y, height):
    """V A N T A under one ceiling: the bar of the T runs over the whole word. The 2 has the accent."""
    k, width = height / 14, STROKE
    path = lambda points: 'M' + 'L'.join('%.2f %.2f' % (x + a * k, y + b * k) for a, b in points)
    cut = d.clip(rect(x - 2 * k, y + AIR * k, 76 * k, (14 - AIR) * k, '#000') + rect(x + 48 * k, y, 4 * k, 14 * k, '#000'))
    letters = ''.join(stroke(path(points), '#EEF1F7', width * k, cap='butt', join='miter',
                             extra='stroke-miterlimit="10"') for points in STROKES)
    letters += '<path d="%sZ" fill="#EEF1F7"/>' % path(letter_n(width / 2))
    ceiling = d.lin([(0, C['ice3'], 0), (.22, C['ice3']), (.55, C['ice1']), (.82, C['ice3']), (1, C['ice3'], .0)],
                    x - 6 * k, 0, x + 96 * k, 0, True)
    numbers = [v * k + (y if i % 2 else x) for i, v in enumerate(TWO)] + [x + 89.2 * k]
    two = 'M%.2f %.2fC%.2f %.2f %.2f %.2f %.2f %.2fC%.2f %.2f %.2f %.2f %.2f %.2fH%.2f' % tuple(numbers)
    return ('<g clip-path="%s">%s</g>' % (cut, letters) + rect(x - 6 * k, y - .5, 102 * k, 1.5, ceiling) +
            stroke(two, C['ice2'], width * k * .92, cap='butt', join='miter'))


@picture('LogoBar', 400, 48)
def logo_bar(d, w=400):
    """40 units of bar and the shadow that it throws on what lies below. Stretched along x with ends of 100, so the name
    keeps within the first 100 units."""
    return (rect(0, 40, w, 8, d.lin([(0, '#000', .5), (1, '#000', 0)])) +
            rect(0, 0, w, 40, d.lin([(0, '#20242D'), (1, '#15181E')])) + rect(0, 0, w, 1, '#FFFFFF', 0, .05) +
            rect(0, 39, w, 1, '#FFFFFF', 0, .045) + rect(0, 40, w, 1, C['edge']) + name(d, 57 - 50 * 13 / 14, 13.5, 13))


@picture('BottomBar', 172, 28)
def bottom_bar(d, w=172):
    return (rect(0, 0, w, 28, d.lin([(0, '#1B1F27'), (1, '#12151A')])) + rect(0, 0, w, 1, C['edge']) +
            rect(0, 1, w, 1, '#FFFFFF', 0, .06))


@picture('Background', 1330, 798)
def background(d, w=1330, h=798):
    return rect(0, 0, w, h, d.lin([(0, '#14171D'), (.5, '#0F1116'), (1, '#0B0D11')]))


@picture('SmallLayoutBackground', 656, 290)
def small_layout(d, w=656, h=290):
    """The whole of the Compact form: its ground, the well under the gain, hairlines between groups, the meters."""
    parts = rect(0, 0, w, h, d.lin([(0, '#1B1F27'), (.6, '#14171D'), (1, '#101318')])) + well(d, 20, 142, 84, 22, 4, '#0C0E13')
    for x in (124, 382, 530):
        parts += rect(x, 54, 1, 108, '#000', 0, .45) + rect(x + 1, 54, 1, 108, '#FFF', 0, .045)
    return (parts + rect(0, 174, w, 90, '#0A0C10') + rect(0, 174, w, 1, '#000', 0, .8) +
            rect(0, 173, w, 1, '#FFF', 0, .04))
