"""Beams in a uniform medium, by the angular spectrum, without the paraxial approximation."""
import numpy as np


def _directions(count=200_000):
    """Midpoints of u = k_perp/k over the propagating waves."""
    return (np.arange(count) + 0.5) / count


def gaussian_on_axis(waist, z, wavelength):
    """Complex field on the axis at z of exp(-r^2/w^2) at z = 0:
    (k w)^2/2 times the integral over u of exp(-(k w u)^2/4 + i k z sqrt(1 - u^2)) u.
    Goodman, Introduction to Fourier Optics, 3.10; evanescent waves left out."""
    k = 2 * np.pi / wavelength
    u = _directions()
    spectrum = np.exp(-(k * waist * u) ** 2 / 4 + 1j * k * z * np.sqrt(1 - u * u))
    return (k * waist) ** 2 / 2 * np.mean(spectrum * u)


def gaussian_second_moment(waist, z, wavelength):
    """<x^2> of |E|^2 at z: w^2/4 + z^2 <(kx/kz)^2>, exact for a flat phase at z = 0.
    Siegman, Proc. SPIE 1224, 2 (1990), with kx/kz in place of the angle."""
    k = 2 * np.pi / wavelength
    u = _directions()
    weight = np.exp(-(k * waist * u) ** 2 / 2) * u
    slope = np.sum(weight * u * u / (1 - u * u) / 2) / np.sum(weight)
    return waist ** 2 / 4 + z ** 2 * slope


def hole_on_axis(radius, z, wavelength):
    """|E|^2 on the axis after a round hole in a plane wave of unit amplitude:
    1 + (z/d)^2 - 2 (z/d) cos k(d - z), d = sqrt(z^2 + a^2), the first Rayleigh-Sommerfeld integral
    in closed form. Osterberg & Smith, J. Opt. Soc. Am. 51, 1050 (1961)."""
    d = np.hypot(z, radius)
    phase = 2 * np.pi / wavelength * (d - z)
    return 1 + (z / d) ** 2 - 2 * (z / d) * np.cos(phase)


def talbot_length(period, wavelength):
    """lambda/(1 - sqrt(1 - (lambda/period)^2)): orders 0 and +-1 are in phase again.
    Rayleigh, Phil. Mag. 11, 196 (1881), without his approximation."""
    return wavelength / (1 - np.sqrt(1 - (wavelength / period) ** 2))


def waist_behind_lens(waist, focal, wavelength):
    """Distance of the waist after a thin lens that a collimated Gaussian beam meets at its waist,
    and its radius. Saleh & Teich, Fundamentals of Photonics, 3.2-15 and 3.2-17."""
    rayleigh = np.pi * waist ** 2 / wavelength
    return (focal / (1 + (focal / rayleigh) ** 2),
            waist * (focal / rayleigh) / np.hypot(1, focal / rayleigh))
