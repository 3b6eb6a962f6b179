"""The groups by name: a line each, from the top, a square of the colour and the words.

Where there are more groups than lines, each kind gets its share of the lines and its last one says how many more there
are: text that has shrunk to nothing would tell of none.
"""
import collections

import numpy
from vtkmodules.vtkRenderingCore import vtkActor2D, vtkPolyDataMapper2D, vtkTextActor, vtkTextRenderer

from . import shapes

MARGIN, LARGEST, SMALLEST = 12, 17, 10  # in pixels; letters' heights
LINE = 1.75  # a line is so many times as high as its letters
LETTERS_ACROSS = 15  # at least so many fit
TEXT_COLOUR = (0.1, 0.1, 0.1)

# word: what stands before the name; rgb: 0 to 255 each, None for a line without a square.
Entry = collections.namedtuple("Entry", "kind word name rgb")


def shared_out(counts, room):
    """How many lines each kind gets of `room`: what it needs, but no more than another that needs more."""
    given = [0] * len(counts)
    while sum(given) < min(room, sum(counts)):
        least = min((g, k) for k, g in enumerate(given) if g < counts[k])[1]
        given[least] += 1
    return given


def that_fit(entries, room):
    """The entries to be shown in `room` lines, with lines that say how many more there are."""
    kinds = list(dict.fromkeys(entry.kind for entry in entries))
    of_kind = [[entry for entry in entries if entry.kind == kind] for kind in kinds]
    shown = []
    for kind, its, lines in zip(kinds, of_kind, shared_out([len(its) for its in of_kind], max(room, len(kinds)))):
        if lines < len(its):
            more = Entry(kind, "and", "%d more" % (len(its) - lines + 1), None)
            its = its[:lines - 1] + [more]
        shown += its
    return shown


def shortened(text, properties, width):
    """The text, cut so that it is no wider than `width`."""
    kept, writer, box = text, vtkTextRenderer.GetInstance(), [0] * 4
    while len(kept) > 1:
        said = kept if kept == text else kept + "..."
        if not writer.GetBoundingBox(properties, said, box, 72) or box[1] - box[0] <= width:
            return said
        kept = kept[:-1]
    return kept


def square(left, bottom, side, rgb):
    corners = numpy.array(((0, 0, 0), (side, 0, 0), (side, side, 0), (0, side, 0)), float)
    data = shapes.poly_data(corners + (left, bottom, 0), numpy.arange(4)[None, :])
    mapper = vtkPolyDataMapper2D()
    mapper.SetInputData(data)
    drawn = vtkActor2D()
    drawn.SetMapper(mapper)
    drawn.GetProperty().SetColor([value / 255 for value in rgb])
    return drawn


def words(text, left, bottom, size, width):
    drawn = vtkTextActor()
    properties = drawn.GetTextProperty()
    properties.SetColor(TEXT_COLOUR)
    properties.SetFontSize(size)
    drawn.SetInput(shortened(text, properties, width))
    drawn.SetPosition(left, bottom)
    return drawn


def add(renderer, entries, width, height, finer):
    """Fills a renderer of `width` by `height` pixels, each of which is drawn as `finer` by `finer` dots."""
    # A name with two dollar signs is no formula.
    vtkTextRenderer.GetInstance().SetDefaultBackend(vtkTextRenderer.FreeType)
    size = max(SMALLEST, min(LARGEST, width // LETTERS_ACROSS, height // 24))
    line, left = int(LINE * size), MARGIN + size + size // 2
    for at, entry in enumerate(that_fit(entries, (height - MARGIN) // line)):
        bottom = finer * (height - MARGIN - (at + 1) * line + (line - size) // 2)
        if entry.rgb:
            renderer.AddActor2D(square(finer * MARGIN, bottom, finer * size, entry.rgb))
        text = "%s %s" % (entry.word, entry.name)
        renderer.AddActor2D(words(text, finer * left, bottom, finer * size, finer * (width - left - MARGIN // 2)))
