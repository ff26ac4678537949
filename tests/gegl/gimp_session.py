"""GIMP under a display of its own, with a folder of settings of its own: what a test asks and knows goes through GIMP's
Script-Fu server, what people do by keys and windows. It needs gimp, Xvfb, xdotool, and openbox, without which keys go
to the wrong window."""

import os
import re
import shutil
import signal
import socket
import struct
import subprocess
import tempfile
import time
from pathlib import Path

PICTURE = ' – GIMP$'
DIALOG = '^GEGL Operation$'


def until(what, condition, seconds=40):
    """The condition's first true value. Raises TimeoutError, which names what was waited for."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(0.05)
    raise TimeoutError(f'{what}: not within {seconds} s')


class Gimp:
    """With the presets that this orbel ships. To be used in a `with` statement."""

    def __init__(self, orbel, gegl_path):
        self.folder = Path(tempfile.mkdtemp(prefix='orbel-gimp-'))
        settings = self.folder / '.config/GIMP/2.10'
        self.presets_file = settings / 'filters/GimpGegl-orbel-band-equalizer-config.settings'
        self.environment = {**os.environ, 'HOME': str(self.folder), 'GEGL_PATH': gegl_path, 'LC_ALL': 'C.UTF-8'}
        for word in ('XDG_CONFIG_HOME', 'XDG_CACHE_HOME', 'XDG_DATA_HOME', 'DBUS_SESSION_BUS_ADDRESS',
                     'WAYLAND_DISPLAY'):
            self.environment.pop(word, None)
        subprocess.run([orbel, 'gimp'], env=self.environment, check=True, stdout=subprocess.DEVNULL)
        (settings / 'menurc').write_text('(gtk_accel_path "<Actions>/tools/tools-gegl" "<Primary><Alt>g")\n')
        with socket.socket() as free:
            free.bind(('127.0.0.1', 0))
            self.port = free.getsockname()[1]
        self.log = (self.folder / 'gimp.log').open('w')
        self.programs = []

    def __enter__(self):
        try:
            display, told = os.pipe()
            self._start(['Xvfb', '-displayfd', str(told), '-screen', '0', '1280x900x24', '-nolisten', 'tcp'], told)
            os.close(told)
            with os.fdopen(display) as line:
                self.environment['DISPLAY'] = ':' + line.readline().strip()
            self._start(['openbox', '--sm-disable'])
            server = f'(plug-in-script-fu-server RUN-NONINTERACTIVE "127.0.0.1" {self.port} "")'
            self.process = self._start(['gimp', '-n', '-s', '-d', '-f', '-b', server])
            until('GIMP', self._listens, 120)
            until("GIMP's window", lambda: self.window('GIMP|GNU Image'))
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for program in reversed(self.programs):
            try:
                os.killpg(program.pid, signal.SIGKILL)  # its Script-Fu server outlives GIMP
            except ProcessLookupError:
                pass
            program.wait()
        self.log.close()
        shutil.rmtree(self.folder, ignore_errors=True)

    def _start(self, words, *descriptors):
        self.programs.append(subprocess.Popen(words, env=self.environment, stdin=subprocess.DEVNULL, stdout=self.log,
                                              stderr=self.log, pass_fds=descriptors, cwd=self.folder,
                                              start_new_session=True))
        return self.programs[-1]

    def _listens(self):
        if self.process.poll() is not None:
            raise ChildProcessError('GIMP did not start:\n' + (self.folder / 'gimp.log').read_text())
        try:
            return self.script('1') == '1'
        except ConnectionError:
            return False

    def script(self, text):
        """What GIMP answers to a line of Script-Fu."""
        with socket.create_connection(('127.0.0.1', self.port), timeout=120) as server:
            stream = server.makefile('rwb')
            stream.write(b'G' + struct.pack('>H', len(text)) + text.encode())
            stream.flush()
            _, failed, length = struct.unpack('>BBH', stream.read(4))
            answer = stream.read(length).decode()
        if failed:
            raise RuntimeError(f'{text}: {answer}')
        return answer.strip('()')

    def open(self, file):
        """The number of the picture, which is shown."""
        file = file.resolve()
        image = self.script(f'(car (gimp-file-load RUN-NONINTERACTIVE "{file}" "{file}"))')
        self.script(f'(begin (gimp-display-new {image}) (gimp-image-clean-all {image}))')
        until(file.name, lambda: self.window(rf'[-]{image}\.0 \('))
        return image

    def save(self, image, file):
        """As a TIFF file without compression, in the picture's depth."""
        self.script(f'(file-tiff-save RUN-NONINTERACTIVE {image} (car (gimp-image-get-active-drawable {image})) '
                    f'"{file}" "{file}" 0)')

    def xdotool(self, *words):
        return subprocess.run(['xdotool', *map(str, words)], env=self.environment, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, text=True, check=False).stdout.split()

    def window(self, name):
        """The last window that is seen and has such a name, or None."""
        return next(reversed(self.xdotool('search', '--onlyvisible', '--name', name)), None)

    def keys(self, name, *keys):
        """Keys as a person presses them, with the window of that name in front."""
        def in_front():
            window = self.window(name)
            if window:
                self.xdotool('windowactivate', window)
            return window and self.xdotool('getactivewindow') == [window]
        until(f'{name} in front', in_front)
        self.xdotool('key', '--delay', 30, *keys)

    def _height(self):
        """Of the dialog, in pixels; 0 where there is none."""
        words = self.xdotool('search', '--onlyvisible', '--name', DIALOG, 'getwindowgeometry', '--shell')
        return next((int(word[7:]) for word in words if word.startswith('HEIGHT=')), 0)

    def choose(self, preset):
        """Opens the dialog of GEGL's operations, and chooses the equalizer and one of its presets there."""
        self.keys(PICTURE, 'ctrl+alt+g')
        # By titles it is the second, after Absolute, which has nothing to set.
        self.keys(DIALOG, 'Home')
        until('a small dialog', lambda: 0 < self._height() < 450)
        self.keys(DIALOG, 'Down')
        until("the equalizer's dialog", lambda: self._height() > 450)
        time.sleep(0.5)  # Tab goes by where things lie, and they are still being laid out
        names = sorted(re.findall(r'^\(GimpGegl-orbel-band-equalizer-config "([^"\d]+)"', self.presets_file.read_text(),
                                  re.MULTILINE))
        # From below: on top there are the settings that were used before.
        self.keys(DIALOG, 'Tab', 'End', *['Up'] * (len(names) - 1 - names.index(preset)))

    def apply(self, preset):
        """Applies a preset to the picture in front, and returns what GIMP wrote down about it once it was done."""
        def changed():
            text = self.presets_file.read_text()
            return text != before and text
        self.choose(preset)
        before = self.presets_file.read_text()
        self.keys(DIALOG, 'alt+o')
        return until('the settings that were used last', changed)
