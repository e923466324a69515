"""A small kit for drawing SVG in logical units: shapes, gradients and text as outlines."""

import hashlib
import math

from tokens import C


class Doc:
    """One picture. Collects definitions; equal ones are shared."""

    def __init__(self, width, height, scale=2):
        self.width, self.height, self.scale = width, height, scale
        self.defs, self.body = {}, []

    def define(self, xml):
        key = 'd' + hashlib.md5(xml.encode()).hexdigest()[:8]
        self.defs[key] = xml.replace('ID', key, 1)
        return 'url(#%s)' % key

    def lin(self, stops, x1=0, y1=0, x2=0, y2=1, user=False):
        return self.define('<linearGradient id="ID" x1="%g" y1="%g" x2="%g" y2="%g"%s>%s</linearGradient>' % (
            x1, y1, x2, y2, ' gradientUnits="userSpaceOnUse"' if user else '', _stops(stops)))

    def rad(self, stops, cx, cy, r):
        return self.define('<radialGradient id="ID" gradientUnits="userSpaceOnUse" cx="%g" cy="%g" r="%g">%s'
                           '</radialGradient>' % (cx, cy, r, _stops(stops)))

    def blur(self, deviation):
        return self.define('<filter id="ID" x="-60%%" y="-60%%" width="220%%" height="220%%" '
                           'color-interpolation-filters="sRGB"><feGaussianBlur stdDeviation="%g"/></filter>' % deviation)

    def clip(self, xml):
        return self.define('<clipPath id="ID">%s</clipPath>' % xml)

    def svg(self):
        return ('<svg xmlns="http://www.w3.org/2000/svg" width="%g" height="%g" viewBox="0 0 %g %g">\n'
                '<defs>\n%s\n</defs>\n%s\n</svg>\n' % (
                    self.width * self.scale, self.height * self.scale, self.width, self.height,
                    '\n'.join(self.defs.values()), '\n'.join(self.body)))


def _stops(stops):
    """Stops are (offset, colour) or (offset, colour, opacity)."""
    full = ((s if len(s) == 3 else (s[0], s[1], 1)) for s in stops)
    return ''.join('<stop offset="%g" stop-color="%s"%s/>' % (o, c, '' if a == 1 else ' stop-opacity="%.4g"' % a)
                   for o, c, a in full)


def rect(x, y, w, h, fill, r=0, op=1):
    return '<rect x="%g" y="%g" width="%g" height="%g"%s fill="%s"%s />' % (
        x, y, w, h, ' rx="%g"' % r if r else '', fill, '' if op == 1 else ' fill-opacity="%g"' % op)


def frame(x, y, w, h, stroke_, r=0, op=1, sw=1):
    """A frame whose line lies wholly inside the box: sharp at every scale."""
    return ('<rect x="%g" y="%g" width="%g" height="%g" rx="%g" fill="none" stroke="%s" stroke-width="%g" '
            'stroke-opacity="%g"/>' % (x + sw / 2, y + sw / 2, w - sw, h - sw, max(r - sw / 2, 0), stroke_, sw, op))


def circle(cx, cy, r, fill='none', op=1):
    return '<circle cx="%g" cy="%g" r="%g" fill="%s"%s />' % (
        cx, cy, r, fill, '' if op == 1 else ' fill-opacity="%g"' % op)


def ring(cx, cy, r, stroke_, sw=1, op=1):
    return '<circle cx="%g" cy="%g" r="%g" fill="none" stroke="%s" stroke-width="%g" stroke-opacity="%g"/>' % (
        cx, cy, r, stroke_, sw, op)


def line(x1, y1, x2, y2, stroke_, sw=1, op=1, cap='butt'):
    return ('<line x1="%g" y1="%g" x2="%g" y2="%g" stroke="%s" stroke-width="%g" stroke-opacity="%g" '
            'stroke-linecap="%s"/>' % (x1, y1, x2, y2, stroke_, sw, op, cap))


def stroke(d, col, sw=1.5, op=1, cap='round', join='round', extra=''):
    return ('<path d="%s" fill="none" stroke="%s" stroke-width="%g" stroke-opacity="%g" stroke-linecap="%s" '
            'stroke-linejoin="%s" %s/>' % (d, col, sw, op, cap, join, extra))


def at(x, y, xml):
    return '<g transform="translate(%g %g)">%s</g>' % (x, y, xml)


def polar(cx, cy, r, degrees):
    """A point on a circle; degrees run clockwise from straight up."""
    a = math.radians(degrees)
    return cx + r * math.sin(a), cy - r * math.cos(a)


def arc(cx, cy, r, a, b):
    x1, y1 = polar(cx, cy, r, a)
    x2, y2 = polar(cx, cy, r, b)
    return 'M%.3f %.3fA%g %g 0 %d 1 %.3f %.3f' % (x1, y1, r, r, 1 if b - a > 180 else 0, x2, y2)
