"""Step-index fibre.

LP01 of a core of 1.46 in 1.45, 5 wavelengths in radius, launched as it is. Its effective index from
the phase of the overlap with the mode; what stays in the mode; and the power, of which a guide
should lose none.
"""
from forms.guides import fibre_index
from program import configuration, domain
from report import Row

LENGTH = 100  # wavelengths


def fibre(samples, slices, levels=8, core=1.46, radius=5000, width=40000, monitors=()):
    """A configuration with LP01 launched into the fibre, watched by an overlap."""
    grid = domain(width, 1000 * LENGTH, samples, slices)
    mode = {"r": radius, "n": core, "ne": 1.45}
    wave = {"shape": "lp01", "lambda": 1000.0, "amp": 1, **mode}
    layer = {"type": "waveguide", "z": 1000 * LENGTH, "levels": levels, **mode}
    overlap = {"type": "overlap", "file": "overlap.csv", "mode": "lp01", **mode}
    return configuration(grid, wave, [layer], [overlap, *monitors])


def rows(program):
    beam = {"type": "beam", "file": "beam.csv"}
    expected = fibre_index(1.46, 1.45, 5000, 1000)
    result = program.run(fibre(160, 5 * LENGTH, monitors=[beam]))
    overlap, power = result.table("overlap.csv"), result.table("beam.csv")["power"]
    yield Row("effective index", "U J1/J0 = W K1/K0, Snyder & Love 14-6", expected,
              overlap["effective_index"][-1], 1e-5, is_absolute=True)
    yield Row(f"light in the mode after {LENGTH} wavelengths", "1", 1.0,
              overlap["efficiency"][-1], 1e-3)
    yield Row(f"power after {LENGTH} wavelengths (limit: the step is not unitary)", "1", 1.0,
              power[-1] / power[0], 0.01)
    strong = program.run(fibre(160, 10 * LENGTH, core=1.5, radius=1000, width=20000,
                               monitors=[beam]))
    power = strong.table("beam.csv")["power"]
    yield Row("the same, core of 1.50 and 1 wavelength", "1", 1.0, power[-1] / power[0], 0.05)
    yield Row("its effective index (limit: index and direction do not commute)",
              "Snyder & Love 14-6", fibre_index(1.5, 1.45, 1000, 1000),
              strong.table("overlap.csv")["effective_index"][-1], 1e-3, is_absolute=True)
