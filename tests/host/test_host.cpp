// The test host's procedures and its exchange of planes.
#include "host/test_host.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

struct PIReadDescriptorToken {
  Script script;
  std::size_t next = 0;
  DescriptorKeyID* expected = nullptr;
};
struct PIWriteDescriptorToken {
  Script script;
};

namespace {

constexpr std::size_t fenceBytes = 64;  // keeps the alignment of what lies behind it
constexpr unsigned char fence = 0xFD;
constexpr unsigned char padding = 0xCD;
constexpr std::int16_t unwrittenResult = 77;

TestHost* active = nullptr;

std::vector<unsigned char> fenced(std::size_t size, unsigned char content) {
  std::vector<unsigned char> bytes(size + 2 * fenceBytes, fence);
  std::fill_n(bytes.begin() + fenceBytes, size, content);
  return bytes;
}

bool fencesHold(const std::vector<unsigned char>& bytes) {
  const auto isFence = [](unsigned char byte) { return byte == fence; };
  return bytes.empty() || (std::all_of(bytes.begin(), bytes.begin() + fenceBytes, isFence) &&
                           std::all_of(bytes.end() - fenceBytes, bytes.end(), isFence));
}

// ---- Procedures

OSErr advanceProc() { return active->advance(); }
Handle newProc(std::int32_t size) { return active->fails(HostCall::NewHandle) ? nullptr : active->newHandle(size); }
void disposeProc(Handle handle) { active->disposeHandle(handle); }
std::int32_t getSizeProc(Handle /*handle*/) { return 0; }
OSErr setSizeProc(Handle /*handle*/, std::int32_t /*size*/) { return memFullErr; }
Ptr lockProc(Handle handle, Boolean /*moveHigh*/) {
  return active->fails(HostCall::Lock) ? nullptr : active->lock(handle);
}
void unlockProc(Handle handle) { active->unlock(handle); }

std::int32_t acquireProc(const char* name, std::int32_t version, const void** suite) {
  static const int anySuite = 0;
  const bool known = (name == std::string(kPSChannelPortsSuite) && version == 3) ||
                     (name == std::string(kPSBufferSuite) && version == 2);
  const bool refused = active->fails(HostCall::Acquire) || !known ||
                       (active->missingSuite != nullptr && name == std::string(active->missingSuite));
  *suite = refused && !active->suiteRefusedWithAddress ? nullptr : &anySuite;
  return refused ? 0x53214664 : 0;
}

PIReadDescriptor openReader(PIDescriptorHandle descriptor, DescriptorKeyID* expected) {
  Script* script = active->scriptOf(descriptor);
  if (script == nullptr) active->violations.emplace_back("a reader on what is no descriptor");
  if (active->fails(HostCall::OpenReader) || script == nullptr) return nullptr;
  active->expectedKeys.clear();
  for (DescriptorKeyID* key = expected; *key != 0; ++key) active->expectedKeys.push_back(*key);
  ++active->descriptorsOpen;
  return new PIReadDescriptorToken{*script, 0, expected};
}

Boolean getKey(PIReadDescriptor token, DescriptorKeyID* key, DescriptorTypeID* type, std::int32_t* flags) {
  active->relocateUnlockedBlocks();
  if (active->fails(HostCall::GetKey)) return 0;
  const bool again = active->endlessReader && !token->script.empty();
  if (token->next >= token->script.size() && !again) return 0;
  const ScriptValue& value = token->script[again ? 0 : token->next];
  ++token->next;
  for (DescriptorKeyID* expected = token->expected; *expected != 0; ++expected) {
    if (*expected == value.key) *expected = typeNull;
  }
  *key = value.key;
  *type = value.type;
  *flags = actionSimpleParameter;
  return 1;
}

template <DescriptorTypeID type, typename Value>
OSErr getValue(PIReadDescriptor token, Value* value) {
  if (active->fails(HostCall::GetValue)) return active->failCode;
  const ScriptValue& held = token->script[active->endlessReader ? 0 : token->next - 1];
  if (held.type != type) return paramErr;
  *value = static_cast<Value>(held.number);
  return noErr;
}

OSErr closeReader(PIReadDescriptor token) {
  --active->descriptorsOpen;
  bool missing = false;
  for (DescriptorKeyID* key = token->expected; *key != 0; ++key) missing = missing || *key != typeNull;
  delete token;
  if (active->fails(HostCall::CloseReader)) return active->failCode;
  return missing ? OSErr{errMissingParameter} : OSErr{noErr};
}

PIWriteDescriptor openWriter() {
  if (active->fails(HostCall::OpenWriter)) return nullptr;
  ++active->descriptorsOpen;
  return new PIWriteDescriptorToken;
}

OSErr put(PIWriteDescriptor token, DescriptorKeyID key, DescriptorTypeID type, double value) {
  const bool failed = active->fails(HostCall::Put);
  if (!failed) token->script.push_back({key, type, value});
  active->relocateUnlockedBlocks();
  return failed ? active->failCode : OSErr{noErr};
}
OSErr putFloat(PIWriteDescriptor token, DescriptorKeyID key, const double* value) {
  return put(token, key, typeFloat, *value);
}
template <DescriptorTypeID type, typename Value>
OSErr putValue(PIWriteDescriptor token, DescriptorKeyID key, Value value) {
  return put(token, key, type, value);
}

OSErr closeWriter(PIWriteDescriptor token, PIDescriptorHandle* descriptor) {
  --active->descriptorsOpen;
  const std::unique_ptr<PIWriteDescriptorToken> writer(token);
  if (active->fails(HostCall::CloseWriter)) return active->failCode;
  *descriptor = active->newDescriptor(writer->script);
  return noErr;
}

// Fills a table with a procedure that no test expects to be called, then the caller sets those that are.
template <typename Table>
void fillTable(Table& table, std::int16_t count) {
  using Unexpected = void (*)();
  const Unexpected unexpected = [] { active->violations.emplace_back("an unexpected procedure was called"); };
  const std::int16_t head[4] = {0, count, 0, 0};
  std::memcpy(&table, head, sizeof head);
  for (int i = 0; i < count; ++i) std::memcpy(reinterpret_cast<char*>(&table) + 8 + 8 * i, &unexpected, 8);
}

Rect narrow(VRect rect) {
  const auto limited = [](std::int32_t c) { return static_cast<std::int16_t>(std::clamp(c, -32768, 32767)); };
  return {limited(rect.top), limited(rect.left), limited(rect.bottom), limited(rect.right)};
}
VRect widened(Rect rect) { return {rect.top, rect.left, rect.bottom, rect.right}; }

}  // namespace

