#!/usr/bin/python3
"""sheet.py FOLDER OUT.png: draws the rendered pictures of FOLDER in use and one by one, at the scales 1, 1.5 and 2."""

import sys

import cairo
import gi

gi.require_version('Pango', '1.0')
gi.require_version('PangoCairo', '1.0')
from gi.repository import Pango, PangoCairo  # noqa: E402  (the versions come first)

from device import Device  # noqa: E402
from registry import PICTURES  # noqa: E402
from text import FAMILY  # noqa: E402
from tokens import C  # noqa: E402
import pictures  # noqa: E402, F401  (fills the registry)

WIDTH, HEIGHT = 980, 1410
STATES = ('Normal', 'Active', 'Down')


class Sheet(Device):
    def say(self, x, base, string, size=11, colour=C['t2'], anchor=0, alpha=255, weight=400):
        """Live text; `anchor` is the part of its width that lies left of x."""
        layout = PangoCairo.create_layout(self.context)
        font = Pango.FontDescription()
        font.set_family(FAMILY)
        font.set_weight(weight)
        font.set_absolute_size(round(size * self.scale) * Pango.SCALE)
        layout.set_font_description(font)
        layout.set_text(string, -1)
        self.context.set_source_rgba(*(int(colour[i:i + 2], 16) / 255 for i in (1, 3, 5)), alpha / 255)
        self.context.move_to(round(self.pixel(x) - anchor * layout.get_pixel_size()[0]),
                             self.pixel(base) - round(layout.get_baseline() / Pango.SCALE))
        PangoCairo.show_layout(self.context, layout)

    def button(self, family, x, y, w, string='', state='Normal', icon=None, on=None, h=None, alpha=255, colour=C['t2']):
        self.stretch('Button%s%s' % (family, state), x, y, w, h, alpha)
        moved = 1 if state == 'Down' else 0
        width, height = self.size('Button%sNormal' % family)
        if on: self.draw(on, x + w / 2 - 10, y, alpha)
        if icon:
            iw, ih = self.size(icon)
            self.draw(icon, x + (w - iw) / 2 + moved, y + (height - ih) / 2 + moved, alpha)
        self.say(x + w / 2 + moved, y + (h or height) / 2 + 4 + moved, string, 11, colour, .5, alpha)

    def select(self, family, x, y, w, string, state='Normal', alpha=255):
        self.stretch('Button%s%s' % (family, state), x, y, w, None, alpha)
        self.say(x + 8, y + 14, string, 11, C['t1'], 0, alpha)
        self.draw('IconSelect', x + w - 17, y + 4, alpha)

    def toggle(self, x, y, colour, icon, alpha=255):
        self.draw('ButtonToggle' + colour, x, y, alpha)
        self.draw('Icon' + icon, x + 2, y, alpha)

    def knob(self, kind, x, y, degrees, back='Normal', over='Normal'):
        self.draw('Knob%sBack%s' % (kind, back), x, y)
        self.turned('Knob%sOverlay%s' % (kind, over), x, y, degrees)


def bars(s):
    s.stretch('LogoBar', 0, 0, WIDTH, end=100)
    for x, icon in ((420, 'IconUndo'), (444, 'IconRedo'), (508, 'IconPrevious')):
        s.button('Bar', x, 9, 24 if x < 500 else 20, icon=icon, alpha=90 if icon == 'IconRedo' else 255)
    s.button('Bar', 470, 9, 34, 'Copy')
    s.select('Dark', 528, 9, 180, 'Loud - Dense and Thick *')
    s.button('Bar', 708, 9, 20, icon='IconNext')
    s.draw('OutputLockOn', 748, 9)
    s.draw('OutputLockOff', 816, 9)
    s.button('Bar', 884, 9, 38, 'Help')
    s.draw('ButtonBarFullScreen', 924, 9)
    s.draw('IconFullScreen', 925, 9)
    s.stretch('BottomBar', 0, 54, WIDTH, end=50)
    s.draw('LightOn', 4, 61)
    s.draw('LightOff', 20, 61)
    s.button('Bar', 36, 58, 72, 'MIDI Learn')
    s.button('Bar', 108, 58, 20, icon='IconMenu')
    s.draw('ButtonTruePeakLimitingOn', 144, 58)
    s.draw('ButtonTruePeakLimitingOff', 226, 58)
    s.say(322, 72, 'Oversampling:', 11, C['t3'])
    s.select('Dark', 400, 58, 44, '4x')
    s.select('Dark', 448, 58, 88, '24 Bits (O)', 'Active')
    s.select('Dark', 540, 58, 88, 'Off', alpha=90)
    s.draw('OutputLightsOff', 640, 58)
    s.say(666, 71.6, '-1.0 dBTP', 10, C['t1'], .5)
    for i, (colour, icon) in enumerate((('Off', 'DC'), ('Blue', 'DC'), ('Orange', 'SideChain'), ('Yellow', 'UnityGain'),
                                        ('Red', 'Audition'), ('Off', 'Bypass'), ('Red', 'Bypass'), ('Off', 'UnityGain'))):
        s.toggle(704 + 23 * i, 60, colour, icon)
    s.button('Bar', 950, 58, 20, icon='IconResize')


