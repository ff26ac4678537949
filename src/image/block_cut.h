// The cut of an image into blocks, and of a block into strips, that block_driver.h describes: for work that takes more
// than the two images of DoMP.
#pragma once

#include "image/kiv_image.h"
#include "image/parallel.h"

struct BlockCut {
  static constexpr int mostBlocks = 4;
  static constexpr int stripRows = 10;  // of the highest strip

  int blocks;
  int rows;  // of every block but the last

  explicit BlockCut(int height);

  KivImage block(const KivImage& image, int index) const;

  // work(block index) for each block, in parallel.
  template <typename Work>
  void forEachBlock(Work work) const {
    eachShare(blocks, blocks, [&](int block, int, int) { work(block); });
  }
};

// The strips of a block: how many, and one of them.
int stripsOf(const KivImage& block);
KivImage stripOf(const KivImage& block, int index, int strips);

// work(strip of each block...) from top to bottom, for blocks of one height.
template <typename Work, typename... Blocks>
void forEachStrip(Work work, const KivImage& block, const Blocks&... others) {
  const int strips = stripsOf(block);
  for (int i = 0; i < strips; ++i) work(stripOf(block, i, strips), stripOf(others, i, strips)...);
}
