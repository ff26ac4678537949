// A small host for tests: handles, script descriptors, suites and plane buffers that obey the published interface,
// watch what the filter does with them, and fail on demand. One host is active at a time, since host calls carry no
// context.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/host_interface.h"

PluginMainProc linkedEntry();
// The module's entry as dlopen finds it; loaded once and kept.
PluginMainProc loadedEntry();

// Those that can fail.
enum class HostCall {
  NewHandle,
  Lock,
  Acquire,
  OpenReader,
  GetKey,
  GetValue,
  CloseReader,
  OpenWriter,
  Put,
  CloseWriter,
  Advance
};

struct ScriptValue {
  DescriptorKeyID key = 0;
  DescriptorTypeID type = 0;
  double number = 0;  // of any type
};
inline bool operator==(const ScriptValue& a, const ScriptValue& b) {
  return a.key == b.key && a.type == b.type && a.number == b.number;
}
using Script = std::vector<ScriptValue>;

// What one advance delivers otherwise than it should; rowBytes are those that a row's samples take.
struct BufferFault {
  const char* name;
  void (*bend)(FilterRecord& record, int rowBytes);
};
inline constexpr BufferFault bufferFaults[] = {
    {"NullIn", [](FilterRecord& r, int) { r.inData = nullptr; }},
    {"ShortIn", [](FilterRecord& r, int rowBytes) { r.inRowBytes = rowBytes - 1; }},
    {"NegativeIn", [](FilterRecord& r, int) { r.inRowBytes = -r.inRowBytes; }},
    {"ZeroIn", [](FilterRecord& r, int) { r.inRowBytes = 0; }},
    {"NullOut", [](FilterRecord& r, int) { r.outData = nullptr; }},
    {"ShortOut", [](FilterRecord& r, int rowBytes) { r.outRowBytes = rowBytes - 1; }},
    {"NegativeOut", [](FilterRecord& r, int) { r.outRowBytes = -r.outRowBytes; }},
    {"ZeroOut", [](FilterRecord& r, int) { r.outRowBytes = 0; }},
};

class TestHost {
 public:
  TestHost(int width, int height, int planes, int depth, PluginMainProc entry = linkedEntry());
  ~TestHost();
  TestHost(const TestHost&) = delete;
  TestHost& operator=(const TestHost&) = delete;

  std::int16_t call(std::int16_t selector);
  // Prepare, Start, Continue while a rectangle isn't empty, Finish. Stops at the first code and gives it.
  std::int16_t run();

  // ---- The document: samples without padding, host types, planes apart.
  std::vector<std::vector<unsigned char>> planes;
  int width, height, depth;
  int sampleBytes() const { return depth / 8; }
  double sample(int plane, int x, int y) const;
  void setSample(int plane, int x, int y, double value);
  void fillWithPattern(unsigned seed);

  // ---- The interface's records: tests bend them.
  FilterRecord record = {};
  BigDocumentStruct big = {};
  HandleProcs handles = {};
  PIDescriptorParameters scripting = {};
  ReadDescriptorProcs reading = {};
  WriteDescriptorProcs writing = {};
  SPBasicSuite basic = {};
  std::intptr_t data = 0;
  std::int16_t result = 0;

  // ---- Behaviour on demand.
  int rowPadding = 0;                // bytes
  int addressOffset = 0;             // buffers start so many bytes off their alignment
  int failAt = -1;                   // the failing call, counted from 0 over all calls that can fail
  OSErr failCode = userCanceledErr;  // of the calls that give a code
  bool endlessReader = false;        // repeats the script's first key
  bool relocatesBlocks = false;      // moves unlocked blocks whenever the filter calls a descriptor procedure
  bool suiteRefusedWithAddress = false;
  const char* missingSuite = nullptr;
  const BufferFault* bufferFault = nullptr;
  int bufferFaultAt = -1;    // the advance that it strikes
  bool entersAgain = false;  // from within calls that can fail, with another record, which is then cleared

  void select(VRect rect, bool wide);  // by coordinates of 32 bits or of 16
  void play(const Script& script);     // hands the filter a descriptor at the next Start
  Script recorded() const;             // the descriptor that the filter left
  Handle newHandle(std::int32_t size);
  void disposeHandle(Handle handle);
  unsigned char* block(Handle handle) { return reinterpret_cast<unsigned char*>(*handle); }
  void replaceParameters();  // by another handle with the same bytes

  // ---- What has been seen.
  std::vector<HostCall> calls;                // in order
  std::vector<DescriptorKeyID> expectedKeys;  // as the reader was opened with
  std::vector<std::array<int, 4>> advances;   // inLoPlane, inHiPlane, outLoPlane, outHiPlane
  std::vector<std::string> violations;        // of the interface, by the filter
  int liveHandles() const { return static_cast<int>(blocks_.size()); }
  int lockBalance = 0;
  int descriptorsOpen = 0;  // readers and writers
  // Violations so far, with those that the fences of buffers and blocks, the padding of rows and open descriptors show.
  const std::vector<std::string>& allViolations();

  // ---- What the host's procedures call.
  bool fails(HostCall kind);
  OSErr advance();
  Ptr lock(Handle handle);
  void unlock(Handle handle);
  void relocateUnlockedBlocks();
  Script* scriptOf(Handle descriptor);
  PIDescriptorHandle newDescriptor(const Script& script);

 private:
  struct Block {
    Ptr master = nullptr;  // a handle is this member's address
    std::vector<unsigned char> bytes;
    int locks = 0;
  };
  struct Buffer {
    std::vector<unsigned char> bytes, delivered;
    VRect rect = {};
    int lo = 0, hi = -1, step = 0;
    std::size_t start = 0;
  };

  unsigned char* at(int plane, int x, int y);
  bool wide() const;
  VRect inRect() const;
  VRect outRect() const;
  bool fits(VRect rect, int lo, int hi) const;
  template <typename Use>
  void eachSample(Buffer& buffer, Use use);
  Buffer deliver(VRect rect, int lo, int hi);
  void takeOver();
  void checkBuffers();
  void demand(bool holds, const char* violation);
  void enterAgain();

  PluginMainProc entry_;
  FilterRecord otherRecord_ = {};
  std::map<Handle, std::unique_ptr<Block>> blocks_;
  std::map<Handle, Script> scripts_;
  Buffer in_, out_;
  bool outIsBent_ = false;
};
