"""Sliders: the gain slider of the display and the plain one."""

from kit import rect
from registry import picture
from surfaces import shadow
from tokens import C


def thumb(d, active, x, y, w, h, r=4, depth=3):
    rim, rim_low, face, face_low = (('#566072', '#333A47', '#363E4B', '#20242D'),
                                    ('#6A7489', '#3D4554', '#424B5A', '#272C37'))[active]
    return (shadow(d, x, y + depth, w, h, r, 2.2 * depth / 3, .7) + rect(x - .5, y - .5, w + 1, h + 1, '#050609', r + .5) +
            rect(x, y, w, h, d.lin([(0, rim), (.5, rim_low), (1, '#181B21')]), r) +
            rect(x + 1, y + 1, w - 2, h - 2, d.lin([(0, face), (1, face_low)]), r - 1))


def gain_thumb(d, active):
    """It holds the value; two ticks at the middle are the reading edge."""
    mark = C['ice1'] if active else C['ice3']
    return thumb(d, active, 2, 6, 44, 24) + rect(2, 17, 3, 2, mark) + rect(43, 17, 3, 2, mark)


def groove(fill, x, y, w, h, r):
    return (rect(x, y, w, h, '#FFFFFF', r, .10) + rect(x, y, w, h - .5, '#030405', r) +
            rect(x + 1, y + 1, w - 2, h - 2, fill, r - 1))


def level_thumb(d, active):
    """The reading edge of a slider that lies on its side."""
    mark = C['ice1'] if active else C['ice3']
    return thumb(d, active, 3, 2, 14, 16, 3.5, 2) + rect(9, 2, 2, 3, mark) + rect(9, 15, 2, 3, mark)


for _active, _word in enumerate(('Normal', 'Active')):
    _fill = ('#14171D', '#1C2028')[_active]
    picture('GainSliderButton' + _word, 48, 36)(lambda d, a=_active: gain_thumb(d, a))
    # Stretched along y. The groove lies around x 17, which is 24 in the slider.
    picture('GainSliderBackground' + _word, 40, 60)(lambda d, f=_fill: groove(f, 13, 0, 8, 60, 4))
    picture('SwitchTrack' + _word, 60, 20)(lambda d, f=_fill: groove(f, 0, 7, 60, 6, 3))
    picture('SwitchThumb' + _word, 20, 24)(lambda d, a=_active: level_thumb(d, a))
