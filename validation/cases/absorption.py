"""Absorption.

A plane wave straight on and one at 30 degrees in n = 1.5 + 0.01 i. What is charged is the way along
z: the tilted wave loses as little as the other, which is the method's, not the medium's.
"""
import numpy as np

from program import configuration, domain
from report import Row


def loss(program, degrees):
    """Attenuation of the power per wavelength of z."""
    width = 8000
    wavelength = float(width * 1.5 * np.sin(np.radians(degrees))) if degrees else 1000.0
    grid = domain(width, 10000, 8, 10)
    wave = {"shape": "plane", "lambda": wavelength, "amp": 1, "theta": float(degrees)}
    layers = [{"z": 10000, "n": 1.5, "k": 0.01}]
    flux = program.run(configuration(grid, wave, layers)).flux()
    return -np.log(flux[9] / flux[1]) / (8 * 1000 / wavelength)


def rows(program):
    straight = 4 * np.pi * 0.01
    yield Row("power lost straight on, Np per wavelength", "4 pi kappa (Beer-Lambert)", straight,
              loss(program, 0), 2e-5)
    yield Row("at 30 degrees (limit: the way along z counts)", "4 pi kappa/cos(theta)",
              straight / np.cos(np.radians(30)), loss(program, 30), 0.14)