TestHost::TestHost(int documentWidth, int documentHeight, int planeCount, int bits, PluginMainProc entry)
    : width(documentWidth), height(documentHeight), depth(bits), entry_(entry) {
  active = this;
  const auto planeBytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(height * sampleBytes());
  planes.assign(static_cast<std::size_t>(planeCount), std::vector<unsigned char>(planeBytes));
  handles = {1, 8, newProc, disposeProc, getSizeProc, setSizeProc, lockProc, unlockProc, nullptr, nullptr};
  fillTable(reading, 18);
  reading.openReadDescriptorProc = openReader;
  reading.closeReadDescriptorProc = closeReader;
  reading.getKeyProc = getKey;
  reading.getFloatProc = getValue<typeFloat, double>;
  reading.getBooleanProc = getValue<typeBoolean, Boolean>;
  reading.getIntegerProc = getValue<typeInteger, std::int32_t>;
  fillTable(writing, 16);
  writing.openWriteDescriptorProc = openWriter;
  writing.closeWriteDescriptorProc = closeWriter;
  writing.putFloatProc = putFloat;
  writing.putBooleanProc = putValue<typeBoolean, Boolean>;
  writing.putIntegerProc = putValue<typeInteger, std::int32_t>;
  scripting.recordInfo = plugInDialogNone;
  scripting.readDescriptorProcs = &reading;
  scripting.writeDescriptorProcs = &writing;
  basic.AcquireSuite = acquireProc;

  select({0, 0, height, width}, false);
  record.imageSize = {record.filterRect.bottom, record.filterRect.right};
  record.planes = static_cast<std::int16_t>(planeCount);
  record.outHiPlane = static_cast<std::int16_t>(planeCount - 1);
  record.inHiPlane = record.outHiPlane;
  record.advanceState = advanceProc;
  record.handleProcs = &handles;
  record.descriptorParameters = &scripting;
  record.sSPBasic = &basic;
  record.depth = depth;
  record.hostSig = photoshopSignature;
}

TestHost::~TestHost() {
  if (active == this) active = nullptr;
}

std::int16_t TestHost::call(std::int16_t selector) {
  active = this;
  result = unwrittenResult;
  entry_(selector, &record, &data, &result);
  return result;
}

std::int16_t TestHost::run() {
  if (call(filterSelectorPrepare) != noErr || call(filterSelectorStart) != noErr) return result;
  const auto isEmpty = [](VRect rect) { return rect.right <= rect.left || rect.bottom <= rect.top; };
  for (int i = 0; !isEmpty(inRect()) || !isEmpty(outRect()); ++i) {
    demand(i < 3, "Continue doesn't end");
    if (i == 3) break;
    takeOver();
    if (call(filterSelectorContinue) != noErr) return result;
  }
  return call(filterSelectorFinish);
}

unsigned char* TestHost::at(int plane, int x, int y) {
  return planes[static_cast<std::size_t>(plane)].data() + (y * width + x) * sampleBytes();
}

