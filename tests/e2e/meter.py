"""What the level meter is to show, computed from its drawing rule."""

import numpy

CARD = numpy.array([0x26, 0x24, 0x30]) / 255
FOOT = -0.98
THRESHOLD = 1 / 2**0.5
GHOST_ALPHA = 0.6
FOOT_COLOUR = (0.0, 0.3, 0.3)
BOUNDARY_COLOUR = (0.7, 0.5, 0.2)


def position(level):
    return FOOT + 1.96 * abs(level)


def low_ramp(level):
    level = abs(level)
    return (level, 0.5 + 0.15 * level, 0.3 - 0.3 * level)


def high_ramp(level):
    level = abs(level)
    return (0.6 + 0.4 * level, 0.5 - 0.5 * level, 0.2 + 0.1 * level)


def bar(level):
    """Quads: foot, top, the colour at either, alpha."""
    top = position(level)
    low_colour = low_ramp(min(abs(level), THRESHOLD))
    quads = [(FOOT, min(top, THRESHOLD), FOOT_COLOUR, low_colour, 1.0)]
    if top > THRESHOLD:
        quads.append((THRESHOLD, top, BOUNDARY_COLOUR, high_ramp(level), 1.0))
    return quads


def ghost(level, before):
    """The trail of a frame that was higher."""
    top, higher = position(level), position(before)
    if higher <= top:
        return []
    if higher <= THRESHOLD:
        return [(top, higher, low_ramp(level), low_ramp(before), GHOST_ALPHA)]
    if top <= THRESHOLD:
        return [(top, THRESHOLD, low_ramp(level), low_ramp(THRESHOLD), GHOST_ALPHA),
                (THRESHOLD, higher, BOUNDARY_COLOUR, high_ramp(before), GHOST_ALPHA)]
    return [(top, higher, high_ramp(level), high_ramp(before), GHOST_ALPHA)]


def column(quads, height):
    """The colours of one column inside the bar, from the top row down."""
    rows = 1 - 2 * (numpy.arange(height) + 0.5) / height
    colours = numpy.tile(CARD, (height, 1))
    for foot, top, foot_colour, top_colour, alpha in quads:
        inside = (rows > foot) & (rows < top)
        share = ((rows[inside] - foot) / (top - foot))[:, None]
        colour = (1 - share) * numpy.array(foot_colour) + share * numpy.array(top_colour)
        colours[inside] = alpha * colour + (1 - alpha) * colours[inside]
    return colours * 255


def _near_an_edge(quads, height):
    """The rows where one colour ends and another begins: those may be mixed."""
    rows = numpy.arange(height) + 0.5
    bounds = {bound for quad in quads for bound in quad[:2]}
    return numpy.any([abs(rows - (1 - bound) / 2 * height) <= 1 for bound in bounds], axis=0)


def difference(picture, quads):
    """The largest difference of any colour in the picture, from 0 to 255."""
    height, width = picture.shape[:2]
    inside = numpy.ones((height, width, 1), bool)
    # The bar has the middle half of the width.
    inside[:, :width // 4 - 1] = False
    inside[:, width - width // 4 + 1:] = False
    expected = numpy.where(inside, column(quads, height)[:, None], CARD * 255)
    unsure = numpy.zeros((height, width), bool)
    unsure[_near_an_edge(quads, height)] = True
    unsure[:, [width // 4 - 1, width // 4, width - width // 4 - 1, width - width // 4]] = True
    return abs(picture - expected).max(axis=2)[~unsure].max()
