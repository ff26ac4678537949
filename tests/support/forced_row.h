// A chosen row of bodies, for tests and benchmarks. The choice outlives an ippInit in the code that runs under it.
#pragma once

#include <stdexcept>

#include "primitives/primitives.h"
#include "primitives/processor.h"
#include "primitives/rows.h"

// For the length of its life the given row is in force; afterwards it is again the one that ippInit chooses.
class ForcedRow {
 public:
  // Never call it for a row that the machine lacks.
  explicit ForcedRow(int row) {
    pretend(rules[row].features);
    if (ippJumpIndexForMergedLibs != row) throw std::logic_error("another row was chosen than was forced");
  }
  ~ForcedRow() {
    pretend(featureMask(thisProcessor));
    ippInit();
  }
  ForcedRow(const ForcedRow&) = delete;
  ForcedRow& operator=(const ForcedRow&) = delete;

  static bool machineHas(int row) {
    return row == 0 || (featureMask(thisProcessor) & rules[row].features) == rules[row].features;
  }
  static const char* nameOf(int row) { return rules[row].name; }

  // Makes the mask the detected one, so that selection follows from it alone.
  static void pretend(std::uint64_t features) {
    ippSetCpuFeaturesMask(features);
    ippSetCpuFeatures(features | (std::uint64_t{1} << 63));
  }

 private:
  struct Rule {
    const char* name;
    std::uint64_t features;  // what its bodies use, and that the system saves the registers
  };
  static constexpr Rule rules[] = {{"n8_", 0x7}, {"y8_", 0xDF}, {"e9_", 0x3DF}, {"l9_", 0x83DF}, {"k0_", 0x2073083DF}};
};
