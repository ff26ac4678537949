"""Examples in docstrings run, and types and stubs are what the modules have."""

import ast
import doctest
import importlib.util
import inspect
import os
import subprocess
import sys
import unittest
from pathlib import Path

import orbel
from orbel._settings import settings_of

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

    # stubtest sees that equalize is what the stub says; the others take their settings as **settings.
    def test_settings_are_the_same_in_all_signatures(self):
        expected = {name: repr(p.default) for name, p in inspect.signature(settings_of).parameters.items()
                    if p.kind is p.KEYWORD_ONLY}
        stub = ast.parse(Path(orbel.__file__).with_suffix('.pyi').read_text())
        functions = [node for node in ast.walk(stub) if isinstance(node, ast.FunctionDef)]
        signatures = [f.args for f in functions if f.args.kwonlyargs]
        self.assertEqual(len(signatures), 3)
        for args in signatures:
            said = {arg.arg: ast.unparse(value) for arg, value in zip(args.kwonlyargs, args.kw_defaults)}
            for other in ('mask', 'channel_order', 'threads', 'out'):
                said.pop(other, None)
            self.assertEqual(said, expected)

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
