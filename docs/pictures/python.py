"""Runs the Python of docs/python.md as one program, in a folder with the pictures of examples/, prints the table of its
comparison, and puts its pictures here. Takes the package of build/release, and needs python3-matplotlib, python3-skimage
and python3-opencv: /usr/bin/python3 docs/pictures/python.py"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[1]

blocks = re.findall(r'^```python\n(.*?)^```', (HERE.parent / 'python.md').read_text(), re.DOTALL | re.MULTILINE)
with tempfile.TemporaryDirectory() as work:
    for picture in (ROOT / 'examples').glob('*.png'):
        shutil.copy(picture, work)
    Path(work, 'page.py').write_text('\n'.join(blocks))
    environment = os.environ | {'PYTHONPATH': str(ROOT / 'build' / 'release' / 'python')}
    subprocess.run([sys.executable, 'page.py'], cwd=work, env=environment, check=True)
    for picture in Path(work).glob('python-*.jpg'):
        shutil.copy(picture, HERE)
    print(sorted(p.name for p in Path(work).iterdir()))
