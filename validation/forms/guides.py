"""Modes of guides, scalar. Snyder & Love, Optical Waveguide Theory."""
import numpy as np
from scipy.optimize import brentq
from scipy.special import jv, kv


def slab_index(core, cladding, width, wavelength, order=0):
    """Effective index of a TE mode of the symmetric slab: kappa d/2 - order pi/2 =
    atan(gamma/kappa) (12-2)."""
    k0 = 2 * np.pi / wavelength

    def mismatch(n):
        kappa = k0 * np.sqrt(core ** 2 - n ** 2)
        gamma = k0 * np.sqrt(n ** 2 - cladding ** 2)
        return kappa * width / 2 - order * np.pi / 2 - np.arctan(gamma / kappa)

    return brentq(mismatch, cladding + 1e-12, core - 1e-12, xtol=1e-14)


def fibre_parameters(core, cladding, radius, wavelength):
    """V, U and W of LP01: U J1(U)/J0(U) = W K1(W)/K0(W) (14-6)."""
    V = 2 * np.pi / wavelength * radius * np.sqrt(core ** 2 - cladding ** 2)

    def mismatch(U):
        W = np.sqrt(V ** 2 - U ** 2)
        return U * jv(1, U) * kv(0, W) - W * kv(1, W) * jv(0, U)

    U = brentq(mismatch, 1e-9, min(V, 2.404825557695773) - 1e-9, xtol=1e-14)
    return V, U, np.sqrt(V ** 2 - U ** 2)


def fibre_index(core, cladding, radius, wavelength):
    """Effective index of LP01."""
    _, U, _ = fibre_parameters(core, cladding, radius, wavelength)
    return np.sqrt(core ** 2 - (U * wavelength / (2 * np.pi * radius)) ** 2)


def fibre_coupling(core, cladding, radius, wavelength, separation):
    """Coupling coefficient of the LP01 modes of two equal fibres, rad per length:
    sqrt(2 Delta)/a U^2/V^3 K0(W d/a)/K1(W)^2 (18-42). Power crosses over in pi/(2 C)."""
    V, U, W = fibre_parameters(core, cladding, radius, wavelength)
    delta = (core ** 2 - cladding ** 2) / (2 * core ** 2)
    return (np.sqrt(2 * delta) / radius * U ** 2 / V ** 3 * kv(0, W * separation / radius)
            / kv(1, W) ** 2)


def grin_quarter(g):
    """Length in which a lens n sqrt(1 - (g r)^2) focuses a parallel beam: pi/(2 g).
    Saleh & Teich, 1.3-13."""
    return np.pi / (2 * g)
