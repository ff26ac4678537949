#include "image/block_cut.h"

namespace {

// Rounded up. In integers: a float has no room for the heights of very tall images.
int quotient(int a, int b) { return a / b + (a % b > 0 ? 1 : 0); }

// Part index of count, as wide as whole.
KivImage part(const KivImage& whole, int rows, int index, int count) {
  KivImage view;
  view.Block(whole, {whole.size.width, rows}, index, count, 0);
  return view;
}

}  // namespace

BlockCut::BlockCut(int height) : blocks(height < 200 ? 1 : mostBlocks), rows(quotient(height, blocks)) {}

KivImage BlockCut::block(const KivImage& image, int index) const { return part(image, rows, index, blocks); }

int stripsOf(const KivImage& block) { return quotient(block.size.height, BlockCut::stripRows); }

KivImage stripOf(const KivImage& block, int index, int strips) {
  return part(block, BlockCut::stripRows, index, strips);
}
