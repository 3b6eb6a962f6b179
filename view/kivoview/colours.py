"""A colour for each group: any number of them, neighbours far apart, the same at every run.

Hues go round by the golden angle, which never comes back near one of the last; lightness takes turns besides. They are
taken in Oklab (B. Ottosson, 2020), where equal steps look equal: a kind of group has a lightness and a strength of its
own, so that faces stand out from cells of any hue.
"""
import math

GOLDEN_ANGLE = 137.50776405  # degrees
# Of each kind: lightness by turns, strength, first hue, and which way round: cells and faces of one place differ.
KINDS = {"cells": ((0.86, 0.92, 0.80), 0.075, 245, -1), "faces": ((0.60, 0.68, 0.50), 0.20, 27, 1),
         "nodes": ((0.38, 0.46, 0.30), 0.13, 262, 1), "fails": ((0.60, 0.50, 0.68), 0.25, 20, -1)}
NO_GROUP = (150, 150, 150)  # a tag that names none
PALE, PALE_SHARE = 240, 0.6


def linear_rgb(lightness, strength, hue):
    a, b = strength * math.cos(math.radians(hue)), strength * math.sin(math.radians(hue))
    l = (lightness + 0.3963377774 * a + 0.2158037573 * b) ** 3
    m = (lightness - 0.1055613458 * a - 0.0638541728 * b) ** 3
    s = (lightness - 0.0894841775 * a - 1.2914855480 * b) ** 3
    return (4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s,
            -1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s,
            -0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s)


def screen_value(linear):
    value = 12.92 * linear if linear <= 0.0031308 else 1.055 * linear ** (1 / 2.4) - 0.055
    return round(255 * min(1.0, max(0.0, value)))


def colour(kind, at):
    """(red, green, blue), each 0 to 255, of the group that is `at` in the order of its kind, from 0."""
    turns, strength, first, way = KINDS[kind]
    lightness, hue = turns[at % len(turns)], first + way * at * GOLDEN_ANGLE
    rgb = linear_rgb(lightness, strength, hue)
    while min(rgb) < 0 or max(rgb) > 1:  # no screen shows it that strong
        strength *= 0.95
        rgb = linear_rgb(lightness, strength, hue)
    return tuple(map(screen_value, rgb))


def paled(rgb):
    """The colour of what is only there for what lies upon it."""
    return tuple(round(PALE_SHARE * PALE + (1 - PALE_SHARE) * value) for value in rgb)
