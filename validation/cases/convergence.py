"""Convergence in dz and in dx.

The effective index of the slab guide. Differences between three steps, each half the one before,
give the order: log2((n1 - n2)/(n2 - n3)).
"""
import numpy as np

from cases.slab_guide import effective_index
from report import Row


def rows(program):
    for name, order, found in (
            ("dz = 0.32, 0.16, 0.08 um", 1, [effective_index(program, 160, slices)
                                             for slices in (312, 625, 1250)]),
            ("dx = 0.5, 0.25, 0.125 um", 2, [effective_index(program, samples, 800)
                                             for samples in (40, 80, 160)])):
        first, second = np.diff(found)
        yield Row(f"order in {name}", {1: "1: a step knows the index at its end",
                                       2: "2: the samples represent their cells"}[order],
                  order, np.log2(abs(first / second)), 0.5, is_absolute=True)
        yield Row("change by the last halving", "0", 0.0, second, 1e-4, is_absolute=True)
