"""Transmission volume grating.

Equal bars of 1.5 + 0.0157 and 1.5 - 0.0157, of which the first harmonic is 2/pi of the step: an
index that varies by +-0.01. Period 2 wavelengths in the medium, lit at Bragg's angle; the share of
the light in the first order after 10, 20 and 40 wavelengths.
"""
import numpy as np

from forms.gratings import kogelnik
from program import configuration, domain
from report import Row


def rows(program):
    wavelength, n, modulation = 1000.0, 1.5, 0.01
    step = np.pi / 2 * modulation / 2
    period = 2000 / 1.5
    width = round(2 * period)  # of which the wave at Bragg's angle is the first frequency
    bragg = float(np.degrees(np.arcsin(wavelength / (n * width))))
    grid = domain(width, 41000, 64, 410, polarization="na")
    wave = {"shape": "plane", "lambda": wavelength, "amp": 1, "theta": bragg}
    layers = [{"type": "grating", "z": 41000, "px": width / 2, "duty": 0.5, "n": n + step,
               "ne": n - step}]
    field = program.field(configuration(grid, wave, layers), "xz")
    for thickness in (10, 20, 40):
        spectrum = np.abs(np.fft.fft(field[10 * thickness])) ** 2
        yield Row(f"{thickness} wavelengths thick", "Kogelnik 1969, eq. 45",
                  kogelnik(modulation, thickness, 1, bragg),
                  spectrum[-1] / spectrum.sum(), 0.02)
