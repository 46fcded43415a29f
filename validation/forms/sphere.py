"""The scalar wave that a ball makes of a plane wave, by partial waves."""
import numpy as np
from scipy.special import eval_legendre, spherical_jn, spherical_yn


def _hankel(order, x, derivative=False):
    return spherical_jn(order, x, derivative) + 1j * spherical_yn(order, x, derivative)


def on_axis(index, radius, z, wavelength):
    """Field at places z > radius after the centre, on the axis, of exp(i k z) scattered by a ball
    in a medium of index 1; field and its slope are continuous at its face:
    E = exp(i k z) + sum (2 l + 1) i^l a_l h_l(k z),
    a_l = -(n j_l'(n x) j_l(x) - j_l'(x) j_l(n x)) / (n j_l'(n x) h_l(x) - h_l'(x) j_l(n x)).
    Morse & Ingard, Theoretical Acoustics, 8.2, for equal densities."""
    z = np.asarray(z, dtype=float)
    k = 2 * np.pi / wavelength
    x = k * radius
    inner = index * x
    field = np.exp(1j * k * z)
    for order in range(int(x + 4 * x ** (1 / 3) + 10)):
        j_in, dj_in = spherical_jn(order, inner), index * spherical_jn(order, inner, True)
        above = dj_in * spherical_jn(order, x) - spherical_jn(order, x, True) * j_in
        below = dj_in * _hankel(order, x) - _hankel(order, x, True) * j_in
        field = field - (2 * order + 1) * 1j ** order * above / below * _hankel(order, k * z) \
            * eval_legendre(order, 1.0)
    return field
