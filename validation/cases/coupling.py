"""Coupling of two Gaussian beams, by the overlap monitor.

A beam of waist 3 wavelengths against a mode of the same waist: moved sideways by d, and tilted.
"""
import numpy as np

from program import configuration, domain
from report import Row

WAIST = 3000


def efficiency(program, wave=None, mode=None):
    """At the entry."""
    grid = domain(32000, 2000, 128, 2)
    wave = {"shape": "gaussian", "lambda": 1000.0, "amp": 1, "waist": WAIST, **(wave or {})}
    monitor = {"type": "overlap", "file": "o.csv", "mode": "gaussian", "waist": WAIST,
               **(mode or {})}
    text = configuration(grid, wave, [{"z": 2000, "n": 1}], [monitor])
    return program.run(text).table("o.csv")["efficiency"][0]


def rows(program):
    for offset in (1000, 3000):
        yield Row(f"offset of {offset / 1000:g} lambda", "exp(-d^2/w^2), Joyce & DeLoach 1984",
                  np.exp(-(offset / WAIST) ** 2), efficiency(program, mode={"x": offset}), 1e-6)
    for degrees in (2.0, 5.0):
        tilt = np.pi * WAIST * np.sin(np.radians(degrees)) / 1000
        yield Row(f"tilt of {degrees:g} deg", "exp(-(pi w sin(t)/lambda)^2), Joyce & DeLoach 1984",
                  np.exp(-tilt ** 2), efficiency(program, mode={"tiltx": degrees}), 1e-5)
    ratio = 2 * 3.0 * 2.0 / (3.0 ** 2 + 2.0 ** 2)
    yield Row("waists of 3 and 2 lambda", "(2 w1 w2/(w1^2 + w2^2))^2", ratio ** 2,
              efficiency(program, {"waist": 2000}), 1e-6)
