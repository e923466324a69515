"""What stands on the display and the meters: labels, letters, the pen, the bracket of the loudness range."""

from kit import rect, stroke
from registry import picture
from surfaces import well
from text import caption, text
from tokens import C


def on_plates(letters, cell, left, top, bottom):
    """White on what may be bright: each stands on a small dark plate, which is all but unseen on a dark bar."""
    return ''.join(rect(cell * i + left, top, cell - 2 * left, bottom - top, '#07080B', 1.75, .6) +
                   text(cell * (i + .5), 9.4, s, 8.5 if len(s) == 1 else 7.5, 'semi', '#FFFFFF', 'middle')
                   for i, s in enumerate(letters))


@picture('GainLabel', 28, 14)
def gain_label(d):
    """Stands on the display: a soft dark copy lies below it."""
    low = caption(12.3, 10, 'GAIN', fill='#000')
    return '<g filter="%s" opacity=".8">%s</g>' % (d.blur(1.2), low + low) + caption(12.3, 9.5, 'GAIN', fill='#FFFFFF')


@picture('IncomingLine', 20, 64)
def incoming_line(d):
    return (rect(0, 0, 16, 64, d.lin([(0, C['ice2'], 0), (.6, C['ice2'], .03), (1, C['ice1'], .16)], 0, 0, 1, 0)) +
            rect(16, 0, 1, 64, '#FFFFFF', 0, .72) + rect(17, 0, 3, 64, d.lin([(0, '#000', .35), (1, '#000', 0)], 0, 0, 1, 0)))


@picture('DisplayPeakLabel', 48, 18)
def peak_tag(d):
    """A tag that hangs from the curve by its tip."""
    return ('<path d="M4.5 3.5H20.5L24 .75L27.5 3.5H43.5a2 2 0 0 1 2 2V15.5a2 2 0 0 1 -2 2H4.5a2 2 0 0 1 -2 -2V5.5a2 2 0 '
            '0 1 2 -2Z" fill="#0B0D11" fill-opacity=".88" stroke="#D9596A" stroke-opacity=".85"/>')


@picture('PeakLabelBackground', 32, 16)
def peak_label(d):
    return well(d, 1, 1, 30, 14, 3, '#0B0D11', .06)


@picture('LevelMeterPart', 128, 4)
def meter_part(d):
    """White, to be tinted: three bright rows of four, one dimmer."""
    return ''.join(rect(0, y, 128, 1.5, '#FFFFFF') + rect(0, y + 1.5, 128, .5, '#B8B8B8') for y in (0, 2))


# Cells 0 to 9 by angle, left and right in turn; then rear centre, centre, the upper pair and the low-frequency channel.
LETTERS = ('L', 'R', 'L', 'R', 'Ls', 'Rs', 'Lb', 'Rb', 'Lb', 'Rb', 'Cs', 'Cs', 'C', 'Lt', 'Rt', 'LF')


@picture('MeterLabelsHor', 192, 12)
@picture('MeterLabelsVer', 192, 12)
def letters(d):
    return on_plates(LETTERS, 12, .5, 1, 11.5)


@picture('LoudnessLabels', 24, 12)
def loudness_letters(d):
    # As low as the thin bars of the compact form, which lie 7 apart.
    return on_plates('MSI', 8, .25, 2.5, 9.9)


BRACKET = 'M6.5 .75H10.5Q12.25 .75 12.25 2.5V27.5Q12.25 29.25 10.5 29.25H6.5'


@picture('LoudnessRange', 20, 30)
def loudness_range(d):
    return stroke(BRACKET, C['lra'], 1.5, cap='butt')


@picture('LoudnessRangeShadow', 20, 30)
def loudness_range_shadow(d):
    return '<g filter="%s">' % d.blur(1.2) + stroke(BRACKET, '#000', 3, .7, cap='butt') + '</g>'


@picture('StereoLinkLabelsSurround', 122, 18)
@picture('StereoLinkLabelsNormal', 122, 18)
def link_labels(d):
    """Over two knobs of 58 at 2 and 63 across."""
    return caption(31, 12, 'TRANSIENTS', 9, track=.5) + caption(92, 12, 'RELEASE', 9, track=.5)
