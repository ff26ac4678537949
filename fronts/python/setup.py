"""Builds the package with CMake, which also says its version: pip install --no-build-isolation fronts/python."""

import re
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = Path(__file__).resolve().parents[2]
BUILD = ROOT / 'build' / 'python-package'
BUILD.mkdir(parents=True, exist_ok=True)


class CMakeBuild(build_ext):
    """Has CMake install the module, and the presets beside it, where setuptools gathers the package."""

    def run(self) -> None:
        folder = BUILD / f'cmake-{sys.implementation.cache_tag}'
        target = Path(self.get_ext_fullpath('orbel._engine')).resolve().parent
        for command in (
            ['cmake', '-S', ROOT, '-B', folder, '-G', 'Ninja', '-DCMAKE_BUILD_TYPE=Release', '-DORBEL_PYTHON_ALONE=ON',
             f'-DPython3_EXECUTABLE={sys.executable}', f'-DORBEL_PYTHON_DESTINATION={target}'],
            ['cmake', '--build', folder, '--target', 'orbel_python'],
            ['cmake', '--install', folder, '--component', 'python', '--strip'],
        ):
            subprocess.run(command, check=True)


version = re.search(r'project\(\w+ VERSION ([\d.]+)', (ROOT / 'CMakeLists.txt').read_text())
setup(
    version=version[1],
    packages=['orbel'],
    package_data={'orbel': ['py.typed', '*.pyi']},
    ext_modules=[Extension('orbel._engine', sources=[])],
    cmdclass={'build_ext': CMakeBuild},
)
