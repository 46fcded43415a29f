"""Thin grating of equal bars, a phase of pi between them.

Bars of index 1.5 in 1, a wavelength thick, in one step; light straight on, no losses at the faces.
The grating's edges are between samples, 256 of them a period.
"""
import numpy as np

from forms.gratings import square_phase_order
from program import configuration, domain
from report import Row


def rows(program):
    grid = domain(256000, 3000, 256, 3, polarization="na")
    wave = {"shape": "plane", "lambda": 1000.0, "amp": 1}
    layers = [{"z": 1000, "n": 1},
              {"type": "grating", "z": 1000, "px": 256000, "duty": 0.5, "n": 1.5, "ne": 1},
              {"z": 1000, "n": 1}]
    field = program.field(configuration(grid, wave, layers), "xz")
    orders = np.abs(np.fft.fft(field[1]) / 256) ** 2
    for order, bound in ((1, 2e-4), (3, 1e-3)):
        for side in (order, -order):
            yield Row(f"order {side:+d}", "(2/(pi m))^2", square_phase_order(order), orders[side],
                      bound)
    yield Row("orders 0, 2, 4 together", "none", 0.0,
              orders[[0, 2, -2, 4, -4]].sum(), 1e-6, is_absolute=True)
