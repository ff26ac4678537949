"""What people call: pictures equalized, their bands, and pictures taken apart once and weighed often."""

import copy
from typing import Any, NoReturn

import numpy as np
from numpy.typing import ArrayLike, NDArray

from orbel import _arrays, _engine
from orbel._settings import CHANNEL_ORDERS, settings_of, whole, word

Samples = NDArray[Any]
Bands = float | ArrayLike  # one value for all bands, or five, the finest first


def _threads(threads: int | None) -> int:
    return 0 if threads is None else whole('threads', threads)


def _new_bytes(result: Samples, out: Samples | None) -> int:
    """Of memory that the system has promised and has still to give."""
    return result.nbytes if out is None else 0


def equalize(image: ArrayLike, *, gain: Bands = 100, radius: Bands = 3, threshold: Bands = (255, 10, 10, 10, 10),
             edges: bool | ArrayLike = (False, True, True, True, True), residual: float = 100, half: bool = False,
             luminance: bool = True, form: str = 'pyramid', reference_edge: int = 0, mix: float = 100,
             limit: bool = False, overlay: int = 0, mask: ArrayLike | None = None, channel_order: str = 'rgb',
             threads: int | None = None, out: Samples | None = None) -> Samples:
    """Weigh five bands of detail and the residual of a picture.

    Parameters
    ----------
    image : array of shape (H, W), (H, W, 3) or (H, W, 4)
        Grey, colour, or colour and alpha, which is kept. uint8 (white is 255), uint16 (white is 65535) or float32
        (white is 1; nothing is clipped). It is read where it lies, whatever its strides.
    gain : float or five of them, -1000 to 1000
        Of each band, in percent, the finest band first: 0 removes it, 100 leaves it, 200 doubles it.
    radius : float or five of them, 0 to 32767
        Reach of each band's low-pass in pixels, which are twice as large from band to band. 0: no low-pass.
    threshold : float or five of them, 0 to 255
        How far samples may differ, on a scale of 0 to 255, and still be smoothed together, in bands with edges.
    edges : bool or five of them
        Keep strong edges out of the band.
    residual : float, -1000 to 1000
        Gain of what is left under the coarsest band, in percent.
    half : bool
        Add middle grey at the end, to see detail alone around it.
    luminance : bool
        Work on luminance and keep the colours; else on each colour by itself.
    form : {'pyramid', 'wavelets'}
        How the picture is taken apart: with wavelets bands can be raised two and three times without halos.
    reference_edge : int, 0 to 32767
        The longer side, in pixels, of the picture that the radii are meant for: the look is then the same at every
        size. 0: radii are in pixels of this picture.
    mix : float, 0 to 100
        How much of the result is blended into the original, in percent.
    limit : bool
        Hold a pixel's change back where it would drive a colour beyond black or white.
    overlay : int, 0 to 32767
        Width in pixels of a cross that is drawn over the result, 0 for none.
    mask : array of shape (H, W), optional
        White where the result shows in full, black where the original stays; of any of the three dtypes.
    channel_order : {'rgb', 'bgr'}
        'bgr' for pictures from OpenCV. Alpha is the last channel in both.
    threads : int, optional
        As many as there are processors, unless it is given. The result doesn't depend on it.
    out : array of the image's shape and dtype, optional
        Where the result goes. It may be the image; else it must not overlap it.

    Returns
    -------
    array of the image's shape and dtype
        `out`, if it was given.

    Raises
    ------
    TypeError
        For a dtype other than the three; the message names the way out.
    ValueError
        For shapes, settings and targets that there can't be, and windows that have no room beside the picture.
    MemoryError
        Where the run would take more than there is.

    Notes
    -----
    Other Python threads run meanwhile, and may make calls of their own. An exception from a signal's handler, as from
    Ctrl-C, ends the run, and `out` is then as it was, unless its samples were already being written.

    Examples
    --------
    >>> import numpy as np, orbel
    >>> spot = np.zeros((64, 64), np.uint8)
    >>> spot[32, 32] = 100
    >>> int(orbel.equalize(spot, gain=[200, 100, 100, 100, 100])[32, 32])
    198
    """
    settings = settings_of(gain=gain, radius=radius, threshold=threshold, edges=edges, residual=residual, half=half,
                           luminance=luminance, form=form, reference_edge=reference_edge, mix=mix, limit=limit,
                           overlay=overlay)
    order = word('channel_order', channel_order, CHANNEL_ORDERS)
    source = _arrays.picture('image', image)
    mask_array = None if mask is None else _arrays.picture('mask', mask)
    result = _arrays.target(source, out, mask_array, may_be_image=True)
    pins = _arrays.pinned(source, result, mask_array)
    _engine.equalize(settings, source, result, mask_array, _threads(threads), order == 1, _new_bytes(result, out))
    del pins
    return result if out is None else out


