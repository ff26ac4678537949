// One run: checks, parameters, three planes in, the equalizer, three planes out.
#include "host/filter_run.h"

#include <algorithm>
#include <climits>

#include "equalizer/band_equalizer.h"
#include "host/parameter_record.h"
#include "image/kiv_image.h"
#include "image/parallel.h"

namespace {

constexpr int colourPlanes = 3;

// -1 for a depth that isn't served.
std::int32_t depthCodeOf(std::int32_t depth) {
  switch (depth) {
    case 8:
      return 0;
    case 16:
      return 1;
    case 32:
      return 2;
    default:
      return -1;
  }
}

OrbelBandEqualizerGuiParams singlePrecision(const ParameterRecord& record) {
  OrbelBandEqualizerGuiParams params = {};
  for (int i = 0; i < 5; ++i) {
    params.contrast[i] = static_cast<float>(record.contrast[i]);
    params.radius[i] = static_cast<float>(record.radius[i]);
    params.threshold[i] = static_cast<float>(record.threshold[i]);
    params.edge[i] = record.edge[i] != 0;
  }
  params.factor = static_cast<float>(record.factor);
  params.half = record.half != 0;
  params.lumi = record.lumi != 0;
  params.width = record.width;
  return params;
}

// Has the host deliver what the record now asks for. False, with the result set, when it can't.
bool advance(Globals* globals) {
  const auto advanceState = globals->filterRecord->advanceState;
  *globals->result = advanceState == nullptr ? OSErr{errPlugInHostInsufficient} : advanceState();
  return *globals->result == noErr;
}

// A buffer that rows of this image fit into. False, with the result set, when it isn't.
bool isUsable(Globals* globals, const void* data, std::int32_t rowBytes, const PS_Database& db) {
  const std::int64_t needed = std::int64_t{db.width} << db.depthCode;
  if (data != nullptr && rowBytes >= needed) return true;
  *globals->result = errPlugInHostInsufficient;
  return false;
}

bool readPlanes(Globals* globals, KivImage& image, PS_Database& db) {
  FilterRecord* host = globals->filterRecord;
  for (std::int16_t i = 0; i < colourPlanes; ++i) {
    host->inLoPlane = i;
    host->inHiPlane = i;
    if (!advance(globals)) return false;
    db.interleave = 1;
    db.inData = host->inData;
    db.inRowBytes = host->inRowBytes;
    if (!isUsable(globals, db.inData, db.inRowBytes, db)) return false;
    ConvertFromPs(image.Plane(i), db);
  }
  return true;
}

void writePlanes(Globals* globals, KivImage& image, PS_Database& db) {
  FilterRecord* host = globals->filterRecord;
  for (std::int16_t i = 0; i < colourPlanes; ++i) {
    host->outLoPlane = i;
    host->outHiPlane = i;
    if (!advance(globals)) return;
    db.interleave = 1;
    db.outData = host->outData;
    db.outRowBytes = host->outRowBytes;
    if (!isUsable(globals, db.outData, db.outRowBytes, db)) return;
    ConvertToPs(image.Plane(i), db);
  }
}

}  // namespace

void DoStart(Globals* globals) {
  const Team threads;
  FilterRecord* host = globals->filterRecord;
  ValidateParameters(globals);
  if (*globals->result != noErr) return;
  ReadScriptParams(globals);
  if (*globals->result != noErr) return;

  PS_Database db = {};
  db.depthCode = depthCodeOf(host->depth);
  if (host->planes < colourPlanes || db.depthCode < 0) {
    *globals->result = filterBadMode;
    return;
  }
  const ParameterRecord* record = CurrentParameters(globals);
  if (record == nullptr) {
    *globals->result = memFullErr;
    return;
  }
  OrbelBandEqualizerGuiParams params = singlePrecision(*record);

  const VRect rect = GetFilterRect();
  SetInRect(rect);
  SetOutRect(rect);
  const std::int64_t width = std::int64_t{rect.right} - rect.left;
  const std::int64_t height = std::int64_t{rect.bottom} - rect.top;
  if (width < 1 || height < 1) return;
  if (width > INT32_MAX || height > INT32_MAX) throw NO_MEMORY_ERROR();
  db.width = static_cast<std::int32_t>(width);
  db.height = static_cast<std::int32_t>(height);

  KivImage image(db.width, db.height, colourPlanes);
  if (!readPlanes(globals, image, db)) return;
  OrbelBandEqualizer(db, params, image);
  writePlanes(globals, image, db);
}