double TestHost::sample(int plane, int x, int y) const {
  const unsigned char* from = const_cast<TestHost*>(this)->at(plane, x, y);
  std::uint16_t word = 0;
  float real = 0;
  if (depth == 8) return *from;
  if (depth == 16) return std::memcpy(&word, from, 2), word;
  return std::memcpy(&real, from, 4), real;
}

void TestHost::setSample(int plane, int x, int y, double value) {
  const auto word = static_cast<std::uint16_t>(depth == 16 ? value : 0);
  const auto real = static_cast<float>(value);
  if (depth == 8) *at(plane, x, y) = static_cast<unsigned char>(value);
  if (depth == 16) std::memcpy(at(plane, x, y), &word, 2);
  if (depth == 32) std::memcpy(at(plane, x, y), &real, 4);
}

void TestHost::fillWithPattern(unsigned seed) {
  std::mt19937 random(seed);
  for (int plane = 0; plane < static_cast<int>(planes.size()); ++plane) {
    for (int i = 0; i < width * height; ++i) {
      const double value = static_cast<double>(random() % 32769) / 32768.0;
      setSample(plane, i % width, i / width,
                depth == 8    ? value * 255
                : depth == 16 ? value * 32768
                              : value * 1.2 - 0.1);
    }
  }
}

// ---- Handles

void TestHost::demand(bool holds, const char* violation) {
  if (!holds) violations.emplace_back(violation);
}

Handle TestHost::newHandle(std::int32_t size) {
  auto block = std::make_unique<Block>();
  block->bytes = fenced(static_cast<std::size_t>(size), 0xA5);
  block->master = reinterpret_cast<Ptr>(block->bytes.data() + fenceBytes);
  Handle handle = &block->master;
  blocks_[handle] = std::move(block);
  return handle;
}

void TestHost::disposeHandle(Handle handle) {
  scripts_.erase(handle);
  demand(blocks_.erase(handle) != 0, "disposed of what is no handle");
}

Ptr TestHost::lock(Handle handle) {
  const auto found = blocks_.find(handle);
  demand(found != blocks_.end(), "locked what is no handle");
  if (found == blocks_.end()) return nullptr;
  ++found->second->locks;
  ++lockBalance;
  return *handle;
}

void TestHost::unlock(Handle handle) {
  const auto found = blocks_.find(handle);
  const bool isLocked = found != blocks_.end() && found->second->locks != 0;
  demand(isLocked, "unlocked what isn't locked");
  if (!isLocked) return;
  --found->second->locks;
  --lockBalance;
}

void TestHost::relocateUnlockedBlocks() {
  if (!relocatesBlocks) return;
  for (auto& [handle, block] : blocks_) {
    if (block->locks != 0) continue;
    std::vector<unsigned char> moved = block->bytes;
    std::fill(block->bytes.begin(), block->bytes.end(), 0xDD);
    block->bytes.swap(moved);
    block->master = reinterpret_cast<Ptr>(block->bytes.data() + fenceBytes);
  }
}

void TestHost::replaceParameters() {
  const Handle old = record.parameters;
  record.parameters = newHandle(160);
  std::memcpy(*record.parameters, *old, 160);
  disposeHandle(old);
}

// ---- Descriptors

PIDescriptorHandle TestHost::newDescriptor(const Script& script) {
  Handle handle = newHandle(0);
  scripts_[handle] = script;
  return handle;
}

Script* TestHost::scriptOf(Handle descriptor) {
  const auto found = scripts_.find(descriptor);
  return found == scripts_.end() ? nullptr : &found->second;
}

void TestHost::play(const Script& script) {
  if (scripting.descriptor != nullptr) disposeHandle(scripting.descriptor);
  scripting.descriptor = newDescriptor(script);
}

Script TestHost::recorded() const {
  const auto found = scripts_.find(scripting.descriptor);
  return found == scripts_.end() ? Script{} : found->second;
}

// ---- The exchange of planes

void TestHost::enterAgain() {
  entersAgain = false;
  const std::size_t callsBefore = calls.size();
  const int failLater = failAt;
  failAt = -1;
  otherRecord_ = record;
  otherRecord_.bigDocumentData = nullptr;
  std::int16_t otherResult = unwrittenResult;
  for (const int selector : {filterSelectorPrepare, filterSelectorContinue}) {
    entry_(static_cast<std::int16_t>(selector), &otherRecord_, &data, &otherResult);
    demand(otherResult != unwrittenResult, "the inner call's result");
  }
  AboutRecord about = {};
  entry_(filterSelectorAbout, &about, nullptr, nullptr);
  otherRecord_ = {};
  calls.resize(callsBefore);
  failAt = failLater;
  entersAgain = true;
}

bool TestHost::fails(HostCall kind) {
  if (entersAgain && data != 0 && record.parameters != nullptr) enterAgain();
  const bool failed = static_cast<int>(calls.size()) == failAt;
  calls.push_back(kind);
  return failed;
}

