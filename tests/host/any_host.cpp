#include "host/any_host.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "host/script_keys.h"

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double oddNumbers[] = {0,     -0.0,   1,        -1,  0.25,   30,     255,      1e-45,
                                 1e-20, 1e-300, 16383.75, 1e9, 3.5e38, -1e300, infinity, NAN};
constexpr std::int32_t oddCoordinates[] = {0, 1, 2, 39, 40, 41, -1, 32767, -32768, 300000, 2147483647, -2147483647 - 1};

std::int32_t anyInteger(Choices& choices) {
  const auto high = static_cast<std::uint32_t>(choices.below(65536));
  return static_cast<std::int32_t>(high << 16 | static_cast<std::uint32_t>(choices.below(65536)));
}

}  // namespace

AnyHost::AnyHost(Choices& choices, Limits limits, PluginMainProc entry)
    : TestHost{1 + choices.below(limits.longestSide), 1 + choices.below(limits.longestSide),
               choices.rarely(10) ? 1 + choices.below(2) : 3 + choices.below(3), 8 << choices.below(3), entry},
      choices_(choices),
      oddValueEvery_(limits.oddValueEvery),
      entry_(entry),
      honestAdvance_(record.advanceState) {
  rowPadding = choices.below(9) * sampleBytes();
  addressOffset = choices.below(9) * (depth == 32 ? 4 : 1);
  fillWithPattern(static_cast<unsigned>(choices.below(256)));
  for (auto& plane : planes) {  // samples of all kinds
    const std::size_t count = std::min<std::size_t>(plane.size(), static_cast<std::size_t>(choices.below(65)));
    for (std::size_t i = 0; i < count; ++i) plane[i] = static_cast<unsigned char>(choices.below(256));
  }
}

double AnyHost::number() {
  const int kind = choices_.below(4);
  if (kind == 0) return choices_.between(-2, 4);
  if (kind > 1) return choices_.any(oddNumbers);
  const std::int32_t bits[] = {anyInteger(choices_), anyInteger(choices_)};
  double value = 0;
  std::memcpy(&value, bits, sizeof value);
  return value;
}

double AnyHost::settingFor(int position) {
  const bool isOdd = choices_.rarely(oddValueEvery_);
  if (position >= 5 && position < 10) {
    // A wide window is honest work for hours, up to those that nothing has room for.
    const double widest = std::max(3.0, 60.0 / std::max(width, height));
    const double radius = isOdd ? number() : choices_.between(-0.25, 1.5);
    return radius > widest && radius < 1e9 ? widest : radius;
  }
  const bool isThreshold = position >= 10 && position < 15;
  return isOdd ? number() : isThreshold ? choices_.between(0.5, 120) : choices_.between(-50, 300);
}

Script AnyHost::anyScript() {
  Script script;
  for (int position = 0; position < scriptKeyCount; ++position) {
    if (choices_.rarely(4)) continue;
    const ScriptKey& key = scriptKeys[choices_.rarely(20) ? choices_.below(scriptKeyCount) : position];
    const bool known = !choices_.rarely(30);
    const DescriptorTypeID types[] = {typeFloat, typeBoolean, typeInteger, typeText};
    ScriptValue value{known ? key.code : fourCharacters("JUNK"), descriptorType(key.kind), 0};
    if (choices_.rarely(30)) value.type = choices_.any(types);
    // The host itself converts to the two whole types.
    if (value.type == typeFloat) value.number = settingFor(static_cast<int>(&key - scriptKeys));
    if (value.type == typeBoolean) value.number = choices_.rarely(8) ? choices_.below(256) : choices_.below(2);
    if (value.type == typeInteger) value.number = choices_.rarely(8) ? anyInteger(choices_) : choices_.below(12) - 1;
    script.push_back(value);
  }
  return script;
}

void AnyHost::selectPart() {
  const bool wide = choices_.rarely(2);
  const VRect rect = {choices_.below(height + 1), choices_.below(width + 1), choices_.below(height + 1),
                      choices_.below(width + 1)};
  select(rect, wide);
}

std::int16_t AnyHost::bent(int times, std::size_t honest) {
  return static_cast<std::int16_t>(choices_.rarely(times) ? choices_.below(65536) - 32768 : static_cast<int>(honest));
}

void AnyHost::bend() {
  Choices& c = choices_;
  const OSErr codes[] = {userCanceledErr, errMissingParameter, paramErr, -1, 1, -32768};
  const std::int32_t depths[] = {0, 1, 7, 64, -8, 1 << 30};
  failAt = c.rarely(3) ? static_cast<int>(calls.size()) + c.below(90) : -1;
  failCode = c.any(codes);
  bufferFault = &c.any(bufferFaults);
  bufferFaultAt = c.rarely(4) ? static_cast<int>(advances.size()) + c.below(6) : -1;
  endlessReader = c.rarely(30);
  relocatesBlocks = c.rarely(2);
  suiteRefusedWithAddress = c.rarely(2);
  missingSuite = c.rarely(30) ? kPSBufferSuite : nullptr;
  record.advanceState = c.rarely(40) ? nullptr : honestAdvance_;
  record.handleProcs = c.rarely(40) ? nullptr : &handles;
  handles.numHandleProcs = bent(40, 8);
  handles.handleProcsVersion = bent(40, 1);
  record.sSPBasic = c.rarely(40) ? nullptr : &basic;
  record.descriptorParameters = c.rarely(20) ? nullptr : &scripting;
  scripting.playInfo = static_cast<std::int16_t>(c.below(4));
  scripting.descriptorParametersVersion = bent(40, 0);
  reading.numReadDescriptorProcs = bent(40, 18);
  writing.numWriteDescriptorProcs = bent(40, 16);
  record.depth = c.rarely(20) ? c.any(depths) : depth;
  record.planes = bent(20, planes.size());
  select({0, 0, height, width}, c.rarely(2));
  if (c.rarely(3)) selectPart();
  if (c.rarely(10)) {
    select({c.any(oddCoordinates), c.any(oddCoordinates), c.any(oddCoordinates), c.any(oddCoordinates)}, c.rarely(2));
  }
  if (record.parameters != nullptr && c.rarely(8)) replaceParameters();
  if (record.parameters != nullptr && c.rarely(20)) {
    disposeHandle(record.parameters);
    record.parameters = nullptr;
  }
  if (data != 0 && c.rarely(20)) {
    disposeHandle(reinterpret_cast<Handle>(data));
    data = 0;
  }
  if (c.rarely(3)) play(anyScript());
}

void AnyHost::step() {
  bend();
  if (choices_.rarely(20)) {
    AboutRecord about = {};
    entry_(filterSelectorAbout, &about, &data, &result);
  }
  const std::int16_t selectors[] = {-1, 1, 2, 3, 3, 4, 5, 6};  // About takes another record
  if (choices_.rarely(2)) {
    run();
  } else {
    call(choices_.any(selectors));
  }
}

std::string AnyHost::complaint() {
  if (!allViolations().empty()) return violations.front();
  return liveHandles() > 3 ? "a handle was left over" : "";  // the block, the record, the script
}
