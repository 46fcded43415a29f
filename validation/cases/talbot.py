"""Talbot's length.

Three plane waves of a period of 2.5 wavelengths. The place where the field's pattern comes back
best is found between slices by a parabola.
"""
import numpy as np

from forms.beams import talbot_length
from program import configuration, domain
from report import Row


def rows(program):
    wavelength, period = 1000.0, 2500
    degrees = float(np.degrees(np.arcsin(wavelength / period)))
    expected = talbot_length(period, wavelength)
    grid = domain(period, 1.25 * 11000, 16, 550)
    waves = [{"shape": "plane", "lambda": wavelength, "amp": 1},
             {"shape": "plane", "lambda": wavelength, "amp": 0.5, "theta": degrees, "add": 1},
             {"shape": "plane", "lambda": wavelength, "amp": 0.5, "theta": -degrees, "add": 1}]
    field = program.field(configuration(grid, waves, [{"z": 13750, "n": 1}]), "xz")
    pattern = np.abs(field) ** 2
    likeness = pattern @ pattern[0]
    k = 200 + int(np.argmax(likeness[200:-1]))
    before, here, after = likeness[k - 1:k + 2]
    place = k + (before - after) / (2 * (before - 2 * here + after))
    yield Row("length in wavelengths", "lambda/(1 - sqrt(1 - (lambda/p)^2))",
              expected / wavelength, place * 13750 / 550 / wavelength, 1e-4)
