"""From keyword arguments to the engine's settings."""

import collections.abc
import operator
from typing import Any

from orbel import _engine

FORMS = ('pyramid', 'wavelets')
CHANNEL_ORDERS = ('rgb', 'bgr')


def _number(name: str, value: Any) -> float:
    if isinstance(value, (str, bytes)):
        raise TypeError(f'{name}: {value!r} is no number')
    try:
        return float(value)
    except (TypeError, ValueError, OverflowError):
        raise TypeError(f'{name}: {value!r} is no number') from None


def _flag(name: str, value: Any) -> bool:
    try:
        if value in (0, 1):  # numpy's truths, too
            return bool(value)
    except ValueError:  # an array
        pass
    raise TypeError(f'{name}: {value!r} is neither True nor False')


def _is_row(value: Any) -> bool:
    """Several values in an order: lists, arrays and their like."""
    return (hasattr(value, '__getitem__') and getattr(value, 'ndim', 1) > 0
            and not isinstance(value, (str, bytes, collections.abc.Mapping)))


def _five(name: str, value: Any, one: Any) -> list[Any]:
    if not _is_row(value):
        return [one(name, value)] * 5
    values = [one(name, v) for v in value]
    if len(values) != 5:
        raise ValueError(f'{name}: has {len(values)} values; it takes one, or five, the finest band first')
    return values


def whole(name: str, value: Any) -> int:
    """A whole number of 32 bits; beyond them the nearest, which the engine refuses."""
    try:
        number = operator.index(value)
    except TypeError:
        raise TypeError(f'{name}: {value!r} is no whole number') from None
    return max(-2**31, min(number, 2**31 - 1))


def word(name: str, value: Any, words: tuple[str, ...]) -> int:
    """The number of the word among those that are known."""
    if not isinstance(value, str) or value not in words:
        raise ValueError(f'{name}: {value!r} is none of {", ".join(map(repr, words))}')
    return words.index(value)


def settings_of(*, gain: Any = 100, radius: Any = 3, threshold: Any = (255, 10, 10, 10, 10),
                edges: Any = (False, True, True, True, True), residual: Any = 100, half: Any = False,
                luminance: Any = True, form: Any = 'pyramid', reference_edge: Any = 0, mix: Any = 100,
                limit: Any = False, overlay: Any = 0, **others: Any) -> _engine.Settings:
    """The engine's settings. ValueError and TypeError name the argument that is at fault."""
    if others:
        raise TypeError(f'there is no setting {next(iter(others))!r}')
    return _engine.Settings(
        gain=_five('gain', gain, _number), radius=_five('radius', radius, _number),
        threshold=_five('threshold', threshold, _number), edges=_five('edges', edges, _flag),
        residual=_number('residual', residual), half=_flag('half', half), luminance=_flag('luminance', luminance),
        form=word('form', form, FORMS), reference_edge=whole('reference_edge', reference_edge),
        mix=_number('mix', mix), limit=_flag('limit', limit), overlay=whole('overlay', overlay))
