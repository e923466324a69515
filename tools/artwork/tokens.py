"""The colours of the interface, each with its meaning, and how they mix and contrast."""

C = dict(
    # Grounds: one cool graphite, from the well to the raised plate.
    void='#08090C', ground='#0E1015', ground_hi='#13161C', bar='#171A21', bar_hi='#1D212A',
    plate='#222731', plate_hi='#2C323E', plate_top='#373E4C',
    edge='#06070A', line='#2B313C', line_hi='#414958',
    # Text: values, button text, captions, decoration.
    t1='#E6E9F0', t2='#C8C8C8', t3='#9AA1AF', t0='#5C6370',
    # The accent, ice: what leaves the limiter and what the user sets.
    ice1='#D5DEFF', ice2='#A9BBFF', ice3='#8398EE', ice4='#5568B4', ice5='#2A345C',
    # Data: taken away, loudness, caution, within the ceiling.
    gr='#C02E3F', gain='#CC1E33', slow='#E7B373', lra='#FFB95F', unity='#F7B753',
    clip='#FE404A', ok='#75C611', over='#FFBA00', m_hi='#B9C5E8', m_lo='#636B88',
    # Toggles.
    red='#F0525C', blue='#8398EE', orange='#F4894A', yellow='#F2C24F',
    # Icons: at rest on plates and glass, and quieter on pictures that hold text as well.
    ink='#DDE1EA', ink_lo='#AEB5C3',
)


def over(front, alpha, back):
    """The colour of `front` at `alpha` over `back`."""
    channels = (round(int(front[i:i + 2], 16) * alpha + int(back[i:i + 2], 16) * (1 - alpha)) for i in (1, 3, 5))
    return '#' + ''.join('%02X' % c for c in channels)


def luminance(colour):
    """Relative luminance as WCAG 2 defines it."""
    v = [int(colour[i:i + 2], 16) / 255 for i in (1, 3, 5)]
    v = [c / 12.92 if c <= .04045 else ((c + .055) / 1.055) ** 2.4 for c in v]
    return .2126 * v[0] + .7152 * v[1] + .0722 * v[2]


def contrast(a, b):
    """The contrast ratio of WCAG 2, from 1 to 21."""
    low, high = sorted((luminance(a), luminance(b)))
    return (high + .05) / (low + .05)
