"""Ball in a plane wave.

A ball of radius 5 wavelengths, two lenses back to back with faces in 8 levels; the edges absorb.
Where the light is brightest after the ball, how bright, and the root mean square difference of the
field on the axis from 1 to 12 wavelengths after it, over its root mean square. The bounds are what
the method does at steep faces, where it takes no account of how index and direction vary together;
finer grids do not change it.
"""
import numpy as np

from forms.sphere import on_axis
from program import configuration, domain
from report import Row

RADIUS = 5  # wavelengths
SLICES = 10  # a wavelength


def field_on_axis(program, index):
    """The field after the ball's centre and the places, in wavelengths."""
    length = 24
    grid = domain(40000, 1000 * length, 160, SLICES * length, edge=6000)
    wave = {"shape": "plane", "lambda": 1000.0, "amp": 1}
    half = {"type": "lens", "z": 1000 * RADIUS, "n": index, "ne": 1, "levels": 8}
    layers = [{"z": 1000, "n": 1}, {**half, "r": -1000 * RADIUS}, {**half, "r": 1000 * RADIUS},
              {"z": 1000 * length, "n": 1}]
    field = program.field(configuration(grid, wave, layers), "xz")
    z = np.arange(SLICES * length) / SLICES - 1 - RADIUS
    return field[:, 80], z


def rows(program):
    for index, bounds in ((1.2, (0.1, 0.03, 0.13)), (1.5, (0.2, 0.05, 0.2))):
        field, z = field_on_axis(program, index)
        after = (z >= RADIUS + 1) & (z <= RADIUS + 12)
        exact = on_axis(index, RADIUS, z[after], 1.0)
        fine = np.linspace(RADIUS + 0.05, RADIUS + 12, 4000)
        bright = np.abs(on_axis(index, RADIUS, fine, 1.0)) ** 2
        outside = z > RADIUS + 0.05
        here = np.abs(field[outside]) ** 2
        yield Row(f"index {index}: brightest intensity", "partial waves, Morse & Ingard 8.2",
                  bright.max(), here.max(), bounds[0])
        yield Row(f"index {index}: its place, wavelengths after the centre", "partial waves",
                  fine[bright.argmax()], z[outside][here.argmax()], bounds[1])
        # One phase for all: that of the way to the ball.
        turn = np.vdot(field[after], exact)
        error = np.abs(field[after] * turn / abs(turn) - exact)
        yield Row(f"index {index}: difference of the field on the axis", "0", 0.0,
                  np.sqrt(np.mean(error ** 2) / np.mean(np.abs(exact) ** 2)), bounds[2],
                  is_absolute=True)
