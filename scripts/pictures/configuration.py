"""What a picture needs of a configuration: the grid, the unit, the wavelength."""
import re
from pathlib import Path

METRES = {"m": 1.0, "dm": 1e-1, "cm": 1e-2, "mm": 1e-3, "um": 1e-6, "nm": 1e-9}
SIGNS = {"um": "µm"}


class Unit:
    """A unit of length by its name in a configuration."""

    def __init__(self, name):
        self.name = SIGNS.get(name, name)
        self.metres = METRES.get(name, 1.0)


def shown_unit(metres):
    """The unit in which a picture shows lengths of up to so many metres: um from 1 um to 10 mm."""
    if metres < 1e-6:
        return Unit("nm")
    return Unit("um" if metres < 1e-2 else "mm" if metres < 10 else "m")


class Configuration:
    """Keys of [global], and the first wavelength that is not 0."""

    def __init__(self, text):
        self.keys = {"scale": "m"}
        wavelength = 0.0
        section = None
        for line in text.splitlines():
            line = line.split(";")[0].replace(" ", "").strip()
            if tag := re.fullmatch(r"\[(/?)(\w+)\]", line):
                section = None if tag[1] else tag[2]
            elif "=" in line:
                key, value = line.split("=", 1)
                if section == "global":
                    self.keys[key] = value
                elif section == "wave" and key == "lambda":
                    wavelength = wavelength or leading_number(value)
        self.unit = Unit(self.keys["scale"])
        self.wavelength = wavelength * self.unit.metres  # 0 if there is none

    @classmethod
    def of_file(cls, name):
        """Raises OSError."""
        return cls(Path(name).read_text(encoding="utf-8", errors="replace"))

    def samples(self, axis):
        """Number of samples along x, y or z."""
        return int(leading_number(self.keys.get("n" + axis, "0" if axis == "z" else "1")))

    def spacing(self, axis):
        """Metres between samples along x, y or z; extents are whole numbers of the unit."""
        count = self.samples(axis)
        extent = int(leading_number(self.keys.get(axis, "0")))
        return extent * self.unit.metres / count if count else 0.0


def leading_number(text):
    """The number that the text begins with, as the program reads it; 0 if there is none."""
    match = re.match(r"[-+]?(\d+\.?\d*([eE][-+]?\d+)?|\.\d+([eE][-+]?\d+)?)", text)
    return float(match[0]) if match else 0.0
