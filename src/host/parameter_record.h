// The filter's settings: the record that the host keeps between runs, and its way in from script descriptors and out.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host/globals.h"
#include "host/script_keys.h"

// A stored format: hosts and recorded actions bring back handles that older builds filled. There is no version field;
// any handle is taken for such a record. The bytes without a meaning keep what the host's new handle held.
struct ParameterRecord {
  unsigned char unused0[9];
  std::uint8_t showDialog;  // whether the host asked for the dialog; there is none, so it has no effect
  unsigned char unused10[6];
  double contrast[5];    // gain of each band in percent, finest first
  double radius[5];      // low-pass radius of each level
  double threshold[5];   // range limit of each level, on a scale of 0 to 255
  std::uint8_t edge[5];  // the level keeps edges (bilateral filter)
  unsigned char unused141[3];
  double factor;      // gain of the coarse residual in percent
  std::uint8_t half;  // add 0.5 at the end
  std::uint8_t lumi;  // work on luminance
  unsigned char unused154[2];
  std::int32_t width;  // of the cross overlay; 0 or less: none
};
static_assert(sizeof(ParameterRecord) == 160);
static_assert(offsetof(ParameterRecord, showDialog) == 9);
static_assert(offsetof(ParameterRecord, contrast) == 16 && scriptKeys[0].offset == 16);
static_assert(offsetof(ParameterRecord, radius) == 56 && scriptKeys[5].offset == 56);
static_assert(offsetof(ParameterRecord, threshold) == 96 && scriptKeys[10].offset == 96);
static_assert(offsetof(ParameterRecord, edge) == 136 && scriptKeys[15].offset == 136);
static_assert(offsetof(ParameterRecord, factor) == 144 && scriptKeys[20].offset == 144);
static_assert(offsetof(ParameterRecord, half) == 152 && scriptKeys[21].offset == 152);
static_assert(offsetof(ParameterRecord, lumi) == 153 && scriptKeys[22].offset == 153);
static_assert(offsetof(ParameterRecord, width) == 156 && scriptKeys[23].offset == 156);

// The record behind FilterRecord.parameters, or null when there is no handle or its block has no address. The host may
// move the block or replace the handle whenever it is called, so ask again after each call.
ParameterRecord* CurrentParameters(const Globals* globals);

// Makes sure that the record exists: with a null FilterRecord.parameters, a new handle of 160 bytes with the default
// values. The result is memFullErr when there is no handle, or when a handle's block has no address; a new handle of
// that kind is disposed of, one that the host kept is left alone.
void ValidateParameters(Globals* globals);

// Reads the descriptor over the record; what the descriptor doesn't hold, or holds with another type, stays as it was,
// and unknown keys are skipped. Without a descriptor, or with tables that we can't use, the record stands. At most
// 10,000 keys are read. Gives the code from closing the reader, which is also stored in the host's result unless it is
// 0 or errMissingParameter. Sets showDialog where the host has descriptors at all.
OSErr ReadScriptParams(Globals* globals);

// Writes the 24 values into a new descriptor, which replaces the host's. Nothing is written without a record. Always 0,
// since nothing on this way is an error to the host.
OSErr WriteScriptParams(Globals* globals);
