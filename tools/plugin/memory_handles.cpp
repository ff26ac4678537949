#include "plugin/memory_handles.h"

#include <map>
#include <memory>
#include <new>
#include <vector>

namespace orbel {

namespace {

// A handle is the address of `address`, which plug-ins read directly.
struct Block {
  char* address = nullptr;
  std::vector<char> bytes;

  void resize(std::int32_t size) {
    bytes.resize(static_cast<std::size_t>(size));
    address = bytes.data();
  }
};

std::map<Handle, std::unique_ptr<Block>>& blocks() {
  static std::map<Handle, std::unique_ptr<Block>> alive;
  return alive;
}

Block* find(Handle handle) {
  const auto found = blocks().find(handle);
  return found == blocks().end() ? nullptr : found->second.get();
}

Handle newHandle(std::int32_t size) {
  if (size < 0) return nullptr;
  try {
    auto block = std::make_unique<Block>();
    block->resize(size);
    Handle handle = &block->address;
    blocks().emplace(handle, std::move(block));
    return handle;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void disposeHandle(Handle handle) { blocks().erase(handle); }

std::int32_t handleSize(Handle handle) {
  const Block* block = find(handle);
  return block == nullptr ? 0 : static_cast<std::int32_t>(block->bytes.size());
}

OSErr setHandleSize(Handle handle, std::int32_t size) {
  Block* block = find(handle);
  if (block == nullptr) return nilHandleErr;
  if (size < 0) return paramErr;
  try {
    block->resize(size);
    return noErr;
  } catch (const std::bad_alloc&) {
    return memFullErr;
  }
}

// Blocks never move but in setHandleSize, so a lock has nothing to hold.
Ptr lockHandle(Handle handle, Boolean) { return find(handle) == nullptr ? nullptr : *handle; }
void unlockHandle(Handle) {}
void recoverSpace(std::int32_t) {}

HandleProcs table = {
    1, 8, newHandle, disposeHandle, handleSize, setHandleSize, lockHandle, unlockHandle, recoverSpace, disposeHandle};

}  // namespace

HandleProcs& handleProcedures() { return table; }

void disposeAllHandles() { blocks().clear(); }

}  // namespace orbel
