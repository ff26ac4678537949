#include "image/block_driver.h"

#include "image/block_cut.h"

void DoMP(KivImage& in, KivImage& out, void (*fn)(KivImage& in, KivImage& out, void* user), void* user) {
  const BlockCut cut(in.size.height);
  cut.forEachBlock([&](int b) {
    forEachStrip([&](KivImage&& inStrip, KivImage&& outStrip) { fn(inStrip, outStrip, user); }, cut.block(in, b),
                 cut.block(out, b));
  });
}
