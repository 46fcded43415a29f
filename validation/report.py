"""Rows of the validation and the table that they make."""
import math
from dataclasses import dataclass


@dataclass
class Row:
    """One figure beside its closed form. The difference is relative to the closed form unless
    is_absolute; a bound of None only reports."""
    figure: str
    source: str        # the closed form and its source
    expected: float
    measured: float
    bound: float
    is_absolute: bool = False
    case: str = ""

    @property
    def difference(self):
        """Measured less expected, over expected unless is_absolute."""
        difference = self.measured - self.expected
        return difference if self.is_absolute else difference / self.expected

    @property
    def passes(self):
        """False also for what is not a number."""
        return math.isfinite(self.measured) and abs(self.difference) <= self.bound

    def cells(self):
        """The row as texts."""
        mark = "" if self.is_absolute else " rel."
        return [self.case, self.figure, self.source, f"{self.expected:.7g}", f"{self.measured:.7g}",
                f"{self.difference:+.1e}{mark}", f"{self.bound:.1e}",
                "passes" if self.passes else "FAILS"]


HEADER = ["case", "figure", "closed form", "value", "zerith", "difference", "bound", "verdict"]


@dataclass
class Problem:
    """A case that gave no rows, and why."""
    case: str
    why: str
    passes = False

    def cells(self):
        """The row as texts."""
        return [self.case, self.why, "", "", "", "", "", "FAILS"]


def plain(rows):
    """Columns of equal width."""
    table = [HEADER, *(row.cells() for row in rows)]
    widths = [max(len(cells[i]) for cells in table) for i in range(len(HEADER))]
    return "\n".join("  ".join(cell.ljust(width) for cell, width in zip(cells, widths)).rstrip()
                     for cells in table)


def markdown(rows):
    """A table of a document."""
    table = [HEADER, ["---"] * len(HEADER), *(row.cells() for row in rows)]
    return "\n".join("| " + " | ".join(cell.replace("|", "\\|") for cell in cells) + " |"
                     for cells in table)
