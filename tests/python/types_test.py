"""Examples in docstrings run, and types and stubs are what the modules have."""

import doctest
import importlib.util
import os
import subprocess
import sys
import unittest

import orbel

# The binding's classes have a metaclass of its own, which nobody can import.
ALLOWED = os.path.join(os.path.dirname(os.path.abspath(__file__)), 'stubs_allowed.txt')


class Texts(unittest.TestCase):
    def test_examples(self):
        for name in ('orbel', 'orbel._equalizer', 'orbel._presets'):
            result = doctest.testmod(sys.modules[name])
            self.assertGreater(result.attempted, 0, name)
            self.assertEqual(result.failed, 0, name)
        for name in orbel.__all__:
            self.assertIn('>>> ', getattr(orbel, name).__doc__, name)

    @unittest.skipUnless(importlib.util.find_spec('mypy'), 'mypy is not there')
    def test_types(self):
        folder = os.path.dirname(os.path.dirname(orbel.__file__))
        environment = os.environ | {'MYPYPATH': folder}
        for command in (['mypy', '--strict', '-p', 'orbel'], ['mypy.stubtest', 'orbel', '--allowlist', ALLOWED]):
            done = subprocess.run([sys.executable, '-m', *command], cwd=folder, env=environment, text=True,
                                  capture_output=True)
            self.assertEqual(done.returncode, 0, done.stdout + done.stderr)


if __name__ == '__main__':
    unittest.main()
