// libFuzzer target: a small document, a parameter record, a script and a misbehaving host, all made of the fuzzer's
// bytes, and a few selectors on them. What the test host sees, fences included, counts as a crash.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "host/filter_entry.h"
#include "host/script_keys.h"
#include "host/test_host.h"
#include "support/forced_row.h"

// The entry that the test host calls by default.
PluginMainProc linkedEntry() { return &PluginMain; }

namespace {

// Taps times pixels of one run, all planes and levels together. A wide window is honest work that nothing can shorten,
// so a host that is asked for more cancels; under the sanitizers this much takes well below a second.
constexpr double mostWork = 4e6;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double numbers[] = {0,        -0.0,      1,
                              -1,       0.25,      0.5,
                              1.5,      2,         3,
                              10,       30,        100,
                              255,      -255,      1e-45,
                              1e-30,    1e-20,     5461.25,
                              16383,    16383.75,  16384,
                              1e9,      2.7e8,     1e10,
                              -1e10,    3.4e38,    3.5e38,
                              1e300,    -1e300,    1e-300,
                              infinity, -infinity, std::numeric_limits<double>::quiet_NaN()};
constexpr std::int32_t coordinates[] = {0, 1, 2, 39, 40, 41, -1, 32767, -32768, 300000, 2147483647, -2147483647 - 1};

TestHost* host = nullptr;
decltype(FilterRecord::advanceState) realAdvance = nullptr;

// Of the run that the record now asks for. A level that has to be refused counts nothing; the others do, for a
// threshold of 0 makes such a level a plain copy.
double estimatedWork() {
  const FilterRecord& record = host->record;
  if (record.parameters == nullptr || *record.parameters == nullptr) return 0;
  const bool wide = record.bigDocumentData != nullptr && record.bigDocumentData->PluginUsing32BitCoordinates != 0;
  const VRect rect = wide ? host->big.inRect32
                          : VRect{record.inRect.top, record.inRect.left, record.inRect.bottom, record.inRect.right};
  double pixels = 3.0 * (static_cast<double>(rect.right) - rect.left) * (static_cast<double>(rect.bottom) - rect.top);
  const unsigned char* settings = host->block(record.parameters);
  double work = 0;
  for (int level = 0; level < 5; ++level, pixels = pixels / 4 + 100) {
    double radius = 0;
    std::memcpy(&radius, settings + 56 + 8 * level, 8);
    if (!(radius > 0)) continue;
    const double side = 2 * std::ceil(4 * radius) + 1;
    const bool keepEdges = settings[136 + level] != 0;
    const double mostTaps = keepEdges ? 65535 : 1e9;  // along a side; beyond, no sample is worked on
    if (side <= mostTaps) work += keepEdges ? side * side * pixels : 2 * side * pixels;
  }
  return work;
}

OSErr cancellingAdvance() { return estimatedWork() > mostWork ? OSErr{userCanceledErr} : realAdvance(); }

// Once in so many times.
bool rarely(FuzzedDataProvider& bytes, int times) { return bytes.ConsumeIntegralInRange(1, times) == times; }

double number(FuzzedDataProvider& bytes) {
  switch (bytes.ConsumeIntegralInRange(0, 3)) {
    case 0:
      return bytes.ConsumeFloatingPointInRange(-2.0, 4.0);
    case 1: {
      const auto bits = bytes.ConsumeIntegral<std::uint64_t>();
      double value = 0;
      std::memcpy(&value, &bits, 8);
      return value;
    }
    default:
      return bytes.PickValueInArray(numbers);
  }
}

// Runs end early at a radius that is refused or cancelled, so most radii are none.
double numberFor(int position, FuzzedDataProvider& bytes) {
  const bool isRadius = position >= 5 && position < 10;
  return isRadius && !rarely(bytes, 6) ? bytes.ConsumeFloatingPointInRange(-0.5F, 3.0F) : number(bytes);
}

void fillDocument(FuzzedDataProvider& bytes) {
  host->fillWithPattern(bytes.ConsumeIntegral<std::uint8_t>());
  for (auto& plane : host->planes) {
    const std::size_t count = std::min<std::size_t>(plane.size(), bytes.ConsumeIntegralInRange<std::size_t>(0, 64));
    const std::vector<unsigned char> raw = bytes.ConsumeBytes<unsigned char>(count);
    std::copy(raw.begin(), raw.end(), plane.begin());
  }
}

void fillRecord(FuzzedDataProvider& bytes) {
  host->record.parameters = host->newHandle(160);
  unsigned char* to = host->block(host->record.parameters);
  std::fill_n(to, 160, bytes.ConsumeIntegral<std::uint8_t>());
  for (int position = 0; position < scriptKeyCount; ++position) {
    const ScriptKey& key = scriptKeys[position];
    if (key.kind == ScriptKind::Float) {
      const double value = numberFor(position, bytes);
      std::memcpy(to + key.offset, &value, 8);
    } else if (key.kind == ScriptKind::Integer) {
      const auto value = bytes.ConsumeIntegral<std::int32_t>();
      std::memcpy(to + key.offset, &value, 4);
    } else {
      to[key.offset] = rarely(bytes, 8) ? bytes.ConsumeIntegral<std::uint8_t>() : bytes.ConsumeBool() ? 1 : 0;
    }
  }
}

Script script(FuzzedDataProvider& bytes) {
  const DescriptorTypeID types[] = {typeFloat, typeBoolean, typeInteger, typeText};
  Script result;
  for (int count = bytes.ConsumeIntegralInRange(0, 30); count > 0; --count) {
    const int position = bytes.ConsumeIntegralInRange(0, scriptKeyCount);
    ScriptValue value;
    value.key = position == scriptKeyCount ? bytes.ConsumeIntegral<DescriptorKeyID>() : scriptKeys[position].code;
    value.type = bytes.PickValueInArray(types);
    // The host itself converts to the two whole types.
    if (value.type == typeFloat) value.number = numberFor(position, bytes);
    if (value.type == typeBoolean) value.number = bytes.ConsumeIntegral<std::uint8_t>();
    if (value.type == typeInteger) value.number = bytes.ConsumeIntegral<std::int32_t>();
    result.push_back(value);
  }
  return result;
}

VRect rectangle(FuzzedDataProvider& bytes) {
  const auto coordinate = [&] { return bytes.PickValueInArray(coordinates); };
  return {coordinate(), coordinate(), coordinate(), coordinate()};
}

void bend(FuzzedDataProvider& bytes) {
  TestHost& h = *host;
  if (rarely(bytes, 3)) h.failAt = static_cast<int>(h.calls.size()) + bytes.ConsumeIntegralInRange(0, 90);
  h.failCode = bytes.ConsumeBool() ? OSErr{userCanceledErr} : bytes.ConsumeIntegral<OSErr>();
  if (rarely(bytes, 4)) {
    h.bufferFault = static_cast<BufferFault>(bytes.ConsumeIntegralInRange(0, 8));
    h.bufferFaultAt = static_cast<int>(h.advances.size()) + bytes.ConsumeIntegralInRange(0, 5);
  }
  h.endlessReader = rarely(bytes, 30);
  h.relocatesBlocks = bytes.ConsumeBool();
  h.suiteRefusedWithAddress = bytes.ConsumeBool();
  h.missingSuite = rarely(bytes, 30) ? kPSBufferSuite : nullptr;
  h.record.advanceState = rarely(bytes, 40) ? nullptr : &cancellingAdvance;
  h.record.handleProcs = rarely(bytes, 40) ? nullptr : &h.handles;
  h.handles.numHandleProcs = rarely(bytes, 40) ? bytes.ConsumeIntegral<std::int16_t>() : std::int16_t{8};
  h.handles.handleProcsVersion = rarely(bytes, 40) ? bytes.ConsumeIntegral<std::int16_t>() : std::int16_t{1};
  h.record.sSPBasic = rarely(bytes, 40) ? nullptr : &h.basic;
  h.record.descriptorParameters = rarely(bytes, 20) ? nullptr : &h.scripting;
  h.scripting.playInfo = bytes.ConsumeIntegral<std::int16_t>();
  h.scripting.descriptorParametersVersion = rarely(bytes, 40) ? bytes.ConsumeIntegral<std::int16_t>() : std::int16_t{0};
  h.reading.numReadDescriptorProcs = rarely(bytes, 40) ? bytes.ConsumeIntegral<std::int16_t>() : std::int16_t{18};
  h.writing.numWriteDescriptorProcs = rarely(bytes, 40) ? bytes.ConsumeIntegral<std::int16_t>() : std::int16_t{16};
  h.record.depth = rarely(bytes, 20) ? bytes.ConsumeIntegral<std::int32_t>() : h.depth;
  const auto planes = static_cast<std::int16_t>(h.planes.size());
  h.record.planes = rarely(bytes, 20) ? bytes.ConsumeIntegral<std::int16_t>() : planes;
  const auto narrow = [](std::int32_t c) { return static_cast<std::int16_t>(std::clamp(c, -32768, 32767)); };
  VRect rect = {0, 0, h.height, h.width};
  if (rarely(bytes, 3)) {
    rect.top = bytes.ConsumeIntegralInRange(0, h.height);
    rect.left = bytes.ConsumeIntegralInRange(0, h.width);
    rect.bottom = bytes.ConsumeIntegralInRange(0, h.height);
    rect.right = bytes.ConsumeIntegralInRange(0, h.width);
  } else if (rarely(bytes, 10)) {
    rect = rectangle(bytes);
  }
  h.record.filterRect = {narrow(rect.top), narrow(rect.left), narrow(rect.bottom), narrow(rect.right)};
  h.record.bigDocumentData = bytes.ConsumeBool() ? &h.big : nullptr;
  h.big.PluginUsing32BitCoordinates = bytes.ConsumeBool() ? 1 : 0;
  h.big.filterRect32 = rect;
  if (rarely(bytes, 3)) h.play(script(bytes));
  if (rarely(bytes, 8) && h.record.parameters != nullptr) h.replaceParameters();
}

void demand(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "run_fuzz: %s\n", what);
  std::abort();
}

