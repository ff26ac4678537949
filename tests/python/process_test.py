"""Threads, forks, signals and the end: the package as a good citizen of the interpreter's process."""

import concurrent.futures
import multiprocessing
import os
import signal
import subprocess
import sys
import threading
import time
import unittest

import numpy as np
import orbel

# The interpreter's last steps take long enough for the run to ask for the lock that is never given again.
AT_THE_END = '''
import threading, time
import numpy as np
import orbel

class Slow:
    def __del__(self, sleep=time.sleep):
        sleep(0.5)

def work():
    while True:
        orbel.equalize(image)

slow, image = Slow(), np.zeros((500, 500), np.float32)
threading.Thread(target=work, daemon=True).start()
time.sleep(0.1)
'''
IMAGE = np.random.default_rng(3).random((600, 800, 3), np.float32)


def checksum(gain):
    return float(orbel.equalize(IMAGE, gain=gain).sum(dtype=np.float64))


class Process(unittest.TestCase):
    def test_threads_at_once(self):
        gains = (50, 120, 150, 200) * 3
        expected = [checksum(gain) for gain in gains]
        with concurrent.futures.ThreadPoolExecutor(6) as pool:
            self.assertEqual(list(pool.map(checksum, gains)), expected)

    def test_children_after_a_run(self):
        expected = [checksum(gain) for gain in (80, 140)]
        with multiprocessing.get_context('fork').Pool(2) as pool:
            self.assertEqual(pool.map_async(checksum, (80, 140)).get(timeout=60), expected)

    def test_others_run_meanwhile(self):
        counted, over = [0], threading.Event()

        def count():
            while not over.is_set():
                counted[0] += 1
                time.sleep(0.001)
        counter = threading.Thread(target=count)
        image = np.tile(IMAGE, (4, 4, 1))
        counter.start()
        before, start = counted[0], time.monotonic()
        orbel.equalize(image)
        ticks, seconds = counted[0] - before, time.monotonic() - start
        over.set()
        counter.join()
        self.assertGreater(ticks, 20 * seconds)  # of up to 1000 a second; holding the lock: none

    def test_interrupted(self):
        image = np.tile(IMAGE, (3, 3, 1))
        out = np.full_like(image, 7)
        timer = threading.Timer(0.2, os.kill, (os.getpid(), signal.SIGINT))
        start = time.monotonic()
        with self.assertRaises(KeyboardInterrupt):
            timer.start()
            try:
                orbel.equalize(image, radius=40, out=out)  # takes 10 seconds, most of them for the finest band
            finally:
                timer.join()
        self.assertLess(time.monotonic() - start, 4)
        self.assertTrue((out == 7).all())

    def test_an_end_with_a_run_in_a_daemon(self):
        done = subprocess.run([sys.executable, '-c', AT_THE_END], capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stderr), (0, ''))


if __name__ == '__main__':
    unittest.main()
