"""Slab guide.

A slab of 1.50 in 1.45, 2 um thick, at 1.55 um: one bar of a grating whose period is the domain. A
Gaussian beam goes in; the phase of what it shares with the slab's fundamental mode gives the index.
"""
import numpy as np

from forms.guides import slab_index
from program import configuration, domain
from report import Row

CORE, CLADDING, THICKNESS, WAVELENGTH = 1.50, 1.45, 2000, 1550.0


def effective_index(program, samples, slices, length=100_000, levels=8):
    """From the last half of the way."""
    width = 20000
    grid = domain(width, length, samples, slices)
    wave = {"shape": "gaussian", "lambda": WAVELENGTH, "amp": 100, "waistx": 1500,
            "waisty": 1e9}
    layer = {"type": "grating", "z": length, "px": width, "duty": THICKNESS / width, "n": CORE,
             "ne": CLADDING, "levels": levels}
    field = program.field(configuration(grid, wave, [layer]), "xz")
    k0 = 2 * np.pi / WAVELENGTH
    index = slab_index(CORE, CLADDING, THICKNESS, WAVELENGTH)
    kappa, gamma = k0 * np.sqrt(CORE ** 2 - index ** 2), k0 * np.sqrt(index ** 2 - CLADDING ** 2)
    x = np.abs((np.arange(samples) - samples // 2 + 0.5) * width / samples)  # from the bar's middle
    mode = np.where(x < THICKNESS / 2, np.cos(kappa * x),
                    np.cos(kappa * THICKNESS / 2) * np.exp(-gamma * (x - THICKNESS / 2)))
    share = field @ mode
    z = np.arange(slices) * length / slices
    # Turned back by the expected phase the rest is slow.
    slow = np.unwrap(np.angle(share * np.exp(-1j * k0 * index * z)))
    half = slices // 2
    return index + np.polyfit(z[half:], slow[half:], 1)[0] / k0


def rows(program):
    yield Row("effective index (limit: index and direction do not commute)",
              "kappa d/2 = atan(gamma/kappa), Snyder & Love 12-2",
              slab_index(CORE, CLADDING, THICKNESS, WAVELENGTH),
              effective_index(program, 160, 1000), 6e-4, is_absolute=True)
