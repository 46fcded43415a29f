"""Plane waves at a flat face. Born & Wolf, Principles of Optics, 1.5."""
import numpy as np


def transmitted_power(n_i, n_t, degrees, polarization):
    """Power through the face, T = |t|^2 (times n_t cos_t / n_i cos_i)."""
    cos_i = np.cos(np.radians(degrees))
    sin_t = n_i / n_t * np.sin(np.radians(degrees))
    cos_t = np.sqrt(1 - sin_t ** 2)
    if polarization == "te":
        t = 2 * n_i * cos_i / (n_i * cos_i + n_t * cos_t)
    else:
        t = 2 * n_i * cos_i / (n_t * cos_i + n_i * cos_t)
    return t ** 2 * n_t * cos_t / (n_i * cos_i)


def evanescent_rate(n_i, n_t, degrees, wavelength):
    """Fall of the amplitude after a totally reflecting face, per length."""
    return 2 * np.pi / wavelength * np.sqrt((n_i * np.sin(np.radians(degrees))) ** 2 - n_t ** 2)


def slab_transmission(n, thickness, wavelength):
    """Power through a slab in air, straight on, with all its reflections: the Airy formula."""
    reflectance = ((n - 1) / (n + 1)) ** 2
    finesse = 4 * reflectance / (1 - reflectance) ** 2
    return 1 / (1 + finesse * np.sin(2 * np.pi * n * thickness / wavelength) ** 2)
