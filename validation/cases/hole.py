"""Round hole on the axis.

A hole of radius 10 wavelengths in a plane wave, its rim in 16 levels; the edges of the domain
absorb. Intensity on the axis where it is bright and where it is half that.
"""
import numpy as np

from forms.beams import hole_on_axis
from program import configuration, domain
from report import Row


def rows(program):
    wavelength = 1000.0
    grid = domain(64000, 100000, 192, 200, edge=8000)
    wave = {"shape": "plane", "lambda": wavelength, "amp": 1}
    layers = [{"type": "screen", "r": 10000, "levels": 16}, {"z": 100000, "n": 1}]
    field = program.field(configuration(grid, wave, layers), "xz")
    intensity = np.abs(field[:, 96]) ** 2
    for z in (33.5, 50.0, 90.0):
        yield Row(f"intensity at z = {z} lambda", "Osterberg & Smith 1961",
                  hole_on_axis(10, z, 1), intensity[round(2 * z)], 0.02)
