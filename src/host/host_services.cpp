// Tests of the host's procedure tables, and calls through them.
#include "host/host_services.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr int handleProcCount = 8;
constexpr int readProcCount = 18;
constexpr int writeProcCount = 16;

// Both descriptor tables are two short integers, then nothing but procedures, from byte 8 on.
template <int count, typename Table>
bool allProcsPresent(const Table* table) {
  static_assert(sizeof(Table) == 8 + count * sizeof(void*));
  std::array<std::uintptr_t, count> procs;
  std::memcpy(procs.data(), reinterpret_cast<const char*>(table) + 8, sizeof procs);
  return std::find(procs.begin(), procs.end(), 0U) == procs.end();
}

void noteNewerVersion(Boolean* outNewerVersion) {
  if (outNewerVersion != nullptr) *outNewerVersion = 1;
}

void disposeDescriptor(PIDescriptorParameters* params, const HandleProcs* procs) {
  if (params->descriptor != nullptr) HostDisposeHandle(procs, params->descriptor);
  params->descriptor = nullptr;
}

}  // namespace

bool HostHandleProcsAvailable(const HandleProcs* procs, Boolean* outNewerVersion) {
  if (procs == nullptr) return false;
  if (procs->handleProcsVersion > 1) noteNewerVersion(outNewerVersion);
  return procs->handleProcsVersion == 1 && procs->numHandleProcs >= handleProcCount && procs->newProc != nullptr &&
         procs->disposeProc != nullptr && procs->getSizeProc != nullptr && procs->setSizeProc != nullptr;
}

Handle HostNewHandle(const HandleProcs* procs, std::int32_t size) {
  return HostHandleProcsAvailable(procs, nullptr) ? procs->newProc(size) : nullptr;
}

Ptr HostLockHandle(const HandleProcs* procs, Handle handle, Boolean moveHigh) {
  const bool usable = HostHandleProcsAvailable(procs, nullptr) && procs->lockProc != nullptr;
  return usable ? procs->lockProc(handle, moveHigh) : nullptr;
}

void HostUnlockHandle(const HandleProcs* procs, Handle handle) {
  if (HostHandleProcsAvailable(procs, nullptr) && procs->unlockProc != nullptr) procs->unlockProc(handle);
}

void HostDisposeHandle(const HandleProcs* procs, Handle handle) {
  if (HostHandleProcsAvailable(procs, nullptr)) procs->disposeProc(handle);
}

bool HostDescriptorAvailable(const PIDescriptorParameters* params, Boolean* outNewerVersion) {
  if (params == nullptr || params->descriptorParametersVersion < 0) return false;
  const ReadDescriptorProcs* read = params->readDescriptorProcs;
  const WriteDescriptorProcs* write = params->writeDescriptorProcs;
  if (params->descriptorParametersVersion > 0 || (read != nullptr && read->readDescriptorProcsVersion > 0) ||
      (write != nullptr && write->writeDescriptorProcsVersion > 0)) {
    noteNewerVersion(outNewerVersion);
    return false;
  }
  if (read == nullptr || write == nullptr) return false;
  if (read->readDescriptorProcsVersion != 0 || write->writeDescriptorProcsVersion != 0) return false;
  // The counts come before the procedures: a shorter table ends before ours does.
  if (read->numReadDescriptorProcs < readProcCount || write->numWriteDescriptorProcs < writeProcCount) return false;
  return allProcsPresent<readProcCount>(read) && allProcsPresent<writeProcCount>(write);
}

OSErr HostCloseReader(PIDescriptorParameters* params, const HandleProcs* procs, PIReadDescriptor* token) {
  const OSErr code = params->readDescriptorProcs->closeReadDescriptorProc(*token);
  disposeDescriptor(params, procs);
  *token = nullptr;
  return code;
}

OSErr HostCloseWriter(PIDescriptorParameters* params, const HandleProcs* procs, PIWriteDescriptor* token) {
  disposeDescriptor(params, procs);
  PIDescriptorHandle descriptor = nullptr;
  params->writeDescriptorProcs->closeWriteDescriptorProc(*token, &descriptor);
  params->descriptor = descriptor;
  params->recordInfo = plugInDialogOptional;
  *token = nullptr;
  return noErr;
}

bool HostPlayDialog(const PIDescriptorParameters* params) {
  return params != nullptr && params->playInfo == plugInDialogDisplay;
}
