"""Presets and settings files mean what they mean to the program."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

import orbel


def program(*options):
    return subprocess.run([os.environ['ORBEL'], *options], check=True, capture_output=True, text=True).stdout


class Presets(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.file = self.folder / 'mine.toml'

    def load(self, text):
        self.file.write_text(text)
        return orbel.load(self.file)

    def test_as_the_program(self):
        defaults = self.load(program('apply', '--print-settings'))
        self.assertEqual(len(defaults), 12)
        self.assertGreater(len(orbel.presets()), 6)
        for name in orbel.presets():
            whole = self.load(program('apply', '-p', name, '--print-settings'))
            said = defaults | orbel.preset(name)
            for word in ('gain', 'radius', 'threshold', 'edges'):
                if not isinstance(said[word], tuple):
                    said[word] = (said[word],) * 5
            self.assertEqual(said, whole, name)

    def test_older_words(self):
        self.assertEqual(self.load('contrast = 120\nfactor = 90\ncross = 2\nref-edge = 800\nedge = true'),
                         {'gain': 120, 'residual': 90, 'overlay': 2, 'reference_edge': 800, 'edges': True})
        self.assertEqual(self.load('gain = 90\ncontrast = 120'), {'gain': 90})

    def test_own_presets_hide(self):
        own = self.folder / 'orbel' / 'presets'
        own.mkdir(parents=True)
        (own / 'soft-skin.toml').write_text('description = "Mine."\ngain = 70')
        before = os.environ.get('XDG_CONFIG_HOME')
        os.environ['XDG_CONFIG_HOME'] = str(self.folder)
        try:
            self.assertEqual(orbel.preset('Soft Skin'), {'gain': 70})
            self.assertEqual(orbel.presets()['soft skin'], 'Mine.')
        finally:
            os.environ.pop('XDG_CONFIG_HOME')
            if before is not None:
                os.environ['XDG_CONFIG_HOME'] = before

    def test_refusals(self):
        for text, reason in (
            ('gian = 1', 'no setting "gian"'),
            ('reference_edge = 1', 'no setting'),
            ('gain = "much"', '"gain" takes a number'),
            ('gain = true', 'a number'),
            ('gain = inf', 'a number'),
            ('gain = ' + 400 * '9', 'a number'),
            ('gain = [1, 2]', 'one value or five'),
            ('edges = 1', 'true or false'),
            ('reference-edge = 10.5', 'a whole number'),
            ('form = "waves"', 'pyramid or wavelets'),
            ('gain = 2000', 'allowed is'),
            ('mask = "mask.png"', 'array'),
            ('gain = ', 'Invalid value'),
            ('#' * 20000, 'too large'),
        ):
            with self.subTest(text=text[:30]), self.assertRaisesRegex(ValueError, reason) as caught:
                self.load(text)
            self.assertIn('mine.toml', str(caught.exception))
        with self.assertRaisesRegex(ValueError, "no preset 'clarty'; there are clarity"):
            orbel.preset('clarty')


if __name__ == '__main__':
    unittest.main()
