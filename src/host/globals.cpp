// The host's record and suites of the present call; everything else of a run lives in host handles.
#include "host/globals.h"

FilterRecord* gFilterRecord = nullptr;
SPBasicSuite* sSPBasic = nullptr;
