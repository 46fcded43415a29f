"""Directional coupler.

Two cores of 1.465 in 1.45, 1.5 wavelengths in radius and 4 apart; LP01 enters one of them. The
place where the other has most of the light.
"""
import numpy as np

from forms.guides import fibre_coupling
from program import configuration, domain
from report import Row


def rows(program):
    core = {"n": 1.465, "ne": 1.45, "r": 1500}
    crossing = np.pi / 2 / fibre_coupling(1.465, 1.45, 1.5, 1.0, 4.0)
    length = int(1.3 * crossing)
    grid = domain(20000, 1000 * length, 80, 2 * length)
    wave = {"shape": "lp01", "lambda": 1000.0, "amp": 1, "x": -2000, **core}
    guide = {"type": "waveguide", "z": 1000 * length, "levels": 8, **core}
    layers = [{**guide, "offsetx": -2000}, {**guide, "offsetx": 2000, "over": 1}]
    monitor = {"type": "overlap", "file": "o.csv", "mode": "lp01", "x": 2000, "every": 10, **core}
    table = program.run(configuration(grid, wave, layers, [monitor])).table("o.csv")
    share = table["efficiency"]
    top = share > 0.9 * share.max()
    a, b, c = np.polyfit(table["z"][top] / 1000, share[top], 2)
    yield Row("length of crossing over, wavelengths", "pi/(2 C), Snyder & Love 18-42", crossing,
              -b / (2 * a), 0.03)
    yield Row("light in the other core there", "1 (weak coupling)", 1.0, c - b * b / (4 * a), 0.01)
