"""What the method leaves out: reflections.

A slab in air between its faces: the multiply reflected light is not there, so a clear slab, a
whole number of half wavelengths thick, lets through what its two faces would alone.
"""
from forms.faces import slab_transmission, transmitted_power
from program import configuration, domain
from report import Row


def rows(program):
    grid = domain(8000, 4000, 8, 16)
    wave = {"shape": "plane", "lambda": 1500.0, "amp": 1}
    layers = [{"z": 1000, "n": 1}, {"z": 2000, "n": 1.5}, {"z": 1000, "n": 1}]
    through = program.run(configuration(grid, wave, layers)).flux()[-1]
    yield Row("slab of index 1.5, two faces alone", "T^2, Born & Wolf 1.5.3",
              transmitted_power(1, 1.5, 0, "te") ** 2, through, 5e-4)
    yield Row("the same with all reflections (limit: one way)", "Airy, Born & Wolf 7.6.1",
              slab_transmission(1.5, 2000, 1500), through, 0.079)
