"""Panels on the display, cards that float over everything, and the frames of fields and menus."""

from kit import frame, rect
from registry import picture
from surfaces import card, well
from text import text
from tokens import C


def backdrop(w, h, rim):
    """Black with a light rim: drawn at a low alpha, the black dims what lies below and the rim leaves a hairline. It
    stands on the bottom bar, so it has no lower edge."""
    def path(inset, r, fill):
        return '<path d="M%g %gV%ga%g %g 0 0 1 %g -%gH%ga%g %g 0 0 1 %g %gV%gZ" fill="%s"/>' % (
            inset, h, 4, r, r, r, r, w - 4, r, r, r, r, h, fill)
    return path(0, 4, rim) + path(1, 3, '#000')


@picture('AdvancedBackground', 556, 124)
def advanced(d):
    """Drawn at alpha 50. The last 23 units stay empty: there only the tab stands out, also when the panel is away."""
    return ('<path d="M0 0H526a4 4 0 0 1 4 4V122H0Z" fill="#FFFFFF"/>'
            '<path d="M0 1H526a3 3 0 0 1 3 3V122H0Z" fill="#000"/>')


@picture('BottomBackgroundLarge', 110, 106)
def output(d):
    """Drawn at alpha 80, 104 wide; the rest of the box is spare."""
    return backdrop(104, 106, C['ink_lo'])


@picture('DitherPanel', 140, 110)
def dither(d):
    """Drawn at alpha 128."""
    return backdrop(140, 110, '#6A7489')


@picture('ParameterValueDisplayBackground', 72, 52)
def value_panel(d):
    return card(d, 6, 5, 60, 40, 5, '#262B36', '#1E222A', '#4A5364', 5, 17)


@picture('HelpHintBackground', 96, 72)
def hint(d):
    """Its text keeps 15, 10, 35 and 15 units from the edges of the box."""
    return card(d, 5, 3, 86, 62, 6, '#2A303C', '#232832', '#4F596B', 5, 24) + rect(6, 10, 2, 48, C['ice3'], 1)


@picture('PopupBackground', 72, 52)
def popup(d):
    """The panel that a popup button opens: over the display like the value panel, as dark as the button's glass."""
    return card(d, 6, 4, 60, 40, 5, '#1B1F27', '#15181E', C['line_hi'], 5, 17)


@picture('DialogGeneric', 400, 204)
def dialog(d, w=400, h=204):
    """All that varies along x lies in the outer thirds, so that it may be stretched."""
    left = d.lin([(0, C['ice3'], 0), (1, C['ice2'], .9)], 22, 0, 130, 0, True)
    right = d.lin([(0, C['ice2'], .9), (1, C['ice3'], 0)], w - 130, 0, w - 22, 0, True)
    return (card(d, 14, 10, w - 28, h - 30, 8, '#232832', '#1A1E25', '#434B5A', 16, 68) +
            rect(22, 10, 108, 1, left) + rect(130, 10, w - 260, 1, C['ice2'], 0, .9) + rect(w - 130, 10, 108, 1, right) +
            rect(15, h - 68, w - 30, 1, '#0B0D11') + rect(15, h - 67, w - 30, 1, '#FFFFFF', 0, .04))


@picture('MidiLearnLabelBackground', 72, 28)
def midi_prompt(d):
    return card(d, 4, 3, 64, 20, 4, C['ice5'], '#222A4A', C['ice3'], 4)


@picture('MidiLearnLabel', 40, 20)
def midi_label(d):
    """At each control: its controller's number. Nearly opaque, as it covers captions."""
    return rect(0, 0, 40, 20, C['bar'], 3, .92) + frame(0, 0, 40, 20, C['ice3'], 3, .9)


@picture('MidiLearnLabelActive', 40, 20)
def midi_label_active(d):
    """At the control that is being learned."""
    return rect(0, 0, 40, 20, C['ice5'], 3) + frame(0, 0, 40, 20, C['ice1'], 3)


# A menu is a window of its own: opaque to its corners, and its shadow is the window manager's.
@picture('MenuBackground', 36, 36)
def menu(d):
    return rect(0, 0, 36, 36, C['line_hi']) + rect(1, 1, 34, 34, '#1B1F27') + rect(1, 1, 34, 1, '#FFFFFF', 0, .05)


@picture('MenuItemActive', 36, 20)
def menu_item(d):
    return rect(0, 0, 36, 20, C['plate_hi'], 3)


@picture('MenuSeparator', 36, 8)
def menu_separator(d):
    return rect(4, 3, 28, 1, '#000', 0, .5) + rect(4, 4, 28, 1, '#FFFFFF', 0, .09)


@picture('TextEditorFrame', 36, 20)
def text_editor(d):
    """A field that is being typed into. Opaque, so that nothing of the value below shows between its letters."""
    return rect(0, 0, 36, 20, C['void'], 3.5) + frame(0, 0, 36, 20, C['ice2'], 3.5)


@picture('FocusRing', 36, 36)
def focus(d):
    """The keyboard's ring. The control is the box less 3 units on each side: 1.5 of ring begin 2 outside it, and a dark
    line lies beyond."""
    return frame(0, 0, 36, 36, '#07080B', 6.5, .9, 1) + frame(1, 1, 34, 34, C['ice2'], 5.5, 1, 1.5)


@picture('OutputLightsOff', 52, 20)
def output_value(d):
    return well(d, 0, 0, 52, 20, 3.5, '#0C0E13')


def output_label(d, unit):
    return well(d, 0, 0, 84, 22, 4, '#0C0E13') + text(7, 14.3, unit, 8.5, 'medium', C['t3'])


picture('OutputLevelLabelsDBTP', 84, 22)(lambda d: output_label(d, 'dBTP'))
picture('OutputLevelLabelsDB', 84, 22)(lambda d: output_label(d, 'dB'))
