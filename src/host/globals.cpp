// What the host's record and suites are; everything else of a run lives in host handles.
#include "host/globals.h"

FilterRecord* gFilterRecord = nullptr;
SPBasicSuite* sSPBasic = nullptr;