def knobs(s, y):
    for x, kind in ((10, 'ExtraLarge'), (480, 'Large'), (770, 'Small')):
        step, box = (92, 88) if kind == 'ExtraLarge' else (62 if kind == 'Large' else 50, 58)
        for i, (back, over, degrees) in enumerate((('Normal', 'Normal', -96), ('Active', 'Active', -20),
                                                   ('Active', 'Rotate', 62), ('Active', 'Down', 118))):
            s.knob(kind, x + i * step, y, degrees, back, over)
            if i == 0: s.draw('Knob%sFocus' % kind, x, y)
        if kind != 'ExtraLarge': s.draw('StereoLinkLabels' + ('Normal' if kind == 'Large' else 'Surround'), x, y + 62)
    for i, name in enumerate(('COff', 'COn', 'LFEOff', 'LFEOn')):
        s.draw('ButtonCLFENormal', 630 + 32 * i, y + 66)
        s.draw('Button' + name, 630 + 32 * i, y + 66)


def families(s, y):
    for j, family in enumerate(('Bar', 'Hide', 'Dark', 'Meter', 'Transparent', 'Dialog', 'DialogDefault')):
        tall = 29 if family.startswith('Dialog') else None
        for i, state in enumerate(STATES):
            s.button(family, 10 + 66 * i + (j % 4) * 240, y + 28 * (j // 4), 62, family[:6] if not i else state, state, h=tall)
    s.button('Bar', 750, y + 28, 62, 'On', on='ButtonBarOn', colour=C['t1'])
    s.button('Bar', 816, y + 28, 62, 'Focus')
    s.stretch('FocusRing', 813, y + 25, 68, 26)
    s.button('Bar', 884, y + 28, 62, 'Disabled', alpha=90)
    for i, state in enumerate(STATES):
        s.button('Hover', 10 + 26 * i, y + 62, 20, state=state, icon='IconReset')
        s.draw('ButtonAdvanced' + state, 130 + 30 * i, y + 62)
    s.draw('ButtonHoverOn', 88, y + 62)
    s.draw('IconPauseOn', 90, y + 64)
    for i, icon in enumerate(('Undo', 'Redo', 'Previous', 'Next', 'Menu', 'Resize', 'FullScreen', 'Bypass', 'DC', 'SideChain',
                              'UnityGain', 'Audition', 'PauseOff', 'PauseOn', 'Reset', 'Remove', 'Select', 'MenuCheck',
                              'MenuSubmenu')):
        s.draw('Icon' + icon, 230 + 24 * i, y + 62)
    s.draw('DisplayMenu', 700, y + 62)
    s.stretch('PopupBackground', 736, y + 54, 136, 42)
    s.draw('DisplayIconsOff', 744, y + 62)
    s.draw('ButtonMeterNormal', 890, y + 62)
    s.draw('ButtonMeterOn', 910, y + 62)


def menus(s, y):
    s.stretch('MenuBackground', 10, y, 150, 108)
    for i, (string, mark) in enumerate((('Enable MIDI', 'IconMenuCheck'), ('Clear', 'IconMenuSubmenu'), ('-', ''),
                                        ('Clear All', ''), ('Revert', ''))):
        top = y + 4 + 20 * i + (0 if i < 3 else -6)
        if string == '-':
            s.stretch('MenuSeparator', 11, top + 3, 148)
            continue
        if i == 1: s.stretch('MenuItemActive', 14, top, 142)
        s.say(36, top + 14, string, 11, C['t1'], alpha=90 if i == 4 else 255)
        if mark: s.draw(mark, 16 if i == 0 else 136, top + 2)
    s.stretch('HelpHintBackground', 166, y, 300, 84)
    s.say(183, y + 30, 'The Redo button cancels the last undo command.', 11, C['t1'])
    s.stretch('ParameterValueDisplayBackground', 470, y, 80, 56)
    s.say(510, y + 21, 'Release', 10, C['t2'], .5)
    s.say(510, y + 37, '500 ms', 12, '#FFFFFF', .5, weight=500)
    s.stretch('TextEditorFrame', 480, y + 62, 60)
    s.fill(486, y + 66, 36, 12, C['ice5'])
    s.say(486, y + 76, '-1.00', 11, C['t1'])
    s.stretch('MidiLearnLabelBackground', 556, y, 200, 28)
    s.say(656, y + 17, 'Click a control to learn it', 11, C['t1'], .5)
    s.draw('MidiLearnLabel', 560, y + 36)
    s.say(580, y + 50, 'CC 7', 10, C['t1'], .5)
    s.draw('MidiLearnLabelActive', 606, y + 36)
    s.say(626, y + 50, 'CC 8', 10, C['t1'], .5)
    for i, state in enumerate(('Normal', 'Active')):
        s.stretch('SwitchTrack' + state, 556 + 100 * i, y + 70, 92)
        s.draw('SwitchThumb' + state, 586 + 100 * i, y + 69)
    for i, unit in enumerate(('DBTP', 'DB')):
        s.draw('OutputLevelLabels' + unit, 660 + 90 * i, y + 36)
    s.say(722, y + 51.8, '-1.00', 13, C['t1'], .5, weight=500)
    for i, state in enumerate(('Normal', 'Active')):
        s.stretch('GainSliderBackground' + state, 860 + 54 * i, y, 40, 108)
        s.draw('GainSliderButton' + state, 853 + 54 * i, y + 30)
        s.say(877 + 54 * i, y + 52.7, '6.2', 13, C['t1'], .5, weight=500)


def display(s, y):
    """What stands on the picture: over its brightest and over its darkest part."""
    s.fill(10, y, 470, 130, '#8D97B8')
    s.fill(250, y, 230, 130, C['ground'])
    for x in (20, 260):
        s.draw('DisplayPeakLabel', x, y + 8)
        s.say(x + 24, y + 22, '-3.3 dB', 10, C['t1'], .5)
        s.draw('PeakLabelBackground', x + 56, y + 8)
        s.draw('GainLabel', x + 96, y + 8)
        s.draw('LoudnessRangeShadow', x + 130, y + 6)
        s.draw('LoudnessRange', x + 130, y + 6)
        s.draw('LoudnessLabels', x + 156, y + 8)
        s.stretch('IncomingLine', x + 186, y, 20, 130, end=16)
        s.draw('MeterLabelsVer', x - 6, y + 30)
    for name, x, alpha in (('AdvancedBackground', -346, 50), ('DitherPanel', 206, 128), ('BottomBackgroundLarge', 354, 80)):
        s.context.save()
        s.context.rectangle(s.pixel(10), s.pixel(y + 50), s.pixel(470), s.pixel(80))
        s.context.clip()
        s.draw(name, x, y + 50, alpha)
        s.context.restore()
    for i, (high, low) in enumerate(((C['m_hi'], C['m_lo']), ('#DB4355', '#8A2937'), ('#F7B753', '#CFBA98'))):
        meter(s, 500 + 40 * i, y, high, low)
    s.stretch('DialogGeneric', 630, y - 10, 350, 164)
    s.say(664, y + 32, 'Restore the factory presets?', 12, C['t1'], weight=500)
    s.button('Dialog', 690, y + 94, 124, 'Cancel', h=29)
    s.button('DialogDefault', 820, y + 94, 124, 'OK', h=29, colour=C['t1'])


def meter(s, x, y, high, low):
    """The part tiled down the bar, each tile tinted by the gradient at its middle, and a letter at its end."""
    for top in range(0, 128, 4):
        s.stretch('LevelMeterPart', x, y + top, 31)
        mix = (top + 2) / 128
        tint = [int(high[i:i + 2], 16) * (1 - mix) + int(low[i:i + 2], 16) * mix for i in (1, 3, 5)]
        s.context.set_operator(cairo.OPERATOR_MULTIPLY)
        s.fill(x, y + top, 31, 4, '#' + ''.join('%02X' % round(v) for v in tint))
        s.context.set_operator(cairo.OPERATOR_OVER)
    letters = s.load('MeterLabelsVer')
    for cell, left in ((0, 2), (5, 17)):
        s.copy(letters, s.pixel(x + left), s.pixel(y + 114), s.pixel(12 * cell), 0, s.pixel(12), s.pixel(12), 1)


def catalogue(s, y):
    """Every picture by itself; large ones show their left upper corner."""
    x, row = 10, 0
    for name in sorted(PICTURES, key=lambda n: (PICTURES[n][1] > 60, n)):
        w, h = min(PICTURES[name][0], 130), min(PICTURES[name][1], 88)
        wide = max(w, 58)
        if x + wide > WIDTH - 8: x, y, row = 10, y + row + 16, 0
        picture = s.load(name)
        s.fill(x, y, w, h, C['plate'])
        s.copy(picture, s.pixel(x), s.pixel(y), 0, 0, s.pixel(w), s.pixel(h), 1)
        s.say(x, y + h + 8, name if len(name) * 3.2 < wide + 4 else name[:int((wide + 4) / 3.2)], 6, C['t3'])
        x, row = x + wide + 8, max(row, h)


def page(folder, scale):
    s = Sheet(folder, WIDTH, HEIGHT, scale, C['bar'])
    bars(s)
    knobs(s, 94)
    families(s, 196)
    menus(s, 302)
    display(s, 428)
    catalogue(s, 576)
    return s.surface


def main(arguments):
    if len(arguments) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    folder, output = arguments
    pages = [page(folder, scale) for scale in (1, 1.5, 2)]
    whole = cairo.ImageSurface(cairo.FORMAT_RGB24, pages[-1].get_width(), sum(p.get_height() for p in pages))
    context, top = cairo.Context(whole), 0
    for surface in pages:
        context.set_source_surface(surface, 0, top)
        context.paint()
        top += surface.get_height()
    whole.write_to_png(output)
    return 0


if __name__ == '__main__':
    sys.exit(main(sys.argv[1:]))
