// libFuzzer target: a small document, a parameter record, scripts and a misbehaving host, all made of the fuzzer's
// bytes, and a few selectors on them. What the test host sees, fences included, counts as a crash.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdio>
#include <cstdlib>

#include "host/any_host.h"
#include "host/filter_entry.h"
#include "support/forced_row.h"

// The entry that the test host calls by default.
PluginMainProc linkedEntry() { return &PluginMain; }

namespace {

class FuzzerChoices : public Choices {
 public:
  explicit FuzzerChoices(FuzzedDataProvider& bytes) : bytes_(bytes) {}
  int below(int count) override { return bytes_.ConsumeIntegralInRange(0, count - 1); }

 private:
  FuzzedDataProvider& bytes_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider bytes(data, size);
  FuzzerChoices choices(bytes);
  const int row = choices.below(rowCount);
  const ForcedRow forced(ForcedRow::machineHas(row) ? row : 0);
  AnyHost host(choices, {40, 6});
  for (int steps = 0; steps < 6 && (steps == 0 || bytes.remaining_bytes() > 0); ++steps) {
    host.step();
    if (host.complaint().empty()) continue;
    std::fprintf(stderr, "run_fuzz: %s\n", host.complaint().c_str());
    std::abort();
  }
  return 0;
}
