// The rows of bodies that this build has: one per processor family on x86-64, one elsewhere.
//
// A body file (*.body.cpp) is compiled once per row, with ROW naming the row's namespace and LANES the number of floats
// in its vector register. Tables of bodies, one object a row, are indexed by rowInForce().
#pragma once

#if defined(__x86_64__)
#define DECLARE_IN_EACH_ROW(declaration) \
  namespace n8_ {                        \
  declaration;                           \
  }                                      \
  namespace y8_ {                        \
  declaration;                           \
  }                                      \
  namespace e9_ {                        \
  declaration;                           \
  }                                      \
  namespace l9_ {                        \
  declaration;                           \
  }                                      \
  namespace k0_ {                        \
  declaration;                           \
  }
#define ADDRESS_IN_EACH_ROW(name) &n8_::name, &y8_::name, &e9_::name, &l9_::name, &k0_::name
constexpr int rowCount = 5;
#else
#define DECLARE_IN_EACH_ROW(declaration) \
  namespace n8_ {                        \
  declaration;                           \
  }
#define ADDRESS_IN_EACH_ROW(name) &n8_::name
constexpr int rowCount = 1;
#endif

// ippJumpIndexForMergedLibs, after the detection where that has not yet run. For tables of the floors above, whose
// callers have no entry that would run it.
int rowInForce();
