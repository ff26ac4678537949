// A host that does anything at any time: documents, records, scripts, faults and selectors, picked by numbers that a
// test draws or a fuzzer gives.
#pragma once

#include <random>

#include "host/test_host.h"

struct Choices {
  virtual ~Choices() = default;
  virtual int below(int count) = 0;  // 0 to count - 1

  bool rarely(int times) { return below(times) == times - 1; }  // once in so many times
  double between(double low, double high) { return low + (high - low) * below(1 << 20) / (1 << 20); }
  template <typename Value, std::size_t count>
  const Value& any(const Value (&values)[count]) {
    return values[below(static_cast<int>(count))];
  }
};

// Only what the generator's definition fixes: distributions differ between libraries.
class RandomChoices : public Choices {
 public:
  explicit RandomChoices(unsigned seed) : generator_(seed) {}
  int below(int count) override { return static_cast<int>(generator_() % static_cast<unsigned>(count)); }

 private:
  std::mt19937 generator_;
};

class AnyHost : public TestHost {
 public:
  struct Limits {
    int longestSide;
    int oddValueEvery;  // a setting in so many is none that people choose
  };

  AnyHost(Choices& choices, Limits limits, PluginMainProc entry = linkedEntry());

  Script anyScript();
  void selectPart();
  // Bends what a host can do wrong, then calls one selector or all of a run.
  void step();
  // What is wrong so far; empty when nothing is.
  std::string complaint();

 private:
  double number();
  double settingFor(int position);
  std::int16_t bent(int times, std::size_t honest);
  void bend();

  Choices& choices_;
  int oddValueEvery_;
  PluginMainProc entry_;
  decltype(FilterRecord::advanceState) honestAdvance_;
};
