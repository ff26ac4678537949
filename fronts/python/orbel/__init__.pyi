from os import PathLike
from typing import Any, Literal

import numpy as np
from numpy.typing import ArrayLike, NDArray

__all__ = ['BandStack', 'bands', 'equalize', 'load', 'preset', 'presets']
__version__: str

_Bands = float | ArrayLike  # one value for all bands, or five, the finest first
_Flags = bool | ArrayLike
_Form = Literal['pyramid', 'wavelets']
_Order = Literal['rgb', 'bgr']

def equalize(
    image: ArrayLike, *, gain: _Bands = 100, radius: _Bands = 3, threshold: _Bands = (255, 10, 10, 10, 10),
    edges: _Flags = (False, True, True, True, True), residual: float = 100, half: bool = False, luminance: bool = True,
    form: _Form = 'pyramid', reference_edge: int = 0, mix: float = 100, limit: bool = False, overlay: int = 0,
    mask: ArrayLike | None = None, channel_order: _Order = 'rgb', threads: int | None = None,
    out: NDArray[Any] | None = None) -> NDArray[Any]: ...

class BandStack:
    def __init__(
        self, image: ArrayLike, *, gain: _Bands = 100, radius: _Bands = 3,
        threshold: _Bands = (255, 10, 10, 10, 10), edges: _Flags = (False, True, True, True, True),
        residual: float = 100, half: bool = False, luminance: bool = True, form: _Form = 'pyramid',
        reference_edge: int = 0, mix: float = 100, limit: bool = False, overlay: int = 0,
        mask: ArrayLike | None = None, channel_order: _Order = 'rgb', threads: int | None = None) -> None: ...
    def weigh(self, gain: _Bands, residual: float = 100, out: NDArray[Any] | None = None) -> NDArray[Any]: ...
    def bands(self) -> NDArray[np.float32]: ...

def bands(
    image: ArrayLike, *, gain: _Bands = 100, radius: _Bands = 3, threshold: _Bands = (255, 10, 10, 10, 10),
    edges: _Flags = (False, True, True, True, True), residual: float = 100, half: bool = False, luminance: bool = True,
    form: _Form = 'pyramid', reference_edge: int = 0, mix: float = 100, limit: bool = False, overlay: int = 0,
    channel_order: _Order = 'rgb', threads: int | None = None) -> NDArray[np.float32]: ...
def load(file: str | PathLike[str]) -> dict[str, Any]: ...
def presets() -> dict[str, str]: ...
def preset(name: str) -> dict[str, Any]: ...
