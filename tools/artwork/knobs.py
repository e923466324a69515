"""Knobs: two backs and four overlays for each size.

An overlay is turned at run time, so nothing in it may hint at where light comes from.
"""

from dataclasses import dataclass

from kit import arc, circle, line, polar, ring, stroke
from registry import picture
from tokens import C

SWEEP = 150  # degrees to either side of straight up


@dataclass(frozen=True)
class Size:
    box: float
    track: float  # radii
    disc: float
    pointer_from: float
    pointer_to: float
    pointer_width: float
    bead: float
    marks: int  # pieces of the graduated track
    light: float  # the wider the track, the fewer degrees the same light takes


SIZES = dict(
    Large=Size(58, 25.5, 20, 9, 17.5, 2.0, 2.0, 10, 1),
    Small=Size(58, 20.5, 15.5, 6, 13.2, 2.0, 1.75, 10, 25.5 / 20.5),
    ExtraLarge=Size(88, 40, 32.5, 18, 29, 2.5, 2.5, 20, .82))


def track(k, colour):
    c = k.box / 2
    gap = 1.5 / k.track * 57.3 / 2
    parts = stroke(arc(c, c, k.track, -SWEEP, SWEEP), C['edge'], 3, .85)
    for j in range(k.marks):
        a = -SWEEP + j * 2 * SWEEP / k.marks
        b = a + 2 * SWEEP / k.marks
        parts += stroke(arc(c, c, k.track, a + (gap if j else 0), b - (gap if j < k.marks - 1 else 0)), colour, 1,
                        cap='butt')
    return parts


def back(d, k, rim, rim_low, face, face_low, dish, dish_low, mark):
    c, r, dish_radius = k.box / 2, k.disc, k.disc * .62
    # The dark pool lets the knob stand calmly on a moving picture; it ends with its box.
    pool = d.rad([(0, '#07080B', .62), (k.track / c - .04, '#07080B', .5), (1, '#07080B', 0)], c, c, c)
    parts = circle(c, c, c, pool) + track(k, mark)
    parts += '<ellipse cx="%g" cy="%g" rx="%g" ry="%g" fill="#000" fill-opacity=".62" filter="%s"/>' % (
        c, c + r * .12 + 1, r * .97, r * .97, d.blur(r * .085))
    parts += circle(c, c, r + .5, '#050609')
    parts += circle(c, c, r, d.lin([(0, rim), (.35, rim_low), (1, '#14171D')]))
    parts += circle(c, c, r - 1, d.lin([(0, face), (1, face_low)]))
    parts += circle(c, c, dish_radius + .5, d.lin([(0, '#14171D', .55), (1, '#4A5364', .35)]))
    return parts + circle(c, c, dish_radius, d.lin([(0, dish), (1, dish_low)]))


BACKS = dict(Normal=('#596275', '#353C49', '#343B48', '#1E222A', '#20242D', '#292F3A', '#414A5A'),
             Active=('#6A7489', '#3D4554', '#3D4554', '#232831', '#262B35', '#313845', '#566178'))


@dataclass(frozen=True)
class Look:
    pointer: str
    bead: str
    grow: float = 1  # of the bead
    span: float = 0  # degrees of light to either side of the bead
    light: str = C['ice2']
    width: float = 0  # of the light on the track
    halo: float = 0  # its opacity


OVERLAYS = dict(
    Normal=Look('#C9CFDC', C['ice3']),
    Active=Look('#F2F4F9', C['ice2'], 1, 13, C['ice2'], 1.5),  # the pointer is over the knob
    Rotate=Look('#F2F4F9', C['ice1'], 1.3, 22, C['ice2'], 2, .30),  # the pointer is over the grip
    Down=Look(C['ice1'], '#FFFFFF', 1.3, 26, C['ice1'], 2, .45))  # the grip is dragged


def overlay(d, k, look):
    c, parts = k.box / 2, ''
    if look.span:
        span = look.span * k.light
        x0, x1 = polar(c, c, k.track, -span)[0], polar(c, c, k.track, span)[0]
        faded = lambda colour, op: d.lin([(0, C['ice3'], 0), (.5, colour, op), (1, C['ice3'], 0)], x0, 0, x1, 0, True)
        light = faded(look.light, 1)
        if look.halo:
            parts += stroke(arc(c, c, k.track, -span, span), faded(C['ice3'], look.halo), 5, cap='butt')
        parts += stroke(arc(c, c, k.track, -span, span), light, look.width, cap='butt')
    parts += line(c, c - k.pointer_from, c, c - k.pointer_to, '#07080B', k.pointer_width + 1.5, .55, 'round')
    parts += line(c, c - k.pointer_from, c, c - k.pointer_to, look.pointer, k.pointer_width, 1, 'round')
    bead = k.bead * look.grow
    return parts + circle(c, c - k.track, bead + 1, '#07080B', .9) + circle(c, c - k.track, bead, look.bead)


def focus(k):
    """The keyboard's ring, between the disc and the track."""
    c = k.box / 2
    return ring(c, c, k.disc + 1.75, C['ice2'], 1.5) + ring(c, c, k.disc + 3, '#07080B', 1, .9)


for _name, _size in SIZES.items():
    for _state, _shades in BACKS.items():
        picture('Knob%sBack%s' % (_name, _state), _size.box, _size.box)(
            lambda d, k=_size, shades=_shades: back(d, k, *shades))
    for _state, _look in OVERLAYS.items():
        picture('Knob%sOverlay%s' % (_name, _state), _size.box, _size.box)(
            lambda d, k=_size, look=_look: overlay(d, k, look))
    picture('Knob%sFocus' % _name, _size.box, _size.box)(lambda d, k=_size: focus(k))