void TestHost::select(VRect rect, bool wide) {
  record.bigDocumentData = wide ? &big : nullptr;
  big.PluginUsing32BitCoordinates = wide ? 1 : 0;
  big.filterRect32 = wide ? rect : VRect{};
  record.filterRect = wide ? Rect{} : narrow(rect);
}

bool TestHost::wide() const {
  return record.bigDocumentData != nullptr && record.bigDocumentData->PluginUsing32BitCoordinates != 0;
}
VRect TestHost::inRect() const { return wide() ? record.bigDocumentData->inRect32 : widened(record.inRect); }
VRect TestHost::outRect() const { return wide() ? record.bigDocumentData->outRect32 : widened(record.outRect); }

bool TestHost::fits(VRect rect, int lo, int hi) const {
  return rect.top >= 0 && rect.left >= 0 && rect.top < rect.bottom && rect.left < rect.right && rect.bottom <= height &&
         rect.right <= width && lo >= 0 && lo <= hi && hi < static_cast<int>(planes.size());
}

// use(sample of the buffer, sample of the document)
template <typename Use>
void TestHost::eachSample(Buffer& buffer, Use use) {
  for (int y = buffer.rect.top; y < buffer.rect.bottom; ++y) {
    unsigned char* sample = buffer.bytes.data() + buffer.start + (y - buffer.rect.top) * buffer.step;
    for (int x = buffer.rect.left; x < buffer.rect.right; ++x) {
      for (int plane = buffer.lo; plane <= buffer.hi; ++plane, sample += sampleBytes()) use(sample, at(plane, x, y));
    }
  }
}

TestHost::Buffer TestHost::deliver(VRect rect, int lo, int hi) {
  Buffer buffer;
  buffer.rect = rect;
  buffer.lo = lo;
  buffer.hi = hi;
  buffer.step = (rect.right - rect.left) * (hi - lo + 1) * sampleBytes() + rowPadding;
  buffer.start = fenceBytes + static_cast<std::size_t>(addressOffset);
  // The last row ends the buffer, without padding.
  buffer.bytes =
      fenced(static_cast<std::size_t>(addressOffset + buffer.step * (rect.bottom - rect.top) - rowPadding), padding);
  eachSample(buffer, [&](unsigned char* to, const unsigned char* from) { std::copy_n(from, sampleBytes(), to); });
  buffer.delivered = buffer.bytes;
  return buffer;
}

void TestHost::takeOver() {
  checkBuffers();
  Buffer buffer = std::move(out_);
  in_ = {};
  out_ = {};
  if (buffer.bytes.empty() || outIsBent_) return;
  eachSample(buffer, [&](const unsigned char* from, unsigned char* to) { std::copy_n(from, sampleBytes(), to); });
}

OSErr TestHost::advance() {
  takeOver();
  const bool bent = static_cast<int>(advances.size()) == bufferFaultAt && bufferFault != nullptr;
  advances.push_back({record.inLoPlane, record.inHiPlane, record.outLoPlane, record.outHiPlane});
  record.inData = record.outData = reinterpret_cast<void*>(std::uintptr_t{16});  // nobody's memory
  record.inRowBytes = record.outRowBytes = 1 << 20;
  if (fails(HostCall::Advance)) return failCode;
  if (!fits(inRect(), record.inLoPlane, record.inHiPlane)) return paramErr;
  if (!fits(outRect(), record.outLoPlane, record.outHiPlane)) return paramErr;
  in_ = deliver(inRect(), record.inLoPlane, record.inHiPlane);
  out_ = deliver(outRect(), record.outLoPlane, record.outHiPlane);
  record.inData = in_.bytes.data() + in_.start;
  record.outData = out_.bytes.data() + out_.start;
  record.inRowBytes = in_.step;
  record.outRowBytes = out_.step;
  outIsBent_ = bent;
  if (bent) bufferFault->bend(record, (in_.rect.right - in_.rect.left) * sampleBytes());
  return noErr;
}

void TestHost::checkBuffers() {
  demand(fencesHold(in_.bytes) && fencesHold(out_.bytes), "a buffer's fence");
  demand(in_.bytes == in_.delivered, "the input was written to");
  for (int y = 1; y < out_.rect.bottom - out_.rect.top; ++y) {
    const auto* end = out_.bytes.data() + out_.start + y * out_.step;
    demand(std::all_of(end - rowPadding, end, [](unsigned char byte) { return byte == padding; }), "a row's padding");
  }
}

const std::vector<std::string>& TestHost::allViolations() {
  checkBuffers();
  for (const auto& [handle, block] : blocks_) demand(fencesHold(block->bytes), "a block's fence");
  demand(descriptorsOpen == 0, "a descriptor was left open");
  return violations;
}
