"""Pictures of planes. The colour maps rise in brightness, so they can be read in grey and without
seeing red and green apart. The map of the phase is cyclic."""
import numpy as np
from matplotlib import colors
from matplotlib.patheffects import withStroke

MAPS = {"intensity": "magma", "flux": "magma", "real": "viridis", "index": "cividis",
        "phase": "twilight"}
LABELS = {"intensity": "intensity |E|²", "flux": "energy flux", "real": "real part of E",
          "index": "refractive index", "phase": "phase of E, degrees",
          "envelope": "envelope |E|"}
FEWEST_POINTS = 8  # samples a wavelength; a real part with fewer shows false fringes


def is_too_coarse(plane):
    """Whether the real part would show false fringes: waves have fewer than eight samples along z,
    if the wavelength is known, or most of the power is at such frequencies."""
    if "z" in plane.names and plane.points_a_wavelength(plane.right) < FEWEST_POINTS:
        return True
    values = np.nan_to_num(plane.values)
    for axis in (0, 1):
        power = np.abs(np.fft.fft(values, axis=axis)) ** 2
        frequency = np.abs(np.fft.fftfreq(values.shape[axis]))
        share = np.moveaxis(power, axis, -1)
        if share.sum() > 0 and share[..., frequency > 1 / FEWEST_POINTS].sum() > 0.5 * share.sum():
            return True
    return False


def envelope(plane):
    """|E|. For a real part alone: the root of twice its mean square under a Hann window of a few
    wavelengths along z."""
    if np.iscomplexobj(plane.values):
        return np.abs(plane.values)
    points = plane.points_a_wavelength(plane.right)
    if "z" not in plane.names:
        return np.abs(plane.values)
    reach = 8 if not np.isfinite(points) else max(3, int(np.ceil(2 * points)))
    window = np.hanning(2 * reach + 1)
    window /= window.sum()
    padded = np.pad(plane.values ** 2, ((0, 0), (reach, reach)), "reflect")
    mean = np.apply_along_axis(np.convolve, 1, padded, window, "valid")
    return np.sqrt(2 * mean)


def picture_of(plane, what):
    """What is drawn: values, the key of their map and label."""
    if what == "real":
        if is_too_coarse(plane):
            return envelope(plane), "envelope"
        return plane.values.real, "real"
    if what == "phase":
        strength = np.abs(plane.values)
        degrees = np.degrees(np.angle(plane.values))
        # In the dark the phase is noise.
        return np.where(strength > 1e-3 * np.nanmax(strength), degrees, np.nan), "phase"
    return plane.values.real, what


def outline_levels(index):
    """Half way between the indices of large areas; five steps if the index is graded."""
    values, counts = np.unique(np.round(index[np.isfinite(index)], 6), return_counts=True)
    materials = values[counts > 0.02 * counts.sum()]
    if len(values) < 2:
        return []
    if 2 <= len(materials) <= 5:
        return list((materials[1:] + materials[:-1]) / 2)
    if len(materials) <= 1 and len(values) <= 9:
        return [(values[0] + values[-1]) / 2]
    return list(np.linspace(values[0], values[-1], 7)[1:-1])


def normalised(values, kind, logarithmic):
    """The scale of the colours."""
    finite = values[np.isfinite(values)]
    highest = float(np.max(np.abs(finite))) if finite.size else 1.0
    highest = highest or 1.0
    if kind == "phase":
        return colors.Normalize(-180, 180)
    if logarithmic:
        return colors.LogNorm(highest * 1e-5, highest, clip=True)
    if kind == "real":
        return colors.Normalize(-highest, highest)
    if kind == "index":
        return colors.Normalize(float(finite.min()), float(finite.max()))
    return colors.Normalize(0, highest)


def edges_of(places, unit):
    """The first and the last edge of the samples, in the unit."""
    half = (places[1] - places[0]) / 2 if len(places) > 1 else 0.5 * unit.metres
    return (places[0] - half) / unit.metres, (places[-1] + half) / unit.metres


def interpolation(kind, values):
    """How to fill the pixels between samples. A phase that wraps and a step between materials are
    not smoothed."""
    if kind in ("phase", "index") or not np.isfinite(values).all() or min(values.shape) > 300:
        return "antialiased"
    return "bicubic"


def draw_plane(figure, plane, what, logarithmic):
    """Draws into an empty figure."""
    values, kind = picture_of(plane, what)
    axes = figure.add_subplot()
    extent = (*edges_of(plane.right, plane.unit), *edges_of(plane.up, plane.unit))
    width, height = extent[1] - extent[0], extent[3] - extent[2]
    image = axes.imshow(values, origin="lower", extent=extent, cmap=MAPS.get(kind, "magma"),
                        norm=normalised(values, kind, logarithmic),
                        aspect="equal" if 0.2 < height / width < 5 else "auto",
                        interpolation=interpolation(kind, values))
    if plane.index is not None and kind != "index":
        levels = outline_levels(plane.index)
        if levels:
            lines = axes.contour(plane.right / plane.unit.metres, plane.up / plane.unit.metres,
                                 plane.index, levels=levels, colors="white", linewidths=0.7)
            for line in getattr(lines, "collections", [lines]):  # seen on dark and on bright
                line.set_path_effects([withStroke(linewidth=1.7, foreground="black")])
    right, up = plane.names
    axes.set_xlabel(f"{right} ({plane.unit.name})")
    axes.set_ylabel(f"{up} ({plane.unit.name})")
    axes.set_title(plane.where, fontsize="medium")
    figure.colorbar(image, cax=axes.inset_axes([1.02, 0, 0.025, 1]), label=LABELS[kind])
    return kind
