"""Gaussian beam, not paraxial.

On the axis and by its second moment at one, two and three Rayleigh lengths, for waists of 1, 2 and
5 wavelengths, by the beam monitor; the edge of the spectrum, left out of the closed form, counts in
the first. Then the power over 2000 steps of a tenth of a wavelength.
"""
import numpy as np

from forms.beams import gaussian_on_axis, gaussian_second_moment
from program import configuration, domain
from report import Row

AMPLITUDE = 1e6  # keeps weak plane waves above the cut-off
WAVELENGTH = 1000.0
MONITOR = {"type": "beam", "file": "beam.csv"}


def rows(program):
    for waists, width, bound in ((1, 32, 1e-4), (2, 48, 1e-6), (5, 96, 1e-6)):
        waist = waists * WAVELENGTH
        rayleigh = round(np.pi * waist ** 2 / WAVELENGTH)
        grid = domain(width * 1000, 4 * rayleigh, 4 * width, 4)
        wave = {"shape": "gaussian", "lambda": WAVELENGTH, "amp": AMPLITUDE, "waist": waist}
        beam = program.run(configuration(grid, wave, [{"z": 4 * rayleigh, "n": 1}],
                                         [MONITOR])).table("beam.csv")
        for k in (1, 2, 3):
            expected = abs(gaussian_on_axis(waist, k * rayleigh, WAVELENGTH)) ** 2
            yield Row(f"waist {waists} lambda, on the axis at {k} zR", "angular spectrum integral",
                      expected, (beam["axis_re"][k] ** 2 + beam["axis_im"][k] ** 2)
                      / AMPLITUDE ** 2, bound)
            moment = gaussian_second_moment(waist, k * rayleigh, WAVELENGTH)
            yield Row(f"waist {waists} lambda, D4sigma/lambda at {k} zR",
                      "<x^2> = w^2/4 + z^2 <(kx/kz)^2>", 4 * np.sqrt(moment) / WAVELENGTH,
                      beam["width_major"][k] / WAVELENGTH, bound)
    grid = domain(16000, 200100, 32, 2001)
    wave = {"shape": "gaussian", "lambda": WAVELENGTH, "amp": 1e4, "waist": 2000}
    power = program.run(configuration(grid, wave, [{"z": 200100, "n": 1.5}],
                                      [MONITOR])).table("beam.csv")["power"]
    # Two pi is cut at 6.2831853, which lets a little of every wave leak into others at each step.
    yield Row("power after 2000 steps over that before", "1", 1.0, power[-1] / power[0], 2e-6)
