"""GIMP, driven by keys, does with a picture what orbel does with its file: at three depths, in a selection, with undo,
and when it is left in the middle of a run.

gimp_test.py ORBEL GEGL_PATH EXAMPLES"""

import subprocess
import sys
import time
from pathlib import Path

import numpy as np
from tifffile import imread

from gimp_session import DIALOG, PICTURE, Gimp, until

ORBEL, GEGL_PATH, EXAMPLES = sys.argv[1:]


def orbel(source, result, *options):
    subprocess.run([ORBEL, 'apply', source, '-o', result, '-f', '-q', *options], check=True)
    return result


def equalized(file, depth, preset):
    """What orbel gives in floats, stored in a picture's depth as GEGL does it: in single precision, the halves up."""
    result = imread(orbel(file, file.with_name('expected.tif'), '-p', preset.replace(' ', '-'), '--depth', 'float',
                          '--compression', 'none'))
    if depth == 'float':
        return result
    kind = {'u8': 'u1', 'u16': 'u2'}[depth]
    return np.floor(np.clip(result, 0, 1) * np.float32(np.iinfo(kind).max) + np.float32(0.5)).astype(kind)


def same(result, expected, what):
    assert result.shape == expected.shape and result.dtype == expected.dtype, f'{what}: {result.dtype} {result.shape}'
    different = np.count_nonzero(result != expected)
    assert not different, f'{what}: {different} of {result.size} samples differ'


class Session:
    def __init__(self, gimp):
        self.gimp = gimp
        self.folder = gimp.folder
        self.saved = self.folder / 'saved.tif'

    def pixels(self, image):
        self.gimp.save(image, self.saved)
        return imread(self.saved)

    def depths(self):
        """Apply and undo, twice, in each depth."""
        for depth, precision in (('u8', 150), ('u16', 250), ('float', 650)):
            file = orbel(f'{EXAMPLES}/chelsea.png', self.folder / f'{depth}.tif', '-p', 'crisp', '--depth', depth,
                         '--compression', 'none')
            image = self.gimp.open(file)
            assert self.gimp.script(f'(car (gimp-image-get-precision {image}))') == str(precision), depth
            original = self.pixels(image)
            same(original, imread(file), f'{depth}, opened')
            for preset in ('clarity', 'soft skin'):
                self.gimp.apply(preset)
                same(self.pixels(image), equalized(file, depth, preset), f'{depth}, {preset}')
                self.gimp.keys(PICTURE, 'ctrl+z')
                until('undo', lambda: np.array_equal(self.pixels(image), original))

    def selection(self):
        """GIMP hands over what is selected as a picture by itself."""
        image = self.gimp.open(Path(EXAMPLES) / 'chelsea.png')
        original = self.pixels(image)
        self.gimp.script(f'(gimp-image-select-rectangle {image} CHANNEL-OP-REPLACE 101 57 200 150)')
        self.gimp.apply('landscape')
        result = self.pixels(image)
        part = np.s_[57:207, 101:301]
        cut = self.folder / 'cut.ppm'
        cut.write_bytes(b'P6 200 150 255\n' + original[part].tobytes())
        # Blended by the selection in floats, which moves what is next to a half.
        off = np.abs(result[part] - equalized(cut, 'float', 'landscape').clip(0, 1) * 255.0).max()
        assert off < 0.5001, f'in the selection a sample is off by {off}'
        result[part] = original[part]
        same(result, original, 'outside of the selection')

    def cancelled(self):
        image = self.gimp.open(Path(EXAMPLES) / 'chelsea.png')
        before = self.pixels(image)
        self.gimp.choose('clarity')
        self.gimp.keys(DIALOG, 'Escape')
        until('the dialog to go', lambda: not self.gimp.window(DIALOG))
        same(self.pixels(image), before, 'cancelled')

    def left_during_a_run(self):
        large = self.folder / 'large.ppm'
        with large.open('wb') as file:
            file.write(b'P6 6000 4000 255\n')
            file.write(np.random.default_rng(1).integers(0, 256, 6000 * 4000 * 3, 'u1').tobytes())
        self.gimp.open(large)
        self.gimp.script('(for-each gimp-image-clean-all (vector->list (cadr (gimp-image-list))))')  # it would ask
        self.gimp.choose('landscape')
        self.gimp.keys(PICTURE, 'ctrl+q')
        status = self.gimp.process.wait(60)
        assert status == 0, f'GIMP, left during a run, ended with {status}'


with Gimp(ORBEL, GEGL_PATH) as running:
    session = Session(running)
    for step in (session.depths, session.selection, session.cancelled, session.left_during_a_run):
        begun = time.monotonic()
        step()
        print(f'{step.__name__}: {time.monotonic() - begun:.1f} s', flush=True)
