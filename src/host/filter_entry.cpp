// The entry: finds the module's block, dispatches on the selector, and lets no exception out.
#include "host/filter_entry.h"

#include "host/filter_run.h"
#include "host/globals.h"
#include "host/host_services.h"
#include "host/parameter_record.h"
#include "image/float_environment.h"

namespace {

constexpr int aboutResource = 16000;
constexpr std::int16_t exceptionResult = -1;

bool isEntered = false;  // a call is running

// A host may enter again from within a callback, with another record and the same block. What the outer call keeps for
// its duration is put back behind the inner one.
class OuterCall {
 public:
  // data is what the inner call finds as its block's handle, 0 where it has none.
  explicit OuterCall(std::intptr_t data) {
    if (isInner_ && data != 0) block_ = reinterpret_cast<Handle>(data);
    if (Globals* const globals = block(); globals != nullptr) globals_ = *globals;
    isEntered = true;
  }
  OuterCall(const OuterCall&) = delete;
  OuterCall& operator=(const OuterCall&) = delete;
  ~OuterCall() {
    isEntered = isInner_;
    if (!isInner_) return;
    gFilterRecord = record_;
    sSPBasic = suites_;
    if (Globals* const globals = block(); globals != nullptr) {
      globals->result = globals_.result;
      globals->filterRecord = globals_.filterRecord;
    }
  }

 private:
  Globals* block() const { return block_ == nullptr ? nullptr : reinterpret_cast<Globals*>(*block_); }

  bool isInner_ = isEntered;
  FilterRecord* record_ = gFilterRecord;
  SPBasicSuite* suites_ = sSPBasic;
  Handle block_ = nullptr;
  Globals globals_ = {};
};

void acquireSuite(Globals* globals, const char* name, std::int32_t version, const void** suite) {
  const bool usable = sSPBasic != nullptr && sSPBasic->AcquireSuite != nullptr;
  if (usable && sSPBasic->AcquireSuite(name, version, suite) == 0) return;
  *suite = nullptr;  // whatever the host left there is no suite
  *globals->result = errPlugInHostInsufficient;
}

void doParameters(Globals* globals) {
  ValidateParameters(globals);
  if (ParameterRecord* record = CurrentParameters(globals); record != nullptr) record->showDialog = 1;
}

// Empty rectangles tell the host that nothing more is to come.
void doContinue() {
  SetInRect({0, 0, 0, 0});
  SetOutRect({0, 0, 0, 0});
}

void dispatch(std::int16_t selector, Globals* globals) {
  switch (selector) {
    case filterSelectorParameters:
      doParameters(globals);
      break;
    case filterSelectorPrepare:
      ValidateParameters(globals);
      break;
    case filterSelectorStart:
      DoStart(globals);
      break;
    case filterSelectorContinue:
      doContinue();
      break;
    case filterSelectorFinish:
      WriteScriptParams(globals);
      break;
    default:
      break;
  }
}

void runSelector(std::int16_t selector, FilterRecord* record, std::intptr_t* data, std::int16_t* result) {
  const FloatEnvironment floats;
  sSPBasic = record->sSPBasic;
  Globals* globals = AllocateGlobals(result, record, record->handleProcs, sizeof(Globals), data, InitGlobals);
  if (globals == nullptr) {
    *result = memFullErr;
    return;
  }
  if (globals->channelPortsSuite == nullptr || globals->bufferSuite == nullptr) {
    *result = errPlugInHostInsufficient;
    return;
  }
  dispatch(selector, globals);
  if (*data != 0) HostUnlockHandle(record->handleProcs, reinterpret_cast<Handle>(*data));
}

}  // namespace

void PluginMain(std::int16_t selector, void* filterRecord, std::intptr_t* data, std::int16_t* result) try {
  const bool hasBlock = selector != filterSelectorAbout && data != nullptr && result != nullptr;
  const OuterCall outer(hasBlock ? *data : 0);
  gFilterRecord = static_cast<FilterRecord*>(filterRecord);
  if (filterRecord == nullptr) return;
  if (selector == filterSelectorAbout) {
    auto* about = static_cast<AboutRecord*>(filterRecord);
    sSPBasic = about->sSPBasic;
    DoAbout(about);
  } else if (hasBlock) {
    runSelector(selector, gFilterRecord, data, result);
  }
} catch (...) {
  if (result != nullptr) *result = exceptionResult;
}

Globals* AllocateGlobals(std::int16_t* result, FilterRecord* record, HandleProcs* handleProcs, std::int32_t size,
                         std::intptr_t* data, void (*initProc)(Globals*)) {
  const bool isNew = *data == 0;
  Handle handle = isNew ? HostNewHandle(handleProcs, size) : reinterpret_cast<Handle>(*data);
  if (handle == nullptr) return nullptr;
  auto* globals = reinterpret_cast<Globals*>(HostLockHandle(handleProcs, handle, 1));
  if (globals == nullptr) {
    if (isNew) HostDisposeHandle(handleProcs, handle);
    return nullptr;
  }
  globals->result = result;
  globals->filterRecord = record;
  *result = noErr;
  if (isNew) {
    initProc(globals);
    *data = reinterpret_cast<std::intptr_t>(handle);
  }
  return globals;
}

void InitGlobals(Globals* globals) {
  globals->channelPortsSuite = nullptr;
  globals->bufferSuite = nullptr;
  acquireSuite(globals, kPSChannelPortsSuite, kPSChannelPortsSuiteVersion3, &globals->channelPortsSuite);
  acquireSuite(globals, kPSBufferSuite, kPSBufferSuiteVersion2, &globals->bufferSuite);
  ValidateParameters(globals);
}

void DoAbout(AboutRecord* /*about*/) { ShowAbout(aboutResource); }
void ShowAbout(int /*resource*/) {}
