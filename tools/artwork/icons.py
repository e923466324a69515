"""Icons: strokes 1.5 wide with round ends.

Straight strokes have their middle at a quarter: their edges then fall on whole pixels at scale 2, and one of them does
at scale 1.
"""

from kit import circle, rect, stroke
from registry import picture
from text import text
from tokens import C

INK = C['ink']


def icon(name, size, *paths, colour=INK, raw=None):
    draw = lambda d: ''.join(stroke(p, colour, 1.5) for p in paths) + (raw(d) if raw else '')
    picture('Icon' + name, size, size)(draw)


# On toggles.
icon('Bypass', 16, 'M1.5 10.75H4A4 4 0 0 1 12 10.75H14.5', raw=lambda d: circle(8, 10.75, 1.6, INK))
icon('DC', 16, 'M2.75 5.75H13.25', 'M2.75 9.75H4', 'M7.375 9.75H8.625', 'M12 9.75H13.25')
icon('SideChain', 16, 'M2 4.75H14', 'M2 11.25H6.5Q10 11.25 10 8.25', 'M7.75 9.75L10 7.5L12.25 9.75')
icon('UnityGain', 16, raw=lambda d: text(8, 11.6, '1:1', 10, 'bold', INK, 'middle', .2))
icon('Audition', 16, 'M3 9.5V8A5 5 0 0 1 13 8V9.5',
     raw=lambda d: rect(2, 9, 3, 4.5, INK, 1.25) + rect(11, 9, 3, 4.5, INK, 1.25))

# On bars.
icon('Undo', 20, 'M7.25 5L4 8.25L7.25 11.5', 'M4.5 8.25H11.5A3.25 3.25 0 0 1 11.5 14.75H8.5')
icon('Redo', 20, 'M12.75 5L16 8.25L12.75 11.5', 'M15.5 8.25H8.5A3.25 3.25 0 0 0 8.5 14.75H11.5')
icon('Previous', 20, 'M11.75 6L7.75 10L11.75 14')
icon('Next', 20, 'M8.25 6L12.25 10L8.25 14')
icon('Menu', 20, 'M6.5 8.5L10 12L13.5 8.5')
icon('Resize', 20, 'M5.75 14.25L14.25 5.75', 'M10 5.75H14.25V10', 'M10 14.25H5.75V10')
icon('FullScreen', 20, 'M4.75 8V4.75H8', 'M12 4.75H15.25V8', 'M15.25 12V15.25H12', 'M8 15.25H4.75V12')

# Of a file that plays.
icon('Restart', 20, 'M5.75 5.75V14.25', 'M13.75 5.75L8.25 10L13.75 14.25Z')
icon('Play', 20, 'M7.25 5.25L14.25 10L7.25 14.75Z')
icon('Pause', 20, raw=lambda d: rect(6, 5, 3, 10, INK, .75) + rect(11, 5, 3, 10, INK, .75))
icon('Loop', 20, 'M13 3.75L15.25 6L13 8.25', 'M14.5 6H7.5A2.75 2.75 0 0 0 4.75 8.75V9.5',
     'M7 11.75L4.75 14L7 16.25', 'M5.5 14H12.5A2.75 2.75 0 0 0 15.25 11.25V10.5')

# In the loudness panel and beside fields.
bars = lambda colour: rect(5, 4, 2, 8, colour, .5) + rect(9, 4, 2, 8, colour, .5)
icon('PauseOff', 16, raw=lambda d: bars(INK))
icon('PauseOn', 16, raw=lambda d: circle(8, 8, 7.5, C['unity'], .22) + bars(C['unity']))
icon('Reset', 16, 'M12.3 5.1A5 5 0 1 0 13 8', 'M12.75 2.25V5.25H9.75')
icon('Remove', 12, 'M3.5 3.5L8.5 8.5', 'M8.5 3.5L3.5 8.5')

# In menus and at the right end of a button that opens one.
icon('Select', 12, 'M3 4.75L6 7.75L9 4.75', colour=C['t3'])
icon('MenuCheck', 16, 'M3.75 8.25L6.75 11.25L12.25 5', colour=C['ice2'])
icon('MenuSubmenu', 16, 'M6.75 4.75L10 8L6.75 11.25', colour=C['t3'])


@picture('LightOff', 14, 14)
def light_off(d):
    return (circle(7, 7.75, 4, '#FFF', .10) + circle(7, 7, 4, C['edge']) +
            circle(7, 7, 3, d.lin([(0, '#1B1F27'), (1, '#39414F')])))


@picture('LightOn', 14, 14)
def light_on(d):
    return (circle(7, 7, 7, d.rad([(.3, C['ice3'], .55), (1, C['ice3'], 0)], 7, 7, 7)) + circle(7, 7, 4, C['edge']) +
            circle(7, 7, 3, d.lin([(0, '#FFFFFF'), (1, C['ice2'])])))
