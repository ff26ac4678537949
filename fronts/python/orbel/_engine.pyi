from collections.abc import Sequence
from typing import Any

from numpy.typing import NDArray

def version() -> str: ...

class Settings:
    def __init__(self, *, gain: Sequence[float], radius: Sequence[float], threshold: Sequence[float],
                 edges: Sequence[bool], residual: float, mix: float, half: bool, luminance: bool, overlay: int,
                 reference_edge: int, form: int, limit: bool) -> None: ...

def equalize(settings: Settings, image: NDArray[Any], out: NDArray[Any], mask: NDArray[Any] | None, threads: int,
             is_bgr: bool, new_bytes: float) -> None: ...

class Stack:
    def __init__(self, settings: Settings, image: NDArray[Any], threads: int, is_bgr: bool) -> None: ...
    def weigh(self, settings: Settings, image: NDArray[Any], out: NDArray[Any], mask: NDArray[Any] | None,
              threads: int, is_bgr: bool, new_bytes: float) -> None: ...
    def band(self, settings: Settings, number: int, image: NDArray[Any], out: NDArray[Any], threads: int,
             is_bgr: bool, new_bytes: float) -> None: ...
