"""gimp.py [BUILD]: takes gimp.jpg and gimp-details.jpg anew: GIMP's dialog of the equalizer with a preset, in a split
view, and with its details. For it: apt-get install gimp xvfb openbox xdotool imagemagick"""

import subprocess
import sys
import time
from pathlib import Path

here = Path(__file__).resolve().parent
root = here.parent.parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(root / 'tests/gegl'))
from gimp_session import DIALOG, PICTURE, Gimp  # noqa: E402

build = Path(sys.argv[1] if len(sys.argv) > 1 else root / 'build/release')
folder = subprocess.run(['pkg-config', '--variable=pluginsdir', 'gegl-0.4'], stdout=subprocess.PIPE, text=True,
                        check=True).stdout.strip()

with Gimp(build / 'orbel', f'{build}/gegl:{folder}') as gimp:
    def take(window, name):
        time.sleep(2)  # the preview is drawn piece by piece
        subprocess.run(['import', '-window', window, '-quality', '88', here / name], env=gimp.environment, check=True)

    gimp.open(root / 'examples/raccoon.png')
    gimp.xdotool('windowmove', gimp.window(PICTURE), 0, 20)
    gimp.choose('landscape')
    dialog = gimp.window(DIALOG)
    gimp.xdotool('windowmove', dialog, 890, 20)
    gimp.keys(DIALOG, 'alt+v')
    take('root', 'gimp.jpg')
    gimp.keys(DIALOG, *['shift+Tab'] * 3, 'space')
    take(dialog, 'gimp-details.jpg')