void step(FuzzedDataProvider& bytes) {
  bend(bytes);
  if (bytes.ConsumeBool()) {
    host->run();
  } else {
    const std::int16_t selectors[] = {-1, 1, 2, 3, 4, 5, 6};  // About takes another record
    host->call(bytes.PickValueInArray(selectors));
  }
  host->checkFences();
  demand(host->violations.empty(), host->violations.empty() ? "" : host->violations.front().c_str());
  demand(host->readersOpen + host->writersOpen == 0, "a descriptor was left open");
  demand(host->liveHandles() <= 3, "a handle was left over");
}

}  // namespace

// What the OpenMP runtime of clang 14 loses of its own each time that it is shut down.
extern "C" const char* __lsan_default_suppressions() { return "leak:libomp.so"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider bytes(data, size);
  const int row = bytes.ConsumeIntegralInRange(0, rowCount - 1);
  const ForcedRow forced(ForcedRow::machineHas(row) ? row : 0);
  const int width = bytes.ConsumeIntegralInRange(1, 40);
  const int height = bytes.ConsumeIntegralInRange(1, 40);
  const int planes = rarely(bytes, 10) ? bytes.ConsumeIntegralInRange(1, 2) : bytes.ConsumeIntegralInRange(3, 5);
  const int depths[] = {8, 16, 32};
  const int depth = bytes.PickValueInArray(depths);
  TestHost present(width, height, planes, depth);
  host = &present;
  realAdvance = present.record.advanceState;
  present.rowPadding = bytes.ConsumeIntegralInRange(0, 8) * (depth / 8);
  present.addressOffset = bytes.ConsumeIntegralInRange(0, 8) * (depth == 32 ? 4 : 1);
  fillDocument(bytes);
  if (bytes.ConsumeBool()) fillRecord(bytes);
  if (bytes.ConsumeBool()) present.play(script(bytes));
  for (int steps = 0; steps < 6 && (steps == 0 || bytes.remaining_bytes() > 0); ++steps) step(bytes);
  host = nullptr;
  return 0;
}
