"""Text as outlines, so that building the pictures needs no font."""

import cairo
import gi

gi.require_version('Pango', '1.0')
gi.require_version('PangoCairo', '1.0')
from gi.repository import Pango, PangoCairo  # noqa: E402  (the versions come first)

from tokens import C  # noqa: E402

FAMILY = 'Inter'
WEIGHT = dict(medium=500, semi=600, bold=700)
ZOOM = 16  # laid out larger, so that no advance is rounded

_context = cairo.Context(cairo.ImageSurface(cairo.FORMAT_A8, 8, 8))
_unhinted = cairo.FontOptions()
_unhinted.set_hint_style(cairo.HINT_STYLE_NONE)
_unhinted.set_hint_metrics(cairo.HINT_METRICS_OFF)
_glyphs = {}


def _layout(string, size, weight, track):
    layout = PangoCairo.create_layout(_context)
    PangoCairo.context_set_font_options(layout.get_context(), _unhinted)
    font = Pango.FontDescription()
    font.set_family(FAMILY)
    font.set_weight(WEIGHT[weight])
    font.set_absolute_size(size * ZOOM * Pango.SCALE)
    layout.set_font_description(font)
    escaped = string.replace('&', '&amp;').replace('<', '&lt;')
    layout.set_markup('<span font_features="tnum=1,case=1" letter_spacing="%d">%s</span>' % (
        round(track * ZOOM * Pango.SCALE), escaped))
    _require_family(layout)
    return layout


def _require_family(layout):
    """Another face would be drawn without a word where the right one is missing."""
    found = layout.get_iter().get_run_readonly().item.analysis.font.describe().get_family()
    if found != FAMILY:
        raise SystemExit('the font %s is missing, %s was found instead: install fonts-inter' % (FAMILY, found))


def _glyph(character, size, weight, x, y):
    key = (character, size, weight)
    if key not in _glyphs:
        layout = _layout(character, size, weight, 0)
        base = layout.get_baseline() / Pango.SCALE
        _context.new_path()
        PangoCairo.layout_path(_context, layout)
        _glyphs[key] = [(kind, [(v - (base if i % 2 else 0)) / ZOOM for i, v in enumerate(points)])
                        for kind, points in _context.copy_path()]
        _context.new_path()
    number = lambda v: ('%.2f' % v).rstrip('0').rstrip('.')
    return ['MLCZ'[kind] + ' '.join(number(v + (y if i % 2 else x)) for i, v in enumerate(points))
            for kind, points in _glyphs[key]]


def text(x, y, string, size=11, weight='medium', fill=C['t2'], anchor='start', track=0, opacity=1):
    """One line of text; (x, y) is on its base line at `anchor`: start, middle or end."""
    layout = _layout(string, size, weight, track)
    width = layout.get_size()[0] / Pango.SCALE / ZOOM - track
    x -= {'start': 0, 'middle': width / 2, 'end': width}[anchor]
    path, position = [], 0
    for character in string:  # placed by the layout of the whole: kerning stays
        left = layout.index_to_pos(position).x / Pango.SCALE / ZOOM
        position += len(character.encode())
        path += _glyph(character, size, weight, x + left, y)
    shade = '' if opacity == 1 else ' fill-opacity="%g"' % opacity
    return '<path fill="%s"%s d="%s"><title>%s</title></path>' % (
        fill, shade, ''.join(path), string.replace('&', '&amp;'))


def caption(x, y, string, size=9.625, fill=C['t1'], track=.6):
    """Capitals over a control, centred."""
    return text(x, y, string, size, 'semi', fill, 'middle', track)
