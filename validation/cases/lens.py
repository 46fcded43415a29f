"""Plano-convex lens.

A Gaussian beam of waist 6 wavelengths meets the round face, of radius 40; faces in 8 levels. Where
it is narrowest after the flat face, and how wide there. Spherical aberration, at most (7/6) w^2/f
of the way, and the true angles are left out of the closed form.
"""
import numpy as np

from forms.beams import waist_behind_lens
from program import configuration, domain
from report import Row


def rows(program):
    n, radius, waist, thickness, dz = 1.5, 40.0, 6.0, 4.0, 0.2
    focal = radius / (n - 1)
    place, width = waist_behind_lens(waist, focal, 1.0)
    place -= thickness / n  # counted from the flat face instead of the principal plane
    length = 90
    grid = domain(48000, 1000 * length, 144, round(length / dz), edge=6000)
    wave = {"shape": "gaussian", "lambda": 1000.0, "amp": 1, "waist": 1000 * waist}
    layers = [{"z": 1000, "n": 1},
              {"type": "lens", "z": 1000 * thickness, "r": -1000 * radius, "n": n, "ne": 1,
               "levels": 8}, {"z": 1000 * length, "n": 1}]
    monitor = {"type": "beam", "file": "b.csv", "z1": 1000 * thickness + 10000}
    table = program.run(configuration(grid, wave, layers, [monitor])).table("b.csv")
    z = table["z"] / 1000 - 1 - thickness
    # Second moments are a parabola of z, whose least is the waist.
    square = (table["width_major"] / 2000) ** 2
    near = np.abs(z - place) < 15
    a, b, c = np.polyfit(z[near], square[near], 2)
    yield Row("distance of the waist, wavelengths", "f/(1 + (f/zR)^2), Saleh & Teich 3.2-15", place,
              -b / (2 * a), 0.01)
    yield Row("its radius, wavelengths", "Saleh & Teich 3.2-17", width,
              np.sqrt(c - b * b / (4 * a)), 0.01)
