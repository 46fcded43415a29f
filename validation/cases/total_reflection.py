"""Decay after a totally reflecting face.

At 60 degrees in 1.5 against vacuum. Behind the face the wave has one phase in z, so the real parts
at one sample fall as the amplitude does.
"""
import numpy as np

from forms.faces import evanescent_rate
from program import configuration, domain
from report import Row


def rows(program):
    width, wavelength = 8000, float(8000 * 1.5 * np.sin(np.radians(60)))
    dz = 1000
    grid = domain(width, 6 * dz, 16, 6)
    wave = {"shape": "plane", "lambda": wavelength, "amp": 1, "theta": 60.0}
    layers = [{"z": 2 * dz, "n": 1.5}, {"z": 4 * dz, "n": 1.0}]
    lines = program.run(configuration(grid, wave, layers), "-x", "1").plane()
    sample = np.argmax(np.abs(lines[2]))
    rate = -np.log(lines[5, sample] / lines[2, sample]) / (3 * dz)
    yield Row("decay rate, per wavelength", "k0 sqrt(n^2 sin^2 - 1), Born & Wolf 1.5.4",
              evanescent_rate(1.5, 1.0, 60, 1), rate * wavelength, 1e-5)  # six digits in the file
