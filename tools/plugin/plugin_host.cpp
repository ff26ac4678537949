#include "plugin/plugin_host.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "files/failure.h"
#include "plugin/memory_handles.h"

namespace orbel {

namespace {

// Sides above this don't count as small in the host's 16-bit coordinates; Photoshop draws the line here, too.
constexpr std::int32_t largestSmallSide = 30000;

struct Run {
  const Document& source;
  std::vector<std::vector<unsigned char>> result;  // what the plug-in writes, three planes
  FilterRecord record{};
  BigDocumentStruct big{};
  PIDescriptorParameters scripting{};
  SPBasicSuite basic{};
  std::array<unsigned char, 256> errorString{};
};

// The callbacks carry no context of their own.
Run* current = nullptr;

Rect narrow(const VRect& r) {
  const auto cut = [](std::int32_t v) { return static_cast<std::int16_t>(v); };
  return {cut(r.top), cut(r.left), cut(r.bottom), cut(r.right)};
}
VRect widen(const Rect& r) { return {r.top, r.left, r.bottom, r.right}; }
bool empty(const VRect& r) { return r.top >= r.bottom || r.left >= r.right; }

VRect asked(const Rect& small, const VRect& large) {
  return current->big.PluginUsing32BitCoordinates != 0 ? large : widen(small);
}
VRect inRect() { return asked(current->record.inRect, current->big.inRect32); }
VRect outRect() { return asked(current->record.outRect, current->big.outRect32); }
VRect maskRect() { return asked(current->record.maskRect, current->big.maskRect32); }

bool deliverable(const VRect& r, std::int16_t low, std::int16_t high) {
  const Document& d = current->source;
  return low == high && low >= 0 && low < 3 && r.top >= 0 && r.left >= 0 && r.bottom <= d.height && r.right <= d.width;
}

std::size_t offset(const VRect& r) {
  const Document& d = current->source;
  return static_cast<std::size_t>(r.top) * d.rowBytes() + static_cast<std::size_t>(r.left * (d.depth / 8));
}

// Delivers one plane each way, straight from the document and into the result: what lies there when the plug-in asks
// for something else has been taken over already.
OSErr advanceState() {
  FilterRecord& r = current->record;
  const VRect in = inRect();
  const VRect out = outRect();
  r.inData = nullptr;
  r.outData = nullptr;
  if (!empty(in)) {
    if (!deliverable(in, r.inLoPlane, r.inHiPlane)) return filterBadParameters;
    const auto& planes = current->source.planes;
    const auto& plane = planes[planes.size() == 1 ? 0 : static_cast<std::size_t>(r.inLoPlane)];
    // The interface has no read-only pointer; a filter keeps its hands off its input.
    r.inData = const_cast<unsigned char*>(plane.data()) + offset(in);
  }
  if (!empty(out)) {
    if (!deliverable(out, r.outLoPlane, r.outHiPlane)) return filterBadParameters;
    r.outData = current->result[static_cast<std::size_t>(r.outLoPlane)].data() + offset(out);
  }
  return noErr;
}

Boolean neverAbort() { return 0; }
void ignoreProgress(std::int32_t, std::int32_t) {}
void ignoreHostCall(std::int16_t, std::intptr_t*) {}
void ignoreEvent(void*) {}

// The two suites that a filter may insist on. They are here to be found; nothing of ours stands behind them, so a
// caller meets null procedures.
struct Suite {
  const char* name;
  std::int32_t version;
  std::array<void*, 32> procedures;
};
const std::array<Suite, 2> suites = {
    {{kPSChannelPortsSuite, kPSChannelPortsSuiteVersion3, {}}, {kPSBufferSuite, kPSBufferSuiteVersion2, {}}}};

const Suite* findSuite(const char* name, std::int32_t version) {
  const auto* const found = std::find_if(suites.begin(), suites.end(), [&](const Suite& suite) {
    return std::strcmp(suite.name, name) == 0 && suite.version == version;
  });
  return found == suites.end() ? nullptr : found;
}
std::int32_t acquireSuite(const char* name, std::int32_t version, const void** procedures) {
  const Suite* suite = findSuite(name, version);
  *procedures = suite == nullptr ? nullptr : suite->procedures.data();
  return suite == nullptr ? -1 : 0;
}
std::int32_t releaseSuite(const char* name, std::int32_t version) {
  return findSuite(name, version) == nullptr ? -1 : 0;
}

void describeDocument(Run& run) {
  const Document& d = run.source;
  FilterRecord& r = run.record;
  const VRect whole = {0, 0, d.height, d.width};
  const bool large = std::max(d.width, d.height) > largestSmallSide;
  const auto side = [&](std::int32_t pixels) { return static_cast<std::int16_t>(std::min(pixels, largestSmallSide)); };

  r.imageSize = {side(d.height), side(d.width)};
  r.wholeSize = r.imageSize;
  r.filterRect = narrow({0, 0, r.imageSize.v, r.imageSize.h});
  run.big.PluginUsing32BitCoordinates = large ? 1 : 0;
  run.big.imageSize32 = {d.height, d.width};
  run.big.wholeSize32 = run.big.imageSize32;
  run.big.filterRect32 = whole;

  r.planes = 3;
  r.depth = d.depth;
  r.imageMode = d.depth == 8 ? plugInModeRGBColor : d.depth == 16 ? plugInModeRGB48 : plugInModeRGB96;
  r.inLayerPlanes = 3;
  r.outLayerPlanes = 3;
  r.absLayerPlanes = 3;
  r.inColumnBytes = d.depth / 8;
  r.outColumnBytes = d.depth / 8;
  r.inRowBytes = static_cast<std::int32_t>(d.rowBytes());
  r.outRowBytes = r.inRowBytes;
  r.filterCase = 1;  // a flat picture without a selection
  r.imageHRes = 72 << 16;
  r.imageVRes = 72 << 16;
  r.inputRate = 1 << 16;
  r.maskRate = 1 << 16;
}

void offerServices(Run& run, const std::vector<ScriptValue>& script) {
  FilterRecord& r = run.record;
  r.hostSig = fourCharacters("orbl");
  r.abortProc = neverAbort;
  r.progressProc = ignoreProgress;
  r.hostProc = ignoreHostCall;
  r.processEvent = ignoreEvent;
  r.advanceState = advanceState;
  r.handleProcs = &handleProcedures();
  r.errorString = run.errorString.data();
  r.maxSpace = INT32_MAX;
  r.bigDocumentData = &run.big;
  run.basic.AcquireSuite = acquireSuite;
  run.basic.ReleaseSuite = releaseSuite;
  r.sSPBasic = &run.basic;
  run.scripting.playInfo = plugInDialogDontDisplay;
  run.scripting.readDescriptorProcs = &readProcedures();
  run.scripting.writeDescriptorProcs = &writeProcedures();
  run.scripting.descriptor = makeDescriptor(script);
  r.descriptorParameters = &run.scripting;
}

std::string meaning(std::int16_t code) {
  switch (code) {
    case -1:
    case memFullErr:
      return notEnoughMemory;
    case filterBadMode:
      return "the plug-in does not serve pictures of this kind";
    case errPlugInHostInsufficient:
      return "the plug-in misses something in its host";
    case errReportString: {
      const unsigned char* text = current->record.errorString;
      return {text + 1, text + 1 + text[0]};
    }
    default:
      return "the plug-in failed";
  }
}

// The entry, with what the plug-in keeps in its host between two calls.
class Selectors {
 public:
  explicit Selectors(PluginEntry entry) : entry_(entry) {}

