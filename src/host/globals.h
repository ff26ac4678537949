// What the entry, the parameter record and the run share.
#pragma once

#include <cstdint>

#include "host/host_interface.h"

// Lives in the host handle that the entry's `data` keeps between calls.
struct Globals {
  std::int16_t* result;           // the host's result variable; of the present call only
  FilterRecord* filterRecord;     // of the present call only
  const void* channelPortsSuite;  // null when the host refused it
  const void* bufferSuite;        // likewise; nothing in either suite is called, they only have to be there
};

// Both are set at the start of every call of the entry, and valid during that call. One made from within a callback
// puts back what it found, the block's fields of the present call included.
extern FilterRecord* gFilterRecord;
extern SPBasicSuite* sSPBasic;
