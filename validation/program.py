"""Runs of the built program, each in a folder of its own, and what they leave."""
import os
import subprocess
import tempfile
from pathlib import Path

import numpy as np


def section(name, keys):
    """One section of a configuration; a key whose value is None is left out."""
    lines = [f"{key} = {number(value)}" for key, value in keys.items() if value is not None]
    return "\n".join([f"[{name}]", *lines, f"[/{name}]", ""])


def number(value):
    """Text that reads back as the same number; lines of a configuration hold 79 characters."""
    return f"{value:.15g}" if isinstance(value, float) else str(value)


def configuration(grid, waves, layers, monitors=()):
    """The text of a configuration from a dictionary for each section."""
    waves = [waves] if isinstance(waves, dict) else waves
    return "".join([section("global", {"method": "wpm", **grid}),
                    *(section("wave", wave) for wave in waves),
                    *(section("layer", layer) for layer in layers),
                    *(section("monitor", monitor) for monitor in monitors)])


def domain(width, length, samples, slices, scale="nm", polarization="te", **more):
    """A square grid; extents in whole units of scale."""
    assert width == int(width) and length == int(length), "extents are whole numbers"
    return {"scale": scale, "polarization": polarization, "x": int(width), "y": int(width),
            "z": int(length), "nx": samples, "ny": samples, "nz": slices, **more}


class ProgramFailed(Exception):
    """The program ended with an error; the text is its last message."""


class Program:
    """The built zerith; the folders of its runs are removed with the object."""

    def __init__(self, path):
        self.path = Path(path).resolve()
        self.folder = tempfile.TemporaryDirectory(prefix="zerith-validation-")
        self.runs = 0

    def run(self, text, *options, fast=True):
        """One run; returns its Result."""
        self.runs += 1
        folder = Path(self.folder.name) / f"{os.getpid()}-{self.runs}-{id(text):x}"
        folder.mkdir()
        (folder / "run.cfg").write_text(text)
        words = [str(self.path), "-i", "run.cfg", "-p", *(["--fast"] if fast else []), *options]
        if "-q" not in words:
            words.append("-q")
        done = subprocess.run(words, cwd=folder, capture_output=True, text=True, check=False,
                              stdin=subprocess.DEVNULL)
        if done.returncode != 0:
            said = done.stderr.strip().splitlines() or [f"status {done.returncode}"]
            raise ProgramFailed(said[-1].removeprefix("zerith: error: "))
        return Result(folder)

    def field(self, text, plane="volume", **keys):
        """The complex field by a monitor of its own: [nz][ny][nx], [nz][nx] for plane = "xz" (the
        middle y), [nz][ny] for "yz", or [ny][nx] for a number of a slice."""
        import h5py
        box = {"xz": {"y": 0}, "yz": {"x": 0}}.get(plane, {})
        if isinstance(plane, int):
            box = {"z": keys.pop("dz") * plane}
        monitor = {"type": "field", "file": "field.vtkhdf", **box, **keys}
        result = self.run(text + section("monitor", monitor))
        with h5py.File(result.folder / "field.vtkhdf") as file:
            values = file["VTKHDF/PointData/E"][...]
        return np.squeeze(values[..., 0] + 1j * values[..., 1])


class Result:
    """The files of one run."""

    def __init__(self, folder):
        self.folder = folder

    def flux(self):
        """Flux of each slice over that of slice 1: slice 0 is nominal."""
        text = (self.folder / "EFlux_cpu_Z.csv").read_text().strip()
        values = np.array([float(value) for value in text.split(",")])
        return values / values[1]

    def plane(self, name="E_cpu.csv"):
        """The first plane of a file, real parts."""
        first = (self.folder / name).read_text().split("\n\n")[0]
        return np.array([[float(v) for v in line.rstrip(",").split(",")]
                         for line in first.splitlines()])

    def table(self, name):
        """The table of a monitor: columns by their names, without the units."""
        with open(self.folder / name, encoding="utf-8") as file:
            names = [column.split(" [")[0] for column in file.readline().strip().split(",")]
            rows = [[float(value) for value in line.split(",")] for line in file]
        return dict(zip(names, np.array(rows).T))
