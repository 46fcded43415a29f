"""Fresnel's power through a face.

A plane wave at six angles, on the grid's first frequency, from the first medium through two slices
into the second. Each coefficient is rounded down by up to 1e-4 in both parts, so T falls by up to
2e-4/t of itself, times sqrt(2) for the two parts.
"""
import numpy as np

from forms.faces import transmitted_power
from program import configuration, domain
from report import Row

WIDTH = 8000  # nm


def power(program, n_i, n_t, degrees, polarization):
    """Flux after the face over that before it."""
    sine = n_i * np.sin(np.radians(degrees))
    tilted = sine > 0
    wavelength = float(WIDTH * sine) if tilted else 1000.0
    grid = domain(WIDTH, 400, 8, 4, polarization=polarization)
    wave = {"shape": "plane", "lambda": wavelength, "amp": 1, "theta": float(degrees)}
    layers = [{"z": 200, "n": n_i}, {"z": 200, "n": n_t}]
    return program.run(configuration(grid, wave, layers)).flux()[3]


def bound(power, n_i, n_t, degrees):
    """What rounding the coefficient down may take, and six digits of the file."""
    cos_i = np.cos(np.radians(degrees))
    cos_t = np.sqrt(1 - (n_i / n_t) ** 2 * (1 - cos_i ** 2))
    amplitude = np.sqrt(power * n_i * cos_i / (n_t * cos_t))
    return 2 * np.sqrt(2) * 1e-4 / amplitude + 1e-5


def rows(program):
    angles = {(1.0, 1.5): (0, 15, 30, 45, 60, 75), (1.5, 1.0): (0, 8, 16, 24, 32, 40)}
    for (n_i, n_t), degrees in angles.items():
        for polarization in ("te", "tm"):
            found = []
            for angle in degrees:
                expected = transmitted_power(n_i, n_t, angle, polarization)
                found.append(Row(
                    f"{polarization.upper()}, {n_i} to {n_t}, the worst of {len(degrees)} angles "
                    f"to {degrees[-1]} deg: {angle} deg", "T, Born & Wolf 1.5.3", expected,
                    power(program, n_i, n_t, angle, polarization),
                    bound(expected, n_i, n_t, angle)))
            yield max(found, key=lambda row: abs(row.difference) / row.bound)