class BandStack:
    """A picture taken apart once, to be put together for many gains.

    It can't be copied or pickled: another process takes the picture apart for itself.

    Parameters
    ----------
    image : array
        As in `equalize`. It is kept, not copied: its samples must stay as they are while the stack is used.
    mask, channel_order, threads
        As in `equalize`.
    **settings
        The settings of `equalize`. gain and residual may be there, as in presets, and have no part: `weigh` has its
        own.

    Examples
    --------
    >>> import numpy as np, orbel
    >>> image = np.random.default_rng(1).random((64, 64, 3), np.float32)
    >>> stack = orbel.BandStack(image, radius=2)
    >>> strong = stack.weigh([200, 150, 100, 100, 100])
    >>> np.array_equal(strong, orbel.equalize(image, radius=2, gain=[200, 150, 100, 100, 100]))
    True
    """

    def __init__(self, image: ArrayLike, *, mask: ArrayLike | None = None, channel_order: str = 'rgb',
                 threads: int | None = None, **settings: Any) -> None:
        self._settings = copy.deepcopy(settings)  # a list may be given other values
        self._is_bgr = word('channel_order', channel_order, CHANNEL_ORDERS) == 1
        self._threads = _threads(threads)
        self._image = _arrays.picture('image', image)
        self._mask = None if mask is None else _arrays.picture('mask', mask)
        self._pins = _arrays.pinned(self._image, self._mask)
        self._stack = _engine.Stack(settings_of(**settings), self._image, self._threads, self._is_bgr)

    def weigh(self, gain: Bands, residual: float = 100, out: Samples | None = None) -> Samples:
        """Put the picture together.

        Parameters
        ----------
        gain : float or five of them, -1000 to 1000
            Of each band, in percent, the finest band first.
        residual : float, -1000 to 1000
            Gain of what is left under the coarsest band, in percent.
        out : array of the image's shape and dtype, optional
            Where the result goes. It must not overlap the image, of which the stack makes the next results.

        Returns
        -------
        array of the image's shape and dtype
            What `equalize` gives, to the last bit. `out`, if it was given.
        """
        settings = settings_of(**{**self._settings, 'gain': gain, 'residual': residual})
        result = _arrays.target(self._image, out, self._mask, may_be_image=False)
        pins = _arrays.pinned(result)
        self._stack.weigh(settings, self._image, result, self._mask, self._threads, self._is_bgr,
                          _new_bytes(result, out))
        del pins
        return result if out is None else out

    def bands(self) -> NDArray[np.float32]:
        """Give the five bands, the finest first, and the residual, at gains of 100.

        Returns
        -------
        float32 array of shape (6, H, W) or (6, H, W, 3)
            Of luminance, or of a grey picture, without a last axis; else of each colour. Bands lie around 0. Their
            sum is the picture, or its luminance, up to rounding; not in a pyramid at the picture's own size where a
            side has 32 samples or fewer.
        """
        is_one = self._image.ndim == 2 or self._settings.get('luminance', True)
        shape = self._image.shape[:2] + (() if is_one else (3,))
        result = np.empty((6, *shape), np.float32)
        settings = settings_of(**self._settings)
        for number, band in enumerate(result):
            self._stack.band(settings, number, self._image, band, self._threads, self._is_bgr, result[number:].nbytes)
        return result

    def __reduce__(self) -> NoReturn:
        raise TypeError("a BandStack can't be copied or pickled: hand the picture on, and take it apart there")


def bands(image: ArrayLike, *, channel_order: str = 'rgb', threads: int | None = None,
          **settings: Any) -> NDArray[np.float32]:
    """Take a picture apart into its five bands of detail and the residual.

    Parameters
    ----------
    image : array
        As in `equalize`, and so are channel_order and threads.
    **settings
        The settings of `equalize`. Gains and residual have no part.

    Returns
    -------
    float32 array of shape (6, H, W) or (6, H, W, 3)
        As from `BandStack.bands`.

    Examples
    --------
    >>> import numpy as np, orbel
    >>> grey = np.random.default_rng(1).random((64, 48), np.float32)
    >>> *bands, residual = orbel.bands(grey)
    >>> len(bands), residual.shape
    (5, (64, 48))
    >>> bool(np.allclose(sum(bands) + residual, grey, atol=1e-6))
    True
    """
    return BandStack(image, channel_order=channel_order, threads=threads, **settings).bands()
