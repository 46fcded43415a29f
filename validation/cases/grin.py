"""Graded-index rod.

A beam of waist 7 wavelengths in n = 1.5 sqrt(1 - (g r)^2) with a quarter pitch of 100, in 64 steps.
Where the axis is brightest, and the waist there: w' = lambda/(pi n g w).
"""
import numpy as np

from forms.guides import grin_quarter
from program import configuration, domain
from report import Row


def rows(program):
    g = np.pi / 2 / 100
    length = 120
    grid = domain(40000, 1000 * length, 100, 2 * length)
    wave = {"shape": "gaussian", "lambda": 1000.0, "amp": 1, "waist": 7000}
    layer = {"type": "grin", "z": 1000 * length, "n": 1.5, "ne": 1.45, "g": g / 1000, "r": 16000}
    monitor = {"type": "beam", "file": "b.csv"}
    table = program.run(configuration(grid, wave, [layer], [monitor])).table("b.csv")
    z = table["z"] / 1000
    axis = table["axis_re"] ** 2 + table["axis_im"] ** 2
    top = axis > 0.9 * axis.max()
    a, b, _ = np.polyfit(z[top], axis[top], 2)
    yield Row("quarter pitch, wavelengths", "pi/(2 g), Saleh & Teich 1.3-13", grin_quarter(g),
              -b / (2 * a), 0.02)
    expected = 1 / (np.pi * 1.5 * g * 7)
    yield Row("waist there, wavelengths", "lambda/(pi n g w)", expected,
              table["width_major"].min() / 2000, 0.1)
