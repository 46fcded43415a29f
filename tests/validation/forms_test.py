#!/usr/bin/python3
"""The closed forms against limits and figures that are known without them."""
import sys
import unittest
from pathlib import Path

try:
    import numpy as np
    import scipy.special  # noqa: F401
except ImportError as missing:
    print(f"skipped: {missing}; scripts/setup validation installs it")
    sys.exit(77)

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "validation"))
from forms import beams, faces, gratings, guides, sphere  # noqa: E402
from report import Row  # noqa: E402


class Beams(unittest.TestCase):
    def test_wide_gaussian_is_paraxial(self):
        waist, wavelength = 50.0, 1.0
        rayleigh = np.pi * waist ** 2
        for z in (0.0, rayleigh, 3 * rayleigh):
            expected = 1 / (1 + (z / rayleigh) ** 2)
            self.assertAlmostEqual(abs(beams.gaussian_on_axis(waist, z, wavelength)) ** 2, expected, 4)
            width = waist ** 2 / 4 * (1 + (z / rayleigh) ** 2)
            self.assertAlmostEqual(beams.gaussian_second_moment(waist, z, wavelength) / width, 1, 3)

    def test_hole_is_four_times_brighter_where_one_zone_is_open(self):
        radius, wavelength = 10.0, 1.0
        z = radius ** 2 / wavelength - wavelength / 4  # d - z is half a wavelength
        self.assertAlmostEqual(beams.hole_on_axis(radius, z, wavelength), 4, delta=0.04)
        self.assertAlmostEqual(beams.hole_on_axis(radius, 1e-9, wavelength), 1, 6)

    def test_talbot_length_of_two_wavelengths(self):
        self.assertAlmostEqual(beams.talbot_length(2.0, 1.0), 7.4641016, 6)

    def test_waist_behind_a_lens_in_the_limits(self):
        place, radius = beams.waist_behind_lens(100.0, 50.0, 0.001)
        self.assertAlmostEqual(place, 50.0, 6)
        self.assertAlmostEqual(radius, 0.001 * 50 / (np.pi * 100), 9)


class Faces(unittest.TestCase):
    def test_power_of_the_textbook(self):
        for degrees, power in ((0, 0.96), (30, 0.94220), (45, 0.90799), (60, 0.82343)):
            self.assertAlmostEqual(faces.transmitted_power(1, 1.5, degrees, "te"), power, 5)
        self.assertAlmostEqual(
            faces.transmitted_power(1, 1.5, np.degrees(np.arctan(1.5)), "tm"), 1, 12)

    def test_power_is_the_same_both_ways(self):
        inside = np.degrees(np.arcsin(np.sin(np.radians(50)) / 1.5))
        for polarization in ("te", "tm"):
            self.assertAlmostEqual(faces.transmitted_power(1, 1.5, 50, polarization),
                                   faces.transmitted_power(1.5, 1, inside, polarization), 12)

    def test_slab_of_half_wavelengths_is_clear(self):
        self.assertAlmostEqual(faces.slab_transmission(1.5, 1.0, 1.5), 1, 12)
        self.assertAlmostEqual(faces.slab_transmission(1.5, 0.25, 1.5), (2 * 1.5 / 3.25) ** 2, 12)

    def test_evanescent_rate_vanishes_at_the_critical_angle(self):
        critical = np.degrees(np.arcsin(1 / 1.5))
        self.assertAlmostEqual(faces.evanescent_rate(1.5, 1, critical + 1e-9, 1), 0, 3)


class Guides(unittest.TestCase):
    def test_indices_of_the_textbook(self):
        self.assertAlmostEqual(guides.slab_index(1.50, 1.45, 2.0, 1.55), 1.48234, 5)
        self.assertAlmostEqual(guides.fibre_index(1.46, 1.45, 5.0, 1.0), 1.458586, 6)

    def test_coupling_falls_with_distance_as_the_mode_does(self):
        _, _, W = guides.fibre_parameters(1.46, 1.45, 2.0, 1.0)
        near, far = (guides.fibre_coupling(1.46, 1.45, 2.0, 1.0, d) for d in (40.0, 42.0))
        self.assertAlmostEqual(np.log(near / far) / W, 1, 1)


class Gratings(unittest.TestCase):
    def test_orders_hold_all_the_light(self):
        both_sides = 2 * sum(gratings.square_phase_order(m) for m in range(1, 20001))
        self.assertAlmostEqual(both_sides, 1, 4)
        self.assertAlmostEqual(gratings.square_phase_order(1), 0.405285, 6)

    def test_kogelnik_is_full_at_its_length(self):
        self.assertAlmostEqual(gratings.kogelnik(0.01, 50.0, 1.0, 0.0), 1, 12)


class Sphere(unittest.TestCase):
    def test_ball_of_nothing_leaves_the_wave(self):
        self.assertAlmostEqual(abs(sphere.on_axis(1.0, 5.0, 7.0, 1.0)), 1, 12)

    def test_small_ball_scatters_as_born_says(self):
        # Born's first order, far away: k^2 (n^2 - 1) a^3/3 exp(i k z)/z for a point scatterer.
        index, radius, z, k = 1.001, 0.005, 400.0, 2 * np.pi
        scattered = sphere.on_axis(index, radius, z, 1.0) - np.exp(1j * k * z)
        born = k ** 2 * (index ** 2 - 1) * radius ** 3 / 3 / z
        self.assertAlmostEqual(abs(scattered) / born, 1, 2)


class Report(unittest.TestCase):
    def test_verdicts(self):
        self.assertTrue(Row("", "", 2.0, 2.02, 0.011).passes)
        self.assertFalse(Row("", "", 2.0, 2.02, 0.009).passes)
        self.assertTrue(Row("", "", 0.0, -1e-9, 1e-8, is_absolute=True).passes)
        self.assertFalse(Row("", "", 1.0, float("nan"), 1e9).passes)


if __name__ == "__main__":
    unittest.main()
