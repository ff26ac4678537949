"""10,000 calls leave nothing behind. By itself: what other tests gave back would hide a leak."""

import gc
import os
import sys
import unittest

import numpy as np
import orbel


def resident():
    with open('/proc/self/statm', encoding='ascii') as file:
        return int(file.read().split()[1]) * os.sysconf('SC_PAGE_SIZE')


class Memory(unittest.TestCase):
    def test_nothing_stays(self):
        image = np.random.default_rng(3).random((40, 40, 3), np.float32)  # a stack of a smaller one is empty
        out = image.copy()
        bad = image.astype('f8')

        def calls(count):
            for _ in range(count):
                orbel.equalize(image, gain=130, out=out, threads=1)
                orbel.BandStack(image, threads=1).weigh(120)
                for wrong in ({'gain': 2000}, {'out': bad}):
                    try:
                        orbel.equalize(image, **wrong)
                    except ValueError:
                        pass
        calls(100)
        counts, memory = (sys.getrefcount(image), sys.getrefcount(out), len(gc.get_objects())), resident()
        calls(2500)  # of 4
        gc.collect()
        after = (sys.getrefcount(image), sys.getrefcount(out), len(gc.get_objects()))
        self.assertEqual(counts[:2], after[:2])
        self.assertLess(after[2] - counts[2], 100)
        grown = resident() - memory
        print(f'10,000 calls: {after[2] - counts[2]} objects and {grown / 1024:.0f} KiB more')
        self.assertLess(grown, 2500 * 16 * 20)  # far less than one picture or record a call would take


if __name__ == '__main__':
    unittest.main()
