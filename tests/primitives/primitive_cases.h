// Every primitive of the pointwise family as a case: how to run it on random images, and what a naive formula gives.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "primitives/primitives.h"

struct PrimitiveOutput {
  IppStatus status;
  std::vector<float> samples;  // of the target, row by row; integers as floats
};

struct PrimitiveCase {
  std::string name;
  // On images with random contents, which follow from size and seed. Checks that nothing else was written.
  std::function<PrimitiveOutput(IppiSize, unsigned seed)> run;
  std::function<std::vector<float>(IppiSize, unsigned seed)> naive;
  int tolerance = 0;  // in units in the last place
};

const std::vector<PrimitiveCase>& primitiveCases();

inline void PrintTo(const PrimitiveCase& primitive, std::ostream* out) { *out << primitive.name; }
