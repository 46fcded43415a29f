"""Curves and maps of tables: those of monitors and those of sweeps."""
import csv
import re

import numpy as np

from pictures.configuration import METRES, Unit, shown_unit
from pictures.planes import PlotError

SWEPT = re.compile(r"(global|wave\d*|layer\d*|monitor\d*)\.\w+$")
LENGTH = re.compile(r" \[(%s)\]$" % "|".join(METRES))
# Keys of a configuration that are lengths; a swept column has no unit of its own.
LENGTH_KEYS = set("x y z edge lambda sigmax sigmay waist waistx waisty dx dy dz r rin rout px py wx wy "
                  "offsetx offsety x1 x2 y1 y2 z1 z2".split())
MOST_PANELS = 6


class Table:
    """Columns of texts by their name."""

    def __init__(self, name):
        self.name = name
        try:
            with open(name, newline="", encoding="utf-8", errors="replace") as file:
                lines = list(csv.reader(file))
        except OSError as error:
            raise PlotError(f"{name}: {error.strerror}") from None
        self.header = lines[0] if lines else []
        self.lines = [line for line in lines[1:] if len(line) == len(self.header)]
        self.is_sweep = self.header[-2:] == ["status", "message"]
        if self.is_sweep:
            self.failed = sum(line[-2] != "0" for line in self.lines)
            self.lines = [line for line in self.lines if line[-2] == "0"]
        if not self.lines:
            raise PlotError(f"{name}: the table has no rows" + (" of points that ended well"
                                                                if self.is_sweep else ""))

    def swept(self):
        """The keys that a sweep varied, in order."""
        keys = []
        for column in self.header:
            if not SWEPT.match(column):
                break
            keys.append(column)
        return keys

    def texts(self, column):
        """The column as text."""
        place = self.header.index(column)
        return [line[place] for line in self.lines]

    def numbers(self, column):
        """The column as numbers; NaN for other texts."""
        return np.array([as_number(text) for text in self.texts(column)])

    def unit(self, column):
        """The unit of a column of lengths; None if it has other values."""
        if match := LENGTH.search(column):
            return Unit(match[1])
        if column in self.swept() and column.split(".")[1] in LENGTH_KEYS:
            units = [match[1] for name in self.header if (match := LENGTH.search(name))]
            return Unit(units[0]) if units else None
        return None

    def shown(self, column):
        """Values and label of a column in a picture: lengths in the unit with few digits."""
        values, unit = self.numbers(column), self.unit(column)
        if unit is None or not np.isfinite(values).any():
            return values, column
        shown = shown_unit(float(np.nanmax(np.abs(values))) * unit.metres)
        # Powers of ten: a division keeps 55000 nm at 55 um.
        ratio = round(shown.metres / unit.metres, 12)
        return values / ratio, f"{LENGTH.sub('', column)} [{shown.name}]"

    def figures(self):
        """Columns of numbers other than coordinates."""
        passed = set(self.swept()) | {"status", "message"}
        return [column for column in self.header
                if column not in passed and not re.match(r"(.*\.)?(slice|z)\b", column)
                and np.isfinite(self.numbers(column)).any()]

    def find(self, wanted):
        """The column that the user means: that of this name, or the only one that begins so.

        A name may lack its unit and, in the table of a sweep, the file that it comes from.
        """
        if wanted in self.header:
            return wanted
        names = {column: (column, column.split(".", 1)[-1]) for column in self.header}
        near = [column for column in self.header
                if wanted in (re.sub(r" [\[(].*", "", name) for name in names[column])]
        near = near or [column for column in self.header
                        if any(name.startswith(wanted) for name in names[column])]
        if len(near) == 1:
            return near[0]
        raise PlotError(f"{self.name}: {'no column' if not near else 'several columns are'} "
                        f"{wanted}; columns are {', '.join(self.header)}")


def as_number(text):
    """A number, or NaN."""
    try:
        return float(text)
    except ValueError:
        return np.nan


def draw_table(figure, table, wanted, logarithmic):
    """Draws a table into an empty figure; wanted names columns, [] for a choice of our own."""
    columns = [table.find(column) for column in wanted]
    swept = table.swept() if table.is_sweep else []
    varied = [key for key in swept if len(set(table.texts(key))) > 1] or swept[:1]
    if len(varied) > 2:
        raise PlotError(f"{table.name}: three keys vary; draw a table of two")
    if not columns:
        columns = table.figures()
        telling = [column for column in columns if re.search(r"efficiency|coupling", column)]
        columns = telling[:1] if swept and telling else columns[:1 if swept else MOST_PANELS]
    if not columns:
        raise PlotError(f"{table.name}: no column has figures; the monitors of a sweep's points "
                        f"give them")
    if len(varied) == 2:
        draw_map(figure, table, varied, columns[0], logarithmic)
        return
    across = varied[0] if varied else next(
        (column for column in table.header if re.match(r"z\b", column)), table.header[0])
    draw_curves(figure, table, across, columns, logarithmic, is_marked=bool(varied))


def draw_curves(figure, table, across, columns, logarithmic, is_marked):
    """One panel a column, above each other."""
    places, label = table.shown(across)
    is_named = not np.isfinite(places).all()
    if is_named:
        places = np.arange(len(table.lines), dtype=float)
    order = np.argsort(places, kind="stable")
    panels = figure.subplots(len(columns), 1, sharex=True, squeeze=False)[:, 0]
    for axes, column in zip(panels, columns):
        values, name = table.shown(column)
        axes.plot(places[order], values[order], "o-" if is_marked else "-", markersize=4,
                  color="tab:blue")
        axes.set_ylabel(name)
        axes.grid(alpha=0.3)
        if logarithmic:
            axes.set_yscale("log")
        axes.margins(y=0.15)
        if is_marked and np.isfinite(values).any():
            best = int(np.nanargmax(values))
            place = table.texts(across)[best] if is_named else f"{places[best]:g}"
            axes.annotate(f"{values[best]:.4g} at {place}",
                          (places[best], values[best]), textcoords="offset points",
                          xytext=(0, 7), ha="center", fontsize="small")
    if is_named:
        panels[-1].set_xticks(places, table.texts(across))
    panels[-1].set_xlabel(label)


def draw_map(figure, table, keys, column, logarithmic):
    """A sweep of two keys as a map; a point that is missing or has failed stays white."""
    from matplotlib import colors
    places, labels, ticks = [], [], []
    for key in keys:
        texts = list(dict.fromkeys(table.texts(key)))
        numbers, label = table.shown(key)
        is_named = not np.isfinite(numbers).all()
        places.append(texts if is_named else sorted(texts, key=as_number))
        shown = dict(zip(table.texts(key), numbers))
        ticks.append([text if is_named else f"{shown[text]:g}" for text in places[-1]])
        labels.append(label)
    values = np.full((len(places[1]), len(places[0])), np.nan)
    for first, second, value in zip(*(table.texts(key) for key in keys), table.numbers(column)):
        values[places[1].index(second), places[0].index(first)] = value
    axes = figure.add_subplot()
    image = axes.imshow(values, origin="lower", aspect="auto", cmap="viridis",
                        norm=colors.LogNorm() if logarithmic else None)
    for set_ticks, texts in ((axes.set_xticks, ticks[0]), (axes.set_yticks, ticks[1])):
        step = -(-len(texts) // 12)
        set_ticks(range(0, len(texts), step), texts[::step])
    axes.set_xlabel(labels[0])
    axes.set_ylabel(labels[1])
    figure.colorbar(image, ax=axes, label=column)
