"""The deck as a list of sections, free of all spelling: what generate.py builds, spell.py writes and model.py answers.

Every text in it (keyword, parameter, set name, label) is in the form that remains when a line has been stripped of
blanks and folded to upper case; spell.py puts the blanks and the lower case back in.
"""
from dataclasses import dataclass, field
from typing import Any, Dict, List, Optional, Tuple

LONGEST_LINE = 5119                                  # characters of a compressed line with its continuation lines


@dataclass
class Odd:
    """A field that has to be spelled in just this way, and the value that the reader must make of it."""
    text: str
    value: Any


@dataclass
class Row:
    """One data row. A field is a number, a text, an Odd, or None for an empty one (never the last).

    `extra` are texts behind the fields that the section needs: the reader passes them over.
    """
    fields: List[Any]
    extra: List[str] = field(default_factory=list)


@dataclass
class Section:
    """One keyword line with its rows: NODE, ELEMENT, NSET, ELSET, SURFACE, or a keyword that the reader does not know.

    The rows of an unknown keyword are plain texts, a row of a set is one physical line of the deck.
    """
    keyword: str
    params: List[Tuple[str, Optional[str]]] = field(default_factory=list)
    rows: List[Any] = field(default_factory=list)

    def line(self):
        """The keyword line as the reader sees it."""
        return "*" + ",".join(
            [self.keyword] + [name if value is None else name + "=" + value for name, value in self.params])


@dataclass
class Deck:
    """`known` holds what the generator knows about the answer because it built the mesh that way, see generate.py."""
    sections: List[Section]
    preamble: List[str] = field(default_factory=list)
    known: Dict[str, Any] = field(default_factory=dict)


def value(entry):
    """What the reader makes of a number field: 0 when it is empty."""
    if entry is None:
        return 0
    return entry.value if isinstance(entry, Odd) else entry
