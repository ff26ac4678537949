"""The Orbel Band Equalizer for numpy: five bands of detail of a picture and a residual, weighed and put together again.

>>> import numpy as np, orbel
>>> image = np.zeros((64, 64, 3), np.uint8)
>>> orbel.equalize(image, **orbel.preset('clarity')).shape
(64, 64, 3)
"""

from orbel._engine import version as _version
from orbel._equalizer import BandStack, bands, equalize
from orbel._presets import load, preset, presets

__all__ = ['BandStack', 'bands', 'equalize', 'load', 'preset', 'presets']
__version__ = _version()
