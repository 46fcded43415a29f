"""Planes of fields: read from field files and from the cross-sections of a run."""
import sys
from dataclasses import dataclass, field
from pathlib import Path

import numpy as np

from pictures.configuration import Configuration, Unit, shown_unit

AXES = {"xy": ("x", "y"), "xz": ("z", "x"), "yz": ("z", "y")}  # to the right, upwards


class PlotError(Exception):
    """What the user gave cannot be drawn; the text says why and what to do."""


@dataclass
class Plane:
    """values[up][right] and the places of the samples, in metres."""
    values: np.ndarray
    right: np.ndarray
    up: np.ndarray
    names: tuple          # of the axes
    unit: Unit            # in which lengths are shown
    wavelength: float = 0.0  # in vacuum, metres; 0 if not known
    where: str = ""          # the third coordinate, in words
    index: np.ndarray = None  # [up][right], real, if known

    def points_a_wavelength(self, places):
        """Samples that a wave in the densest medium has along an axis; infinite if not known."""
        if not self.wavelength or len(places) < 2:
            return np.inf
        densest = 1.0 if self.index is None else max(1.0, float(np.nanmax(self.index)))
        return self.wavelength / densest / (places[1] - places[0])


def read_csv_plane(name):
    """The first plane of a cross-section file: an array of its lines."""
    rows = []
    try:
        with open(name, encoding="ascii", errors="replace") as file:
            for line in file:
                if not line.strip():
                    if rows:
                        break
                    continue
                rows.append([float(value) for value in line.rstrip().rstrip(",").split(",")])
    except OSError as error:
        raise PlotError(f"{name}: {error.strerror}") from None
    except ValueError:
        raise PlotError(f"{name}: has no plane of numbers, nor a table with a header") from None
    if not rows or any(len(row) != len(rows[0]) for row in rows):
        raise PlotError(f"{name}: has no plane of numbers")
    return np.array(rows)


def csv_plane(name, configuration, plane, index_name):
    """A cross-section. Its size and the configuration decide which plane it is. Without a
    configuration the axes count samples."""
    lines = read_csv_plane(name)
    if configuration is None:
        values = lines.T if plane in ("xz", "yz") else lines
        right, up = (np.arange(size, dtype=float) for size in values.shape[::-1])
        found = Plane(values, right, up, AXES.get(plane, ("column", "line")), Unit("samples"))
    else:
        nx, ny, nz = (configuration.samples(axis) for axis in "xyz")
        shapes = {"xy": (ny, nx), "xz": (nz, nx), "yz": (nz, ny)}
        fitting = [key for key, shape in shapes.items() if shape == lines.shape]
        if plane is None and not fitting or plane and plane not in fitting:
            raise PlotError(f"{name}: {lines.shape[0]} lines of {lines.shape[1]} values are no "
                            f"{plane or 'plane'} of a grid of {nx} x {ny} x {nz}")
        plane = plane or fitting[-1 if fitting == ["xz", "yz"] and nx != ny else 0]
        names = AXES[plane]
        places = []
        for axis in names:
            count = configuration.samples(axis)
            first = 0 if axis == "z" else count // 2
            places.append((np.arange(count) - first) * configuration.spacing(axis))
        found = Plane(lines if plane == "xy" else lines.T, *places, names,
                      shown_unit(max(map(np.ptp, places))), configuration.wavelength)
    if index_name:
        index = read_csv_plane(index_name)
        if index.shape != lines.shape:
            raise PlotError(f"{index_name}: a plane of another size than that of {name}")
        found.index = index if found.values.shape == lines.shape and found.names[0] == "x" \
            or plane not in ("xz", "yz") else index.T
    return found


