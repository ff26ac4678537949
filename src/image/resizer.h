// Linear resampling of planes from one size to another, any band of rows at a time.
#pragma once

#include "image/scratch.h"
#include "primitives/primitives.h"

class Resizer {
 public:
  // Throws NO_MEMORY_ERROR, also for sizes that no table can be had for.
  Resizer(IppiSize from, IppiSize to);

  // False where the primitive refuses the sizes: a source of one row or column, an empty side. Nothing else may then be
  // asked.
  bool isServed() const { return spec_ != nullptr; }

  std::int64_t scratchBytes() const { return scratchBytes_; }

  // Rows y to y + count - 1 of the target are made of rows of the source from first to end - 1.
  struct Rows {
    int first;
    int end;
  };
  Rows sourceRows(int y, int count) const;

  // Rows y to y + count - 1 of the target to dst on. src addresses the first sample of the source's row firstRow, and
  // rows from there on as far as sourceRows tells. Steps are in bytes.
  void rows(const float* src, int srcStep, int firstRow, int y, int count, float* dst, int dstStep,
            void* scratch) const;

  // The whole plane, bands in parallel.
  void plane(const float* src, int srcStep, float* dst, int dstStep) const;

 private:
  std::int64_t sourceRow(int y) const;
  double ratioOfRows() const;

  IppiSize from_;
  IppiSize to_;
  Scratch spec_;
  std::int64_t scratchBytes_ = 0;
};