  std::int16_t call(std::int16_t selector) {
    std::int16_t result = noErr;
    entry_(selector, &current->record, &data_, &result);
    return result;
  }

 private:
  PluginEntry entry_;
  std::intptr_t data_ = 0;
};

std::int16_t playSelectors(PluginEntry entry) {
  Selectors plugin(entry);
  for (const std::int16_t selector : {filterSelectorParameters, filterSelectorPrepare, filterSelectorStart}) {
    if (const std::int16_t code = plugin.call(selector); code != noErr) return code;
  }
  std::int16_t code = noErr;
  while (code == noErr && !(empty(inRect()) && empty(outRect()) && empty(maskRect()))) {
    code = advanceState();
    if (code == noErr) code = plugin.call(filterSelectorContinue);
  }
  const std::int16_t finished = plugin.call(filterSelectorFinish);
  return code != noErr ? code : finished;
}

// Makes a run the current one, and cleans up behind it.
struct Turn {
  explicit Turn(Run& run) { current = &run; }
  ~Turn() {
    disposeAllHandles();
    current = nullptr;
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
};

}  // namespace

void runPlugin(PluginEntry entry, const std::vector<ScriptValue>& script, Document& document) {
  Run run{document, {}, {}, {}, {}, {}, {}};
  for (std::size_t i = 0; i < 3; ++i) run.result.push_back(document.planes[document.planes.size() == 1 ? 0 : i]);
  const Turn turn(run);
  describeDocument(run);
  offerServices(run, script);

  if (const std::int16_t code = playSelectors(entry); code != noErr) {
    throw PluginRefusal(meaning(code) + " (plug-in result " + std::to_string(code) + ")");
  }
  run.result.resize(document.planes.size());
  document.planes = std::move(run.result);
}

}  // namespace orbel
