// The module's entry, which the host calls once for each step of a filter run.
#pragma once

#include <cstdint>

#include "host/host_interface.h"

struct Globals;

#if defined(_WIN32)
#define EXPORTED_ENTRY extern "C" __declspec(dllexport)
#else
#define EXPORTED_ENTRY extern "C" __attribute__((visibility("default")))
#endif

// Runs one selector. filterRecord is the host's FilterRecord, or its AboutRecord for filterSelectorAbout.
//
// *data keeps the handle of the module's Globals between calls: 0 at the first call, the host's to dispose of. *result
// receives 0 or a code: memFullErr when a handle can't be had, errPlugInHostInsufficient when a suite is missing or the
// host can't deliver buffers, filterBadMode for documents that are not served, -1 after an exception, or a code of the
// host's own calls. About writes no result. No exception leaves the entry. A null record, data or result: nothing is
// done and nothing is written.
EXPORTED_ENTRY void PluginMain(std::int16_t selector, void* filterRecord, std::intptr_t* data, std::int16_t* result);

#undef EXPORTED_ENTRY

// The block of the handle in *data, locked; when *data is 0, a new handle of `size` bytes, which initProc fills before
// the handle goes into *data. Sets *result to 0 and renews the block's `result` and `filterRecord`. Null when the
// handle functions are unusable, or there is no memory, or the lock fails; a new handle whose lock fails is disposed
// of.
Globals* AllocateGlobals(std::int16_t* result, FilterRecord* record, HandleProcs* handleProcs, std::int32_t size,
                         std::intptr_t* data, void (*initProc)(Globals*));

// Fills a new block: zeros, then the two suites (errPlugInHostInsufficient for each that the host refuses, or when
// there is no basic suite), then makes sure that the parameter record exists.
void InitGlobals(Globals* globals);

void DoAbout(AboutRecord* about);
void ShowAbout(int resource);  // there is no about box: does nothing
