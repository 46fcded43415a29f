"""Gratings."""
import numpy as np


def square_phase_order(order):
    """Share of the light in an order of a thin grating of equal bars with phases 0 and pi:
    (2/(pi m))^2 for odd m, 0 for even ones. Goodman, Introduction to Fourier Optics, 4.4."""
    return (2 / (np.pi * order)) ** 2 if order % 2 else 0.0


def kogelnik(modulation, thickness, wavelength, degrees):
    """Share of the light in the first order of a lossless transmission grating whose index varies
    by +-modulation, at Bragg's angle inside: sin^2(pi n1 d/(lambda cos theta)).
    Kogelnik, Bell Syst. Tech. J. 48, 2909 (1969), eq. 45."""
    return np.sin(np.pi * modulation * thickness / (wavelength * np.cos(np.radians(degrees)))) ** 2
