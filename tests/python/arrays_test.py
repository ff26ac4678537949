"""Arrays and arguments that can't be: an exception that says so, and nothing is written."""

import copy
import pickle
import unittest
from unittest import mock

import numpy as np
import orbel
from numpy.lib.stride_tricks import as_strided
from orbel import _engine
from orbel._settings import settings_of


def zeros(*shape, dtype=np.uint8):
    return np.zeros(shape, dtype)


class Refusals(unittest.TestCase):
    def test_images(self):
        for image, error, text in (
            (zeros(4), ValueError, r'shape is \(4,\)'),
            (zeros(4, 4, 2), ValueError, r'\(4, 4, 2\)'),
            (zeros(2, 4, 4, 3), ValueError, r'\(2, 4, 4, 3\)'),
            (zeros(0, 4), ValueError, 'width and height'),
            (zeros(4, 0, 3), ValueError, 'width and height'),
            (as_strided(zeros(1), (1, 2**32 + 8), (1, 1)), ValueError, 'width and height'),  # 8 in 32 bits
            (np.broadcast_to(np.uint8(1), (9, 9)), ValueError, 'must not be 0'),
            (np.broadcast_to(np.float32(1), (40000, 50000)), ValueError, 'must not be 0'),
            (zeros(4, 4, dtype='f8'), TypeError, r"image.astype\('float32'\)"),
            (zeros(4, 4, dtype='>u2'), TypeError, r"image.astype\('uint16'\)"),
            (zeros(4, 4, dtype='>f4'), TypeError, r"image.astype\('float32'\)"),
            (zeros(4, 4, dtype='i1'), TypeError, 'int8'),
            (zeros(4, 4, dtype=bool), TypeError, 'bool'),
            (zeros(4, 4, dtype='c8'), TypeError, 'complex64'),
            (zeros(4, 4, dtype=object), TypeError, 'object'),
            (zeros(4, 4, dtype='u1,u1'), TypeError, 'f0'),
            ([[1, 2], [3, 4]], TypeError, 'int64'),
            (None, TypeError, 'object'),
        ):
            for call in (orbel.equalize, orbel.bands, orbel.BandStack):
                with self.subTest(text=text, call=call.__name__), self.assertRaisesRegex(error, text):
                    call(image)

    def test_more_than_memory(self):
        image = as_strided(zeros(200_000, dtype=np.float32), (90_000, 90_000, 3), (4, 4, 4))  # 24e9 samples
        for call in (orbel.equalize, orbel.BandStack):
            with self.subTest(call=call.__name__), self.assertRaises(MemoryError):
                call(image, edges=False, luminance=False)
        # A result that nothing has been written to counts, too.
        grey, stack = zeros(40, 40), orbel.BandStack(zeros(40, 40))._stack
        settings, there = settings_of(), np.zeros((40, 40), np.float32)
        for call in (lambda n: _engine.equalize(settings, grey, grey, None, 1, False, n),
                     lambda n: stack.weigh(settings, grey, grey, None, 1, False, n),
                     lambda n: stack.band(settings, 0, grey, there, 1, False, n)):
            call(0)
            with self.assertRaisesRegex(MemoryError, '1000000000 MB'):
                call(1e15)
        with mock.patch('orbel._engine.equalize') as run:
            for out in (None, grey):
                orbel.equalize(grey, out=out)
        self.assertEqual([call.args[-1] for call in run.call_args_list], [1600, 0])

    def test_targets(self):
        image = zeros(40, 40)
        read_only = zeros(40, 40)
        read_only.flags.writeable = False
        memory = zeros(80, 40)
        for source, out, error, text in (
            (image, zeros(40, 41), ValueError, r'shape \(40, 41\)'),
            (image, zeros(40, 40, dtype=np.uint16), ValueError, 'uint16'),
            (image, read_only, ValueError, 'read-only'),
            (image, bytearray(1600), TypeError, 'bytearray'),
            (memory[:40], memory[1:41], ValueError, 'overlaps the image'),
            (memory[:40], memory[39::-1], ValueError, 'overlaps the image'),
            (memory[:40], memory[:40].T, ValueError, 'overlaps the image'),
            (image, as_strided(memory, (40, 40), (40, 0)), ValueError, 'same place'),
            (image, as_strided(memory, (40, 40), (20, 1)), ValueError, 'same place'),
        ):
            with self.subTest(text=text), self.assertRaisesRegex(error, text):
                orbel.equalize(source, half=True, out=out)
        self.assertFalse(memory.any() or read_only.any())
        for call in (lambda out: orbel.equalize(image, mask=out, out=out),
                     lambda out: orbel.BandStack(image, mask=out).weigh(100, out=out)):
            with self.assertRaisesRegex(ValueError, 'overlaps the mask'):
                call(memory[:40])
        with self.assertRaisesRegex(ValueError, 'overlaps the image'):
            orbel.BandStack(image).weigh(100, out=image)
        orbel.equalize(memory[::2], half=True, out=memory[1::2])  # interlaced, none in two places
        self.assertTrue(memory[1::2].all() and not memory[::2].any())

    def test_settings(self):
        image = zeros(40, 40)
        for words, error, text in (
            ({'gain': 2000}, ValueError, r'bands\[0\].gain is 2000; allowed'),
            ({'gain': (1, 2)}, ValueError, 'gain: has 2 values'),
            ({'radius': 'x'}, TypeError, 'radius'),
            ({'mix': float('nan')}, ValueError, 'mix is nan'),
            ({'edges': 'no'}, TypeError, 'edges'),
            ({'half': 2}, TypeError, 'half'),
            ({'reference_edge': 10**30}, ValueError, 'reference_edge'),
            ({'overlay': 1.5}, TypeError, 'overlay'),
            ({'form': 'waves'}, ValueError, "'waves' is none of 'pyramid', 'wavelets'"),
            ({'channel_order': 'gbr'}, ValueError, 'channel_order'),
            ({'threads': -1}, ValueError, 'threads'),
            ({'radius': 32767}, ValueError, 'too large'),
            ({'mask': zeros(40, 41)}, ValueError, 'mask'),
            ({'gain': {100, 120, 130, 140, 150}}, TypeError, 'gain'),  # in no order
            ({'gain': dict.fromkeys(range(5), 100)}, TypeError, 'gain'),
            ({'gian': 1}, TypeError, 'gian'),
        ):
            with self.subTest(words=words), self.assertRaisesRegex(error, text):
                orbel.equalize(image, **words)
        with self.assertRaisesRegex(TypeError, "no setting 'gian'"):
            orbel.BandStack(image, gian=1)

    def test_stacks_stay_what_they_are(self):
        image, radius = np.arange(1600, dtype=np.uint16).reshape(40, 40), [3, 3, 3, 3, 3]
        stack = orbel.BandStack(image, radius=radius)
        radius[0] = 9
        np.testing.assert_array_equal(stack.weigh(150), orbel.equalize(image, gain=150))
        for call in (copy.copy, copy.deepcopy, pickle.dumps):
            with self.subTest(call=call.__name__), self.assertRaisesRegex(TypeError, 'BandStack'):
                call(stack)

    def test_resized_meanwhile(self):
        image = np.random.default_rng(1).random((60, 70), np.float32)
        expected, run, refused = orbel.equalize(image, gain=150), _engine.equalize, []

        def refuse(*arguments):
            with self.assertRaisesRegex(ValueError, 'cannot resize'):
                image.resize(1, refcheck=False)
            refused.append(True)
            return run(*arguments)
        with mock.patch('orbel._engine.equalize', refuse):
            np.testing.assert_array_equal(orbel.equalize(image[:, ::-1][:, ::-1], gain=150), expected)
        self.assertTrue(refused)
        stack = orbel.BandStack(image[:, :])
        with self.assertRaisesRegex(ValueError, 'cannot resize'):
            image.resize(1, refcheck=False)
        image.shape = 70, 60
        np.testing.assert_array_equal(stack.weigh(150), expected)


if __name__ == '__main__':
    unittest.main()
