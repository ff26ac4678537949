"""The package gives what the library and the program give, to the last bit, however the arrays lie."""

import ctypes
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

import numpy as np
import orbel
from hypothesis import assume, given, settings, strategies as st

DTYPES = (np.uint8, np.uint16, np.float32)


class Band(ctypes.Structure):
    _fields_ = [(n, ctypes.c_double) for n in ('gain', 'radius', 'threshold')] + [
        ('edges', ctypes.c_int32), ('reserved', ctypes.c_int32)]


class Settings(ctypes.Structure):
    _fields_ = [('size', ctypes.c_size_t), ('bands', Band * 5), ('residual', ctypes.c_double), ('mix', ctypes.c_double)
                ] + [(n, ctypes.c_int32) for n in ('half', 'luminance', 'overlay', 'reference_edge', 'form', 'limit')]


class Picture(ctypes.Structure):
    _fields_ = [('size', ctypes.c_size_t)] + [(n, ctypes.c_int32) for n in ('width', 'height', 'channels', 'samples')
                ] + [('base', ctypes.c_void_p * 4), ('column_step', ctypes.c_ssize_t), ('row_step', ctypes.c_ssize_t)]


class Options(ctypes.Structure):
    _fields_ = [('size', ctypes.c_size_t), ('threads', ctypes.c_int32), ('reserved', ctypes.c_int32),
                ('mask', ctypes.POINTER(Picture)), ('others', ctypes.c_void_p * 4)]


library = ctypes.CDLL(os.environ['ORBEL_LIBRARY'])
library.orbel_picture_interleaved.argtypes = [ctypes.POINTER(Picture), ctypes.c_size_t, *[ctypes.c_int32] * 4,
                                              ctypes.c_void_p, ctypes.c_ssize_t]


def describe(packed):
    picture, channels = Picture(), 1 if packed.ndim == 2 else packed.shape[2]
    samples = {'uint8': 0, 'uint16': 1, 'float32': 3}[packed.dtype.name]
    assert library.orbel_picture_interleaved(ctypes.byref(picture), ctypes.sizeof(picture), samples, packed.shape[1],
                                             packed.shape[0], channels, packed.ctypes.data, packed.strides[0]) == 0
    return picture


def by_library(image, mask, **words):
    """The image, packed, through the shared library."""
    packed = image.copy(order='C')
    record, options = Settings(), Options(size=ctypes.sizeof(Options))
    assert library.orbel_settings_init(ctypes.byref(record), ctypes.c_size_t(ctypes.sizeof(record))) == 0
    for word, value in words.items():
        if isinstance(value, (list, tuple)):
            for band, of_band in zip(record.bands, value):
                setattr(band, word, of_band)
        else:
            setattr(record, word, {'pyramid': 0, 'wavelets': 1}.get(value, value))
    at = ctypes.byref(describe(packed))
    if mask is not None:
        options.mask = ctypes.pointer(describe(mask))
    assert library.orbel_equalize(ctypes.byref(record), at, at, ctypes.byref(options)) == 0
    return packed


def swapped(colours):
    """Blue first, alpha where it is."""
    return colours[..., [2, 1, 0, 3][:colours.shape[-1]]]


@st.composite
def images(draw):
    """Arrays of random samples that lie in larger ones, cut out, spaced, flipped and turned."""
    height, width = draw(st.integers(1, 70)), draw(st.integers(1, 70))
    channels, dtype = draw(st.sampled_from((None, 3, 4))), draw(st.sampled_from(DTYPES))
    down, across = (draw(st.sampled_from((-2, -1, 1, 3))) for _ in range(2))
    outer = (height * abs(down) + 2, width * abs(across) + 1)
    rng = np.random.default_rng(draw(st.integers(0, 2**32)))
    samples = rng.random(outer + ((channels,) if channels else ()), np.float32) * 1.5 - 0.25
    if dtype != np.float32:
        samples = (samples.clip(0, 1) * np.iinfo(dtype).max).astype(dtype)
    order = draw(st.permutations(range(samples.ndim)))  # of the axes in memory
    samples = np.ascontiguousarray(samples.transpose(order)).transpose(np.argsort(order))
    view = samples[1:-1, :-1][::down, ::across]
    return view[..., ::-1] if channels == 3 and draw(st.booleans()) else view


def five(values):
    return st.lists(values, min_size=5, max_size=5)


