"""Presets and settings files as keyword arguments: the words of orbel's settings files, and where it keeps presets."""

import math
import os
import tomllib
from pathlib import Path
from typing import Any

from orbel._settings import FORMS, settings_of

_BANDS = {'gain': float, 'radius': float, 'threshold': float, 'edges': bool}
_WHOLE = {'residual': float, 'half': bool, 'luminance': bool, 'overlay': int, 'mix': float, 'reference_edge': int,
          'limit': bool, 'form': str}
_OLDER = {'contrast': 'gain', 'edge': 'edges', 'factor': 'residual', 'cross': 'overlay', 'ref-edge': 'reference_edge',
          'reference-edge': 'reference_edge'}
_WANTED = {float: 'a number', bool: 'true or false', int: 'a whole number', str: 'a text in quotes'}
_LONGEST = 1 << 14  # bytes; a picture that was given by mistake isn't read to its end


def _own_folder() -> Path | None:
    for variable, below in (('XDG_CONFIG_HOME', ''), ('HOME', '.config')):
        folder = os.environ.get(variable, '')
        if os.path.isabs(folder):
            return Path(folder, below, 'orbel', 'presets')
    return None


def _files() -> dict[str, Path]:
    """Presets by name; one's own hide those that ship."""
    found = {}
    for folder in (Path(__file__).with_name('presets'), _own_folder()):
        for file in sorted(folder.glob('*.toml')) if folder else []:
            found[file.stem.replace('-', ' ')] = file
    return dict(sorted(found.items()))


def _value(place: str, value: Any, kind: type) -> Any:
    if kind is float and type(value) is int:
        value = float(value) if abs(value) < 2**63 else math.inf
    if type(value) is not kind or (isinstance(value, float) and not math.isfinite(value)):
        raise ValueError(f'{place} takes {_WANTED[kind]}')
    return value


def _read(file: str | os.PathLike[str]) -> tuple[dict[str, Any], str]:
    """Keyword arguments and the description."""
    with open(file, 'rb') as stream:
        data = stream.read(_LONGEST + 1)
    if len(data) > _LONGEST:
        raise ValueError(f'{os.fspath(file)}: is too large for a file of settings')
    try:
        table = tomllib.loads(data.decode())
    except (tomllib.TOMLDecodeError, UnicodeDecodeError, RecursionError) as error:
        raise ValueError(f'{os.fspath(file)}: {error}') from None

    settings: dict[str, Any] = {}
    description = ''
    for said, value in sorted(table.items()):  # where both words of one setting are said, the newer one counts
        word, place = _OLDER.get(said, said), f'{os.fspath(file)}: "{said}"'
        if said == 'description':
            description = _value(place, value, str)
        elif said == 'mask':
            raise ValueError(f'{place} names a picture, which is not read here: '
                             'leave it out of the file, and give equalize an array as mask')
        elif word in _BANDS and isinstance(value, list):
            if len(value) != 5:
                raise ValueError(f'{place} takes one value or five')
            settings[word] = tuple(_value(place, v, _BANDS[word]) for v in value)
        elif word in _BANDS or (word in _WHOLE and '_' not in said):
            settings[word] = _value(place, value, (_BANDS | _WHOLE)[word])
        else:
            raise ValueError(f'{os.fspath(file)}: there is no setting "{said}"')
    if settings.get('form', FORMS[0]) not in FORMS:
        raise ValueError(f'{os.fspath(file)}: "form" takes {" or ".join(FORMS)}')
    try:
        settings_of(**settings)
    except ValueError as error:
        raise ValueError(f'{os.fspath(file)}: {error}') from None
    return settings, description


def load(file: str | os.PathLike[str]) -> dict[str, Any]:
    """Read a settings file, as `orbel apply -p` takes.

    Parameters
    ----------
    file : path
        A file in TOML, with the words of orbel's command line.

    Returns
    -------
    dict
        Keyword arguments for `equalize`, `bands` and `BandStack`: what the file sets, and nothing else.

    Raises
    ------
    ValueError
        For what is no setting; the message names the file and the word.

    Examples
    --------
    >>> import orbel, pathlib, tempfile
    >>> folder = tempfile.TemporaryDirectory()
    >>> mine = pathlib.Path(folder.name, 'mine.toml')
    >>> _ = mine.write_text('gain = [100, 140, 160, 130, 110]')
    >>> orbel.load(mine)
    {'gain': (100.0, 140.0, 160.0, 130.0, 110.0)}
    >>> folder.cleanup()
    """
    return _read(file)[0]


def presets() -> dict[str, str]:
    """List the presets: those that ship, and one's own in ~/.config/orbel/presets, which hide those that ship.

    Returns
    -------
    dict
        What each is for, by its name.

    Examples
    --------
    >>> import orbel
    >>> 'soft skin' in orbel.presets()
    True
    """
    return {name: _read(file)[1] for name, file in _files().items()}


def preset(name: str) -> dict[str, Any]:
    """Give a preset as keyword arguments.

    Parameters
    ----------
    name : str
        One of `presets`, in letters of any case, with blanks or hyphens.

    Returns
    -------
    dict
        Keyword arguments for `equalize`, `bands` and `BandStack`.

    Raises
    ------
    ValueError
        Where there is none of that name.

    Examples
    --------
    >>> import orbel
    >>> orbel.preset('clarity')['form']
    'wavelets'
    >>> orbel.preset('Clarity') == orbel.preset('clarity')
    True
    """
    files = _files()
    wanted = str(name).lower().replace('-', ' ')
    for known, file in files.items():
        if known.lower() == wanted:
            return load(file)
    raise ValueError(f'there is no preset {name!r}; there are {", ".join(files) or "none"}')
