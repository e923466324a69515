"""What everything is made of: raised plates, wells, dark glass, tinted glass and cards.

Light falls straight from above. A plate has a lighter top edge and a shadow below; a well has a dark top edge and a
faint light on its lower lip.
"""

from kit import frame, rect
from tokens import C, over


def plate(d, x, y, w, h, r, fill0, fill1, top, edge_op=.9):
    return (rect(x, y, w, h, C['edge'], r, edge_op) +
            rect(x + .5, y + .5, w - 1, h - 1, d.lin([(0, top), (1, fill1)]), r - .5) +
            rect(x + .5, y + 1.5, w - 1, h - 2, d.lin([(0, fill0), (1, fill1)]), r - .5))


def plate_at_rest(d, x, y, w, h, r=3.5):
    return plate(d, x, y, w, h, r, '#252A34', '#1E222A', '#353C49')


def well(d, x, y, w, h, r, fill='#0B0D11', lip=.07, op=1):
    return (rect(x, y + .5, w, h, '#FFFFFF', r, lip) +
            rect(x, y, w, h - .5, d.lin([(0, '#040507'), (1, '#12151B')]), r, op) +
            rect(x + .5, y + 1, w - 1, h - 2, fill, r - .5, op))


def dark_glass(fill, op, top):
    """For controls that stand on the moving display."""
    return (rect(1, 0, 58, 20, C['edge'], 3.5, .55) + rect(1.5, .5, 57, 19, fill, 3, op) +
            rect(3, .5, 54, 1, '#FFFFFF', 0, top))


def tinted_glass(d, colour, w, h, r=4):
    """The colour fills a third; its rim and its ceiling light are pure. The rim lies on whole units, so that it is as
    sharp at scale 1 as at 2."""
    shades = [(stop, over(colour, alpha, '#12151B')) for stop, alpha in ((0, .62), (.5, .42), (1, .30))]
    return (rect(0, 0, w, h, d.lin(shades), r) +
            frame(0, 0, w, h, over(colour, .75, '#12151B'), r) +
            rect(3, 0, w - 6, 1, over(colour, .55, '#FFFFFF'), .5))


def ceiling_light(d, x, w, inset=5):
    """The accent line under the top edge of a plate that is on, as wide as the plate, and its light below."""
    return (rect(x, 1.5, w, 9, d.lin([(0, C['ice3'], .20), (1, C['ice3'], 0)]), 2) +
            rect(x + inset, 1, w - 2 * inset, 1, light_line(d)))


def light_line(d, ends=.1):
    return d.lin([(0, C['ice2'], ends), (.25, C['ice1']), (.75, C['ice1']), (1, C['ice2'], ends)], 0, 0, 1, 0)


def shadow(d, x, y, w, h, r, deviation, op=.6):
    return '<rect x="%g" y="%g" width="%g" height="%g" rx="%g" fill="#000" fill-opacity="%g" filter="%s"/>' % (
        x, y, w, h, r, op, d.blur(deviation))


def card(d, x, y, w, h, r, fill0, fill1, rim, height, end=0):
    """A panel that floats `height` units over the interface. Where it is stretched downwards its middle is repeated, so
    the shading has to be over where the upper end is: at `end` of the picture."""
    full = (end - y - 1) / (h - 2) if end else 1
    return (shadow(d, x, y + height * .4, w, h, r, height * .55) +
            rect(x - 1, y - 1, w + 2, h + 2, '#050609', r + 1, .9) + rect(x, y, w, h, rim, r) +
            rect(x + 1, y + 1, w - 2, h - 2, d.lin([(0, fill0), (full, fill1)]), r - 1))
