"""Edges that absorb.

A Gaussian beam of waist 1.5 wavelengths spreads over the sides of the domain. On the axis 80
wavelengths on, beside what it would be without sides.
"""
import numpy as np

from forms.beams import gaussian_on_axis
from program import configuration, domain
from report import Row


def rows(program):
    expected = abs(gaussian_on_axis(1.5, 80, 1)) ** 2
    for width, edge, bound in ((32, 8000, 0.02), (20, 3000, 0.2), (32, None, 0.4)):
        grid = domain(1000 * width, 81000, 4 * width, 162, edge=edge)
        wave = {"shape": "gaussian", "lambda": 1000.0, "amp": 100, "waist": 1500}
        field = program.field(configuration(grid, wave, [{"z": 81000, "n": 1}]), "xz")
        kind = f"edge of {edge // 1000}" if edge else "no edge (limit: light comes back)"
        yield Row(f"domain of {width} lambda, {kind}: intensity", "angular spectrum integral",
                  expected, abs(field[160, 2 * width] / 100) ** 2, bound)
