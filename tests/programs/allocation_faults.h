// What module_with_allocation_faults exports beside the entry.
#pragma once

struct AllocationFaults {
  int first;  // the failing allocation, counted from 0 since the call; -1: none
  int count;  // so many from there on fail
};

extern "C" {
// Starts counting anew.
__attribute__((visibility("default"))) void failAllocations(AllocationFaults faults);
// Of all threads, since failAllocations; those that failed included.
__attribute__((visibility("default"))) int allocationCount();
}
