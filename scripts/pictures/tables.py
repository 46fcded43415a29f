"""Curves and maps of tables: those of monitors and those of sweeps."""
import csv
import re

import numpy as np

from pictures.planes import PlotError

SWEPT = re.compile(r"(global|wave\d*|layer\d*|monitor\d*)\.\w+$")
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
        """The column as it stands."""
        place = self.header.index(column)
        return [line[place] for line in self.lines]

    def numbers(self, column):
        """The column as numbers; NaN for what is none."""
        return np.array([as_number(text) for text in self.texts(column)])

    def figures(self):
        """Columns that hold numbers and are no coordinate."""
        passed = set(self.swept()) | {"status", "message"}
        return [column for column in self.header
                if column not in passed and not re.match(r"(.*\.)?(slice|z)\b", column)
                and np.isfinite(self.numbers(column)).any()]

    def find(self, wanted):
        """The column that the user means: its name, or the only one that begins or ends so."""
        if wanted in self.header:
            return wanted
        near = [column for column in self.header
                if column.startswith(wanted) or column.split(".", 1)[-1].startswith(wanted)]
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
        raise PlotError(f"{table.name}: no column holds figures; the monitors of a sweep's points "
                        f"give them")
    if len(varied) == 2:
        draw_map(figure, table, varied, columns[0], logarithmic)
        return
    across = varied[0] if varied else next(
        (column for column in table.header if re.match(r"z\b", column)), table.header[0])
    draw_curves(figure, table, across, columns, logarithmic, is_marked=bool(varied))


def draw_curves(figure, table, across, columns, logarithmic, is_marked):
    """One panel a column, above each other."""
    places = table.numbers(across)
    is_named = not np.isfinite(places).all()
    if is_named:
        places = np.arange(len(table.lines), dtype=float)
    order = np.argsort(places, kind="stable")
    panels = figure.subplots(len(columns), 1, sharex=True, squeeze=False)[:, 0]
    for axes, column in zip(panels, columns):
        values = table.numbers(column)
        axes.plot(places[order], values[order], "o-" if is_marked else "-", markersize=4,
                  color="tab:blue")
        axes.set_ylabel(column)
        axes.grid(alpha=0.3)
        if logarithmic:
            axes.set_yscale("log")
        axes.margins(y=0.1)
        if is_marked and np.isfinite(values).any():
            best = int(np.nanargmax(values))
            axes.annotate(f"{values[best]:.4g} at {table.texts(across)[best]}",
                          (places[best], values[best]), textcoords="offset points",
                          xytext=(0, 7), ha="center", fontsize="small")
    if is_named:
        panels[-1].set_xticks(places, table.texts(across))
    panels[-1].set_xlabel(across)


def draw_map(figure, table, keys, column, logarithmic):
    """A sweep of two keys as a map; a point that is missing or has failed stays white."""
    from matplotlib import colors
    places = []
    for key in keys:
        texts = list(dict.fromkeys(table.texts(key)))
        places.append(sorted(texts, key=as_number)
                      if all(np.isfinite(as_number(text)) for text in texts) else texts)
    values = np.full((len(places[1]), len(places[0])), np.nan)
    for first, second, value in zip(*(table.texts(key) for key in keys), table.numbers(column)):
        values[places[1].index(second), places[0].index(first)] = value
    axes = figure.add_subplot()
    image = axes.imshow(values, origin="lower", aspect="auto", cmap="viridis",
                        norm=colors.LogNorm() if logarithmic else None)
    for set_ticks, texts in ((axes.set_xticks, places[0]), (axes.set_yticks, places[1])):
        step = -(-len(texts) // 12)
        set_ticks(range(0, len(texts), step), texts[::step])
    axes.set_xlabel(keys[0])
    axes.set_ylabel(keys[1])
    figure.colorbar(image, ax=axes, label=column)
