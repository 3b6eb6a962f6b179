"""Writes a deck (deck.py) as the bytes of an input file, spelled at random in every way that must make no difference.

Letter case, blanks and other dropped bytes, comments, empty lines, continuation lines, number forms, line ends.
"""
from decimal import Decimal

from deck import LONGEST_LINE, Odd

DROPPED = [" ", "  ", "\t", " ", ";", "\\", "\r", "\x0b", "\x0c", "\x01", "\x1b", "\x7f", "\x80", "\xe4", "\xff"]
BLANKS = [" ", "  ", "\t", "     ", " \t "]
COMMENTS = ["", " all nodes", "*NODE, NSET=NONE", " 1, 2, 3,", "** *ELEMENT, TYPE=C3D4", " \xe4\xf6\xfc\x00\x01, ;",
            "*"]


def spell_int(rng, number):
    kind = rng.random()
    text = str(number)
    if kind < 0.06 and number >= 0:
        return "+" + text
    if kind < 0.12:
        return "-" + text[1:].zfill(12) if number < 0 else text.zfill(rng.randint(2, 14))
    return text


def spell_real(rng, number):
    """One of the many texts that denote exactly the decimal number repr(number)."""
    sign, digits, exponent = Decimal(repr(number)).as_tuple()
    digits = "".join(map(str, digits)) + "0" * rng.choice([0, 0, 0, 1, 7])
    exponent -= len(digits) - len(Decimal(repr(number)).as_tuple().digits)
    kind = rng.randrange(4)
    if kind == 0:
        text = repr(abs(number))
    elif kind == 1 and -30 < exponent < 10:
        text = format(Decimal((0, tuple(map(int, digits)), exponent)), "f")
        if "." in text and not text.split(".")[1].strip("0"):
            text = text.split(".")[0] + rng.choice(["", ".", ".0", ".000"])
        if text.startswith("0.") and len(text) > 2 and rng.random() < 0.4:
            text = text[1:]
    else:
        point = rng.randint(0, len(digits))
        mantissa = digits[:point] + "." + digits[point:]
        if point == len(digits) and rng.random() < 0.5:
            mantissa = mantissa[:-1]
        shift = exponent + len(digits) - point
        text = mantissa + "E" + rng.choice(["%d", "%+d", "%+03d", "%03d", "%+04d"]) % shift
    return ("-" if sign else rng.choice(["", "", "", "+"])) + text


def kept(text):
    """How many characters of a line remain after compression."""
    return sum("!" <= letter <= "~" and letter not in ";\\" for letter in text)


class Speller:
    def __init__(self, rng):
        self.rng = rng
        self.case = rng.choice(["upper", "lower", "mixed"])
        self.blanks = rng.choice([0.0, 0.05, 0.3])
        self.inside = rng.choice([0.0, 0.0, 0.02])
        self.dropped = DROPPED if rng.random() < 0.3 else BLANKS
        self.comments = rng.choice([0.0, 0.02, 0.2])
        self.joins = rng.choice([0.0, 0.05, 0.4])
        self.commas = rng.choice([0.0, 0.5, 1.0])
        self.nul = 0.01 if rng.random() < 0.05 else 0.0
        self.ends = rng.choice([["\n"], ["\n"], ["\r\n"], ["\n", "\r\n"]])
        self.long = rng.random() < 0.02
        self.parts = []                              # the physical lines
        self.too_long = {}                           # by id of a row: the line at which it outgrew a line's length

    def blank(self):
        return self.rng.choice(self.dropped) if self.blanks and self.rng.random() < self.blanks else ""

    def cased(self, text):
        if self.case == "upper":
            return text
        if self.case == "lower":
            return text.lower()
        return "".join(self.rng.choice((letter, letter.lower())) for letter in text)

    def token(self, text):
        text = self.cased(text)
        if self.inside and self.rng.random() < self.inside:
            at = self.rng.randint(0, len(text))
            text = text[:at] + self.rng.choice(self.dropped) + text[at:]
        return self.blank() + text + self.blank()

    def field(self, entry):
        if entry is None:
            return self.blank()
        if isinstance(entry, Odd):
            return self.token(entry.text)
        if isinstance(entry, int):
            return self.token(spell_int(self.rng, entry))
        if isinstance(entry, float):
            return self.token(spell_real(self.rng, entry))
        return self.token(entry)

    def end_line(self, text):
        if self.rng.random() < self.comments:
            text += self.blank() + "**" + self.comment()
        if self.nul and self.rng.random() < self.nul:
            text += "\x00,1,2,"
        self.parts.append(text + self.rng.choice(self.ends))

    def comment(self):
        if self.long and self.rng.random() < 0.2:
            return " ".join(["as long as no buffer is"] * 500)
        return self.cased(self.rng.choice(COMMENTS))

    def noise(self):
        """Lines that hold nothing once they are compressed."""
        while self.rng.random() < self.comments:
            self.end_line(self.rng.choice(["", "", " ", "\t", "**" + self.comment()]))

    def logical(self, tokens, joins=True, row=None):
        """The tokens with commas between them, broken after some of the commas where the reader joins lines."""
        # Of a line that gets too long a continuation line is dropped whole: the needed fields stay out of them there.
        text, length, solid = "", 0, len(row.fields) if row and len(row.extra) > 20 else 0
        for at, token in enumerate(tokens):
            text += token
            if at + 1 < len(tokens):
                text += ","
                if joins and at + 1 >= solid and self.rng.random() < self.joins:
                    length = self.end_piece(text, length, row)
                    self.noise()
                    text = ""
        self.end_piece(text, length, row)

    def end_piece(self, text, length, row):
        length += kept(text)
        if length > LONGEST_LINE:
            self.too_long.setdefault(id(row), len(self.parts) + 1)
        self.end_line(text)
        return length

    def section(self, section, last):
        head = [self.blank() + "*" + self.token(section.keyword)]
        for name, text in section.params:
            head.append(self.token(name) if text is None else self.token(name) + "=" + self.token(text))
        self.logical(head)
        for at, row in enumerate(section.rows):
            self.noise()
            if isinstance(row, str):
                self.end_line(self.token(row))
            elif section.keyword in ("NSET", "ELSET"):
                # Set lines are taken one by one: a comma at the end says nothing.
                tail = [""] if self.rng.random() < self.commas else []
                self.logical([self.field(entry) for entry in row.fields] + tail, joins=False, row=row)
            else:
                tail = [""] if last and at + 1 == len(section.rows) and self.rng.random() < 0.2 else []
                self.logical([self.field(entry) for entry in row.fields] + [self.token(t) for t in row.extra] + tail,
                             row=row)
        self.noise()

    def deck(self, deck):
        for text in deck.preamble:
            self.end_line(self.token(text))
        self.noise()
        for section in deck.sections:
            self.section(section, section is deck.sections[-1])
        if self.rng.random() < 0.25 and self.parts:
            self.parts[-1] = self.parts[-1].rstrip("\n")
        return "".join(self.parts).encode("latin-1")


def spell(deck, rng):
    """The deck's bytes, and for each row too long for a line (by its id) the number of the line that shows it."""
    speller = Speller(rng)
    return speller.deck(deck), speller.too_long
