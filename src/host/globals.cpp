// The module's two variables; everything else lives in host handles.
#include "host/globals.h"

FilterRecord* gFilterRecord = nullptr;
SPBasicSuite* sSPBasic = nullptr;