SETTINGS = st.fixed_dictionaries({}, optional={
    'gain': five(st.floats(-300, 400)), 'radius': five(st.floats(0, 9)),
    'threshold': five(st.just(0) | st.floats(0.01, 255)), 'edges': five(st.booleans()),
    'residual': st.floats(-100, 300), 'half': st.booleans(), 'luminance': st.booleans(),
    'form': st.sampled_from(('pyramid', 'wavelets')), 'reference_edge': st.sampled_from((0, 50, 90)),
    'mix': st.floats(0, 100), 'limit': st.booleans(), 'overlay': st.integers(0, 9)})


class SameBits(unittest.TestCase):
    @settings(max_examples=300, deadline=None, database=None)
    @given(images(), SETTINGS, st.sampled_from((None, 1, 3)), st.booleans())
    def test_as_the_library(self, image, words, threads, is_masked):
        before = image.copy()
        mask = np.random.default_rng(5).random(image.shape[:2], np.float32) if is_masked else None
        expected = by_library(image, mask, **words)
        weights = words.get('gain', 100), words.get('residual', 100)
        rgb = words | {'threads': threads, 'mask': mask}
        np.testing.assert_array_equal(orbel.equalize(image, **rgb), expected)
        np.testing.assert_array_equal(orbel.BandStack(image, **rgb).weigh(*weights), expected)
        np.testing.assert_array_equal(image, before)
        if image.ndim == 3:
            there, turned, bgr = swapped(image), swapped(expected), rgb | {'channel_order': 'bgr'}
            np.testing.assert_array_equal(orbel.equalize(there, **bgr), turned)
            np.testing.assert_array_equal(orbel.BandStack(there, **bgr).weigh(*weights), turned)

        self.assertIs(orbel.equalize(image, out=image, **rgb), image)
        np.testing.assert_array_equal(image, expected)

    @settings(max_examples=50, deadline=None, database=None)
    @given(images(), SETTINGS)
    def test_bands_add_up(self, image, words):
        assume(words.get('form') == 'wavelets' or min(image.shape[:2]) > 32)  # a smaller pyramid has no stack
        image = image if image.dtype == np.float32 else image / np.float32(np.iinfo(image.dtype).max)  # not clipped
        words = words | {'reference_edge': 0, 'half': False, 'mix': 100, 'limit': False, 'overlay': 0}
        parts = orbel.bands(image, **words)
        colours = image if image.ndim == 2 else image[..., :3]
        if image.ndim == 2 or not words.get('luminance', True):
            weights = np.divide([*words.get('gain', [100] * 5), words.get('residual', 100)], 100)
            result = orbel.equalize(image, **words)[..., :3] if image.ndim == 3 else orbel.equalize(image, **words)
            np.testing.assert_allclose(np.tensordot(weights, parts, 1), result, atol=1e-4)
        else:  # luminance: between the colours
            self.assertTrue((parts.sum(axis=0) >= colours.min(axis=2) - 1e-5).all())
            self.assertTrue((parts.sum(axis=0) <= colours.max(axis=2) + 1e-5).all())
        if image.ndim == 3:
            turned = orbel.bands(swapped(image), channel_order='bgr', **words)
            np.testing.assert_array_equal(turned, swapped(parts) if parts.ndim == 4 else parts)

    def test_as_the_program(self):
        rng = np.random.default_rng(7)
        words = {'gain': (150, 130, 120, 90, 250), 'form': 'wavelets', 'limit': True}
        options = ['--gain', '150,130,120,90,250', '--form', 'wavelets', '--limit', '--quiet']
        for dtype, ending in zip(DTYPES, ('ppm', 'ppm', 'pfm')):
            image = rng.random((90, 120, 3), np.float32)
            if dtype == np.float32:
                header, stored = b'PF\n120 90\n-1.0\n', image.astype('<f4')
            else:
                most = np.iinfo(dtype).max
                image = (image * most).astype(dtype)
                header, stored = b'P6\n120 90\n%d\n' % most, image.astype(image.dtype.newbyteorder('>'))
            with self.subTest(dtype=dtype.__name__), tempfile.TemporaryDirectory() as folder:
                source, target = Path(folder, f'in.{ending}'), Path(folder, f'out.{ending}')
                source.write_bytes(header + stored.tobytes())
                subprocess.run([os.environ['ORBEL'], source, target, *options], check=True)
                result = np.frombuffer(target.read_bytes()[-stored.nbytes:], stored.dtype).reshape(image.shape)
                np.testing.assert_array_equal(orbel.equalize(image, **words), result)


if __name__ == '__main__':
    unittest.main()
