"""What has to hold for arrays before the engine walks over their memory."""

import weakref
from typing import Any

import numpy as np

Array = np.ndarray[Any, Any]


def picture(name: str, value: Any) -> Array:
    """A view of our own, so that nobody gives it another shape; of what is no array, an array of its samples."""
    return np.asarray(value).view(np.ndarray)


def pinned(*arrays: Array | None) -> list[Any]:
    """While these are held, numpy refuses to resize the arrays' memory, even where it is told not to look."""
    pins = []
    for array in arrays:
        owner: Any = array
        while isinstance(owner, np.ndarray):
            pins.append(weakref.ref(owner))
            owner = owner.base
    return pins


def _overlap(one: Array, other: Array) -> bool:
    try:
        return np.shares_memory(one, other, max_work=100_000)
    except RuntimeError:  # too hard to say: then it is no array that anybody needs
        return True


def _lies_as(one: Array, other: Array) -> bool:
    place = [a.__array_interface__['data'][0] for a in (one, other)]
    return place[0] == place[1] and one.strides == other.strides


def _overlaps_itself(array: Array) -> bool:
    reach = array.itemsize
    for step, size in sorted((abs(step), size) for step, size in zip(array.strides, array.shape) if size > 1):
        if step < reach:
            return True
        reach += step * (size - 1)
    return False


def target(image: Array, out: Any, mask: Array | None, *, may_be_image: bool) -> Array:
    """The array for the result: a new one for None, else out, if it can take it."""
    if out is None:
        return np.empty(image.shape, image.dtype)
    if not isinstance(out, np.ndarray):
        raise TypeError(f'out: is {type(out).__name__}, and no numpy array')
    array = out.view(np.ndarray)
    if array.shape != image.shape or array.dtype != image.dtype:
        raise ValueError(f'out: is {array.dtype} of shape {array.shape}; '
                         f'the image is {image.dtype} of shape {image.shape}')
    if not array.flags.writeable:
        raise ValueError('out: is read-only')
    if _overlaps_itself(array):
        raise ValueError('out: some of its samples are in the same place')
    if not (may_be_image and _lies_as(image, array)) and _overlap(image, array):
        raise ValueError('out: overlaps the image, and is not the image' if may_be_image else 'out: overlaps the image')
    if mask is not None and _overlap(mask, array):
        raise ValueError('out: overlaps the mask')
    return array