@dataclass
class FieldFile:
    """A field file, open: image data in the VTKHDF layout."""
    name: str
    file: object = field(repr=False, default=None)

    def __post_init__(self):
        import h5py
        try:
            self.file = h5py.File(self.name, "r")
        except OSError as error:
            why = "no such file" if not Path(self.name).exists() else str(error)
            raise PlotError(f"{self.name}: cannot be read: {why}") from None
        if "VTKHDF/PointData" not in self.file:
            raise PlotError(f"{self.name}: no field file: it has no /VTKHDF/PointData")
        self.group = self.file["VTKHDF"]
        self.origin = np.array(self.group.attrs["Origin"], dtype=float)
        self.spacing = np.array(self.group.attrs["Spacing"], dtype=float)
        text = self.single("configuration")
        self.configuration = Configuration(as_text(text)) if text is not None else None
        written = self.single("slices_written")
        slices = len(self.places("z"))
        if written is not None and written < slices:
            print(f"plot: {self.name}: the run was interrupted; {written} of {slices} slices have "
                  f"a field", file=sys.stderr)

    def single(self, name):
        """The only value of a data set outside of the image; None if the file has no such set."""
        return self.file[name][()] if name in self.file else None

    def quantities(self):
        """Names of the data sets."""
        return list(self.group["PointData"])

    def places(self, axis):
        """Sample positions along x, y or z, metres."""
        number = "xyz".index(axis)
        extent = self.group.attrs["WholeExtent"]
        return self.origin[number] + self.spacing[number] * np.arange(
            int(extent[2 * number]), int(extent[2 * number + 1]) + 1)

    def plane(self, quantity, plane, at):
        """A plane of a data set, complex if that has two parts; at in the configuration's unit."""
        data = self.group["PointData"][quantity]
        counts = dict(zip("zyx", data.shape))
        if plane is None:  # the thin direction, or the plane through the axis
            flat = [axis for axis in "zyx" if counts[axis] == 1]
            plane = {"z": "xy", "y": "xz", "x": "yz"}[flat[0] if flat else "y"]
        third = next(axis for axis in "xyz" if axis not in plane)
        places = self.places(third)
        extent = max(np.ptp(self.places(axis)) for axis in plane)
        shown = shown_unit(extent)
        unit = self.configuration.unit if self.configuration else shown
        if at is None:
            wanted = places[-1] if third == "z" else 0.0
        else:
            wanted = at * unit.metres
        k = int(np.argmin(np.abs(places - wanted)))
        half = abs(self.spacing["xyz".index(third)]) / 2 * 1.001
        if at is not None and abs(places[k] - wanted) > half:
            raise PlotError(f"{self.name}: {third} = {at:g} {unit.name} is outside of "
                            f"{places[0] / unit.metres:g} to {places[-1] / unit.metres:g}")
        cut = tuple(k if axis == third else slice(None) for axis in "zyx")
        values = data[cut]
        if data.ndim == 4:
            values = values[..., 0] + 1j * values[..., 1]
        right, up = AXES[plane]
        wavelength = float(self.single("wavelength") or 0.0)
        return Plane(values if plane == "xy" else values.T, self.places(right), self.places(up),
                     (right, up), shown, wavelength,
                     f"{third} = {places[k] / shown.metres:.4g} {shown.name}")


def as_text(value):
    """A text of a file."""
    return value.decode(errors="replace") if isinstance(value, bytes) else str(value)


def field_plane(name, what, plane, at, index_name):
    """The plane of a field file that a picture of this kind is drawn from."""
    file = FieldFile(name)
    for quantity in {"intensity": ("E", "intensity"), "phase": ("E",), "real": ("E",),
                     "index": ("index",), "flux": ("flux",)}[what]:
        if quantity in file.quantities():
            break
    else:
        raise PlotError(f"{name}: has {', '.join(file.quantities())}, from which {what} cannot "
                        f"be drawn; add it to save = in the [monitor]")
    found = file.plane(quantity, plane, at)
    if quantity == "E" and what == "intensity":
        found.values = np.abs(found.values) ** 2
    if what == "index":
        found.values = found.values.real
    index = index_of(file, found, at, index_name)
    if index is not None and index.shape != found.values.shape:
        raise PlotError(f"{index_name or name}: its plane of the index has another size than that "
                        f"of {name}")
    found.index = index
    return found


def index_of(file, plane, at, name):
    """The index of a plane, from a cross-section, another field file or the same file; None if
    the file has no index."""
    if name and name.endswith(".csv"):
        lines = read_csv_plane(name)
        return lines if "z" not in plane.names else lines.T
    source = FieldFile(name) if name else file
    if "index" not in source.quantities():
        return None
    return source.plane("index", "".join(sorted(plane.names)), at).values.real
