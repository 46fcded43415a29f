#!/usr/bin/python3
"""scripts/plot draws the values of the file at their places, with lengths in um."""
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

try:
    import h5py
    import matplotlib
    import numpy as np
    from matplotlib.figure import Figure
except ImportError as missing:
    print(f"skipped: {missing}; scripts/setup pictures installs it")
    sys.exit(77)

SCRIPTS = Path(__file__).resolve().parents[2] / "scripts"
sys.path.insert(0, str(SCRIPTS))
from pictures import draw, planes, tables  # noqa: E402
from pictures.configuration import Configuration  # noqa: E402

CONFIGURATION = """A wave in glass.
[global]
scale = um
x = 8 ; as wide as this
y = 6
z = 12
nx = 16
ny = 12
nz = 96
[/global]
[wave]
lambda = 1.5
[/wave]
"""
NX, NY, NZ = 16, 12, 96
X = (np.arange(NX) - NX // 2) * 0.5
Y = (np.arange(NY) - NY // 2) * 0.5
Z = np.arange(NZ) * 0.125


def wave(index):
    """A wave along z whose amplitude tells x, y and z apart, [nz][ny][nx]."""
    z, y, x = np.meshgrid(Z, Y, X, indexing="ij")
    return (20 + x + 2 * y - z) * np.exp(2j * np.pi * index * z / 1.5)


class Pictures(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.path = Path(self.folder.name)

    def field_file(self, field, index=None, name="f.vtkhdf", slices_written=NZ):
        with h5py.File(self.path / name, "w") as file:
            group = file.create_group("VTKHDF")
            nz, ny, nx = field.shape
            group.attrs["WholeExtent"] = [0, nx - 1, 0, ny - 1, 0, nz - 1]
            group.attrs["Origin"] = [X[0] * 1e-6, Y[0] * 1e-6, 0.0]
            group.attrs["Spacing"] = [0.5e-6, 0.5e-6, 0.125e-6]
            data = group.create_group("PointData")
            data["E"] = np.stack([field.real, field.imag], axis=-1)
            if index is not None:
                data["index"] = np.stack([index, 0 * index], axis=-1)
            file["configuration"] = CONFIGURATION
            file["wavelength"] = 1.5e-6
            file["slices_written"] = slices_written
        return str(self.path / name)

    def run_plot(self, *words):
        return subprocess.run([str(SCRIPTS / "plot"), *words], cwd=self.path, text=True,
                              capture_output=True, check=False)

    def test_planes_of_a_field_file_lie_where_they_should(self):
        field = wave(1.0)
        name = self.field_file(field)
        cases = (("xy", 2.0, field[16], (X, Y)), ("xz", -1.0, field[:, 4, :].T, (Z, X)),
                 ("yz", 1.24, field[:, :, 10].T, (Z, Y)))
        for plane, at, values, (right, up) in cases:
            found = planes.field_plane(name, "phase", plane, at, None)
            np.testing.assert_array_equal(found.values, values)
            np.testing.assert_allclose(found.right, right * 1e-6, atol=1e-15)
            np.testing.assert_allclose(found.up, up * 1e-6, atol=1e-15)
            self.assertEqual(found.unit.name, "µm")
        found = planes.field_plane(name, "intensity", None, None, None)  # the plane of the axis
        np.testing.assert_allclose(found.values, np.abs(field[:, 6, :].T) ** 2)
        with self.assertRaisesRegex(planes.PlotError, "z = 12.1 .m is outside of 0 to 11.875"):
            planes.field_plane(name, "real", "xy", 12.1, None)
        with self.assertRaisesRegex(planes.PlotError, "has E, from which flux cannot be drawn"):
            planes.field_plane(name, "flux", None, None, None)

    def test_pictures_show_values_units_and_outlines(self):
        index = np.where(np.abs(X) < 2, 1.5, 1.0) * np.ones((NZ, NY, NX))
        name = self.field_file(wave(1.0), index)
        for what, colours in (("intensity", "magma"), ("phase", "twilight"), ("real", "viridis"),
                              ("index", "cividis")):
            figure = Figure()
            plane = planes.field_plane(name, what, "xz", 0, None)
            self.assertEqual(draw.draw_plane(figure, plane, what, False), what)
            axes = figure.axes[0]
            image = axes.images[0]
            self.assertEqual(image.get_cmap().name, colours)
            np.testing.assert_allclose(image.get_extent(), [-0.0625, 11.9375, -4.25, 3.75])
            self.assertEqual((axes.get_xlabel(), axes.get_ylabel()), ("z (µm)", "x (µm)"))
            # The outline runs half way between the samples at 1.5 and 2 um.
            self.assertEqual(len(axes.collections), what != "index")
            for outline in axes.collections:
                places = {abs(y) for path in outline.get_paths() for _, y in path.vertices}
                np.testing.assert_allclose(sorted(places), 1.75)
        np.testing.assert_allclose(draw.picture_of(plane, "index")[0][8, 0], 1.5)
        figure = Figure()
        draw.draw_plane(figure, planes.field_plane(name, "intensity", "xz", 0, None), "intensity",
                        True)
        self.assertIsInstance(figure.axes[0].images[0].norm, matplotlib.colors.LogNorm)

    def test_a_coarse_real_part_is_drawn_as_its_envelope(self):
        flat = np.ones((NZ, NY, NX))
        for glass, kind in ((1.0, "real"), (1.6, "envelope")):  # 12 and 7.5 points a wavelength
            field = flat * np.exp(2j * np.pi * glass * Z / 1.5)[:, None, None]
            name = self.field_file(field, glass * flat)
            plane = planes.field_plane(name, "real", "xz", None, None)
            values, found = draw.picture_of(plane, "real")
            self.assertEqual(found, kind)
            expected = np.ones((NX, NZ)) if kind == "envelope" else field[:, 0, :].real.T
            np.testing.assert_allclose(values, expected, atol=1e-12)
            # Of real parts alone the envelope is right to some per cent.
            plane.values = plane.values.real
            if kind == "envelope":
                np.testing.assert_allclose(draw.envelope(plane)[:, 10:-10], 1, atol=0.03)

    def test_cross_sections_take_their_axes_from_the_configuration(self):
        field = wave(1.0).real
        lines = field[:, 6, :]
        np.savetxt(self.path / "E_cpu.csv", lines, fmt="%.17g", delimiter=",", newline=",\n",
                   footer="", comments="")
        found = planes.csv_plane(str(self.path / "E_cpu.csv"), Configuration(CONFIGURATION), None,
                                 None)
        np.testing.assert_array_equal(found.values, lines.T)
        np.testing.assert_allclose(found.right, Z * 1e-6)
        np.testing.assert_allclose(found.up, X * 1e-6)
        self.assertEqual(found.wavelength, 1.5e-6)
        in_nm = Configuration(CONFIGURATION.replace("scale = um", "scale = nm")
                              .replace("= 8 ;", "= 8000 ;").replace("z = 12", "z = 12000"))
        same = planes.csv_plane(str(self.path / "E_cpu.csv"), in_nm, "xz", None)
        np.testing.assert_allclose(same.right, Z * 1e-6)
        self.assertEqual((found.unit.name, same.unit.name), ("µm", "µm"))
        with self.assertRaisesRegex(planes.PlotError, "96 lines of 16 values are no yz"):
            planes.csv_plane(str(self.path / "E_cpu.csv"), Configuration(CONFIGURATION), "yz", None)

    def test_the_script_writes_what_it_says_and_explains_mistakes(self):
        self.field_file(wave(1.0))
        (self.path / "E_cpu.csv").write_text("1e-05,2,3,\n4,nan,6,\n\n")
        (self.path / "b.csv").write_text("1,2,\n3,\n")
        (self.path / "run.cfg").write_text(CONFIGURATION)
        for words, out in ((["f.vtkhdf"], "f-intensity.png"), (["E_cpu.csv"], "E_cpu.png"),
                           (["f.vtkhdf", "p.svg", "--what", "phase", "--log"], "p.svg")):
            done = self.run_plot(*words)
            self.assertEqual((done.returncode, done.stdout.strip()), (0, out), done.stderr)
            self.assertGreater((self.path / out).stat().st_size, 1000)
        self.field_file(wave(1.0), slices_written=7)
        self.assertRegex(self.run_plot("f.vtkhdf").stderr, "interrupted; 7 of 96 slices")
        for words, message in (
                (["none.csv"], "none.csv: No such file"), (["none.h5"], "none.h5: .*no such file"),
                (["b.csv"], "b.csv: has no plane"), (["run.cfg"], "run.cfg: cannot be read"),
                (["E_cpu.csv", "--what", "phase"], "has real parts, from which phase"),
                (["E_cpu.csv", "--config", "run.cfg"], "2 lines of 3 values are no plane of a grid"),
                (["E_cpu.csv", "--index", "b.csv"], "b.csv"), (["E_cpu.csv", "--size", "9"], "--size 9"),
                (["E_cpu.csv", "out.tiffany"], "plot: .*tiffany")):
            done = self.run_plot(*words)
            self.assertEqual(done.returncode, 1, words)
            self.assertRegex(done.stderr, message)
            self.assertEqual(done.stderr.count("\n"), 1, done.stderr)

    def draw_table(self, text, *columns):
        (self.path / "t.csv").write_text(text)
        figure = Figure()
        tables.draw_table(figure, tables.Table(str(self.path / "t.csv")), list(columns), False)
        return figure

    def test_tables_are_curves(self):
        figure = self.draw_table("slice,z (um),power (W),width (um)\n0,0,4,2\n4,1.5,3,2.5\n")
        self.assertEqual([axes.get_ylabel() for axes in figure.axes], ["power (W)", "width (um)"])
        self.assertEqual(figure.axes[-1].get_xlabel(), "z (um)")
        np.testing.assert_array_equal(figure.axes[1].lines[0].get_xydata(), [[0, 2], [1.5, 2.5]])
        figure = self.draw_table("slice [1],z [nm],width [nm],power [W]\n0,0,800,4\n4,1500,900,3\n")
        self.assertEqual([axes.get_ylabel() for axes in figure.axes], ["width [nm]", "power [W]"])
        self.assertEqual(figure.axes[-1].get_xlabel(), "z [µm]")
        np.testing.assert_array_equal(figure.axes[0].lines[0].get_xydata(), [[0, 800], [1.5, 900]])
        for head, label in (("slice [1],power [W],power_in_circle [W]", "power [W]"),
                            ("slice,power_in_circle,power", "power"),
                            ("slice,b.power_in_circle [W],b.power [W]", "b.power [W]")):
            figure = self.draw_table(head + "\n0,4,3\n1,2,1\n", "power")
            self.assertEqual([axes.get_ylabel() for axes in figure.axes], [label])
        with self.assertRaisesRegex(planes.PlotError, "several columns are pow; columns are slice"):
            self.draw_table("slice,power,power_in_circle\n0,4,3\n", "pow")
        with self.assertRaisesRegex(planes.PlotError, "no column what; columns are slice, z"):
            self.draw_table("slice,z (um),power (W)\n0,0,4\n", "what")

    def test_sweeps_are_curves_and_maps_without_the_points_that_failed(self):
        head = "layer2.z,{}beam.z (um),lp01.efficiency,status,message\n"
        figure = self.draw_table(head.format("") + "30,1,0.5,0,\n10,1,0.25,0,\n20,,,255,bad\n")
        line = figure.axes[0].lines[0].get_xydata()
        np.testing.assert_array_equal(line, [[10, 0.25], [30, 0.5]])
        self.assertIn("0.5 at 30", figure.axes[0].texts[0].get_text())
        nanometres = "layer2.z,layer2.n,beam.z [nm],lp01.efficiency,status,message\n"
        figure = self.draw_table(nanometres + "30500,1.5,1,0.5,0,\n10000,1.5,1,0.25,0,\n")
        np.testing.assert_array_equal(figure.axes[0].lines[0].get_xdata(), [10, 30.5])
        self.assertEqual(figure.axes[0].get_xlabel(), "layer2.z [µm]")
        self.assertIn("0.5 at 30.5", figure.axes[0].texts[0].get_text())
        figure = self.draw_table(nanometres + "3000,1.5,1,0.5,0,\n3000,1.6,1,0.25,0,\n")
        self.assertEqual(figure.axes[0].get_xlabel(), "layer2.n")  # no length
        figure = self.draw_table(head.format("wave.lambda,") + "20,1,0,0.1,0,\n10,1,0,0.2,0,\n"
                                 "10,2,0,0.3,0,\n20,2,,,1,\n", "efficiency")
        image = figure.axes[0].images[0].get_array()
        np.testing.assert_array_equal(np.ma.filled(image, np.nan), [[0.2, 0.1], [0.3, np.nan]])
        self.assertEqual(figure.axes[0].get_xlabel(), "layer2.z")
        with self.assertRaisesRegex(planes.PlotError, "no rows of points that ended well"):
            self.draw_table(head.format("") + "30,1,0.5,255,x\n")


if __name__ == "__main__":
    unittest.main()
