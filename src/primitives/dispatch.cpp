// Selection of the row of bodies, and the process-wide state that holds it. No lock guards that state: threads that
// race through the first detection store the same values.

#include "primitives/features.h"
#include "primitives/processor.h"
#include "primitives/rows.h"

extern "C" {
std::int32_t ippJumpIndexForMergedLibs = -1;
}

namespace {

// What a processor has that has the last one of them.
constexpr std::uint64_t upToSse2 = featureMmx | featureSse | featureSse2;
constexpr std::uint64_t upToSse3 = upToSse2 | featureSse3;
constexpr std::uint64_t upToSsse3 = upToSse3 | featureSsse3;
constexpr std::uint64_t upToSse41 = upToSsse3 | featureSse41;
constexpr std::uint64_t upToSse42 = upToSse41 | featureSse42;
constexpr std::uint64_t upToAvx = upToSse42 | featureAvx;
constexpr std::uint64_t upToAvx2 = upToAvx | featureAvx2;
// Of the processors with AVX-512, those for servers and those with very many cores.
constexpr std::uint64_t avx512Core =
    featureAvx512F | featureAvx512Cd | featureAvx512Bw | featureAvx512Dq | featureAvx512Vl;
constexpr std::uint64_t avx512ManyCore = featureAvx512F | featureAvx512Cd | featureAvx512Er | featureAvx512Pf;

std::uint64_t ownFeaturesMask = upToSse2;
std::uint64_t ownFeatures = 0;
bool ownFeaturesAreValid = false;

// Release and acquire, so that whoever sees the guard sees what it guards.
template <typename T>
T load(const T& word) {
  return __atomic_load_n(&word, __ATOMIC_ACQUIRE);
}
template <typename T>
void store(T& word, T value) {
  __atomic_store_n(&word, value, __ATOMIC_RELEASE);
}

std::uint64_t ownGetMaskFeatures() {
  if (!load(ownFeaturesAreValid)) {
    store(ownFeatures, featureMask(thisProcessor));
    store(ownFeaturesAreValid, true);
  }
  return load(ownFeatures);
}

// What a row asks for: it is chosen when the mask holds all of test, and its bodies use the features of needed.
struct RowRule {
  std::uint64_t test;
  int index;
  std::uint64_t needed;
};

// Best first.
constexpr RowRule rowRules[] = {
    {avx512Core, 4, avx512Core | upToAvx2},
    {avx512ManyCore, 3, avx512ManyCore | upToAvx2},
    {featureAvx2, 3, upToAvx2},
    {featureAvx, 2, upToAvx},
    {featureSse42, 1, upToSse42},
    {featureSse41, 0, upToSse41},
    {featureMovbe, 0, upToSsse3 | featureMovbe},
    {featureSsse3, 0, upToSsse3},
    {featureSse3, 0, upToSse3},
    {featureSse2, 0, upToSse2},
};

void storeIndex(int index) {
  __atomic_store_n(&ippJumpIndexForMergedLibs, index < rowCount ? index : rowCount - 1, __ATOMIC_RELAXED);
}

IppStatus ownSetCpuFeaturesAndIdx(std::uint64_t mask, int* index) {
  IppStatus status = ippStsNoErr;
  if ((mask & featuresTakenAsDetected) != 0) {
    mask &= ~featuresTakenAsDetected;
    store(ownFeatures, load(ownFeaturesMask));
    store(ownFeaturesAreValid, true);
  } else {
    const std::uint64_t detected = ownGetMaskFeatures();
    if ((mask & featuresUnknown) != 0) status = ippStsUnknownFeature;
    if ((mask & featuresOfAvx) != 0 && (detected & featureAvxEnabled) == 0) {
      mask &= ~featuresOfAvx;
      status = ippStsFeatureNotSupported;
    }
    if ((mask & featuresOfAvx512) != 0 && (detected & featureAvx512Enabled) == 0) {
      mask &= ~featuresOfAvx512;
      status = ippStsFeatureNotSupported;
    }
    if ((mask & ~detected) != 0) status = ippStsFeatureNotSupported;
  }

  for (const RowRule& rule : rowRules) {
    if ((mask & rule.test) != rule.test) continue;
    *index = rule.index;
    store(ownFeaturesMask, mask | rule.needed);
    if (status == ippStsNoErr && (mask & rule.needed) != rule.needed) status = ippStsFeaturesCombination;
    return status;
  }
  *index = 0;
  store(ownFeaturesMask, mask | featureMmx | (mask & featureSse));
  return status != ippStsNoErr ? status : ippStsCpuNotSupported;
}

}  // namespace

extern "C" {

IppStatus ippSetCpuFeatures(std::uint64_t features) {
  int index = 0;
  const IppStatus status = ownSetCpuFeaturesAndIdx(features, &index);
  storeIndex(index);
  return status;
}

IppStatus ippInit() {
  std::uint64_t detected = 0;
  const IppStatus status = ippGetCpuFeatures(&detected, nullptr);
  if (status != ippStsNoErr) {
    store(ownFeaturesMask, upToSse2);
    storeIndex(0);
    return status;
  }
  const IppStatus selection = ippSetCpuFeatures(detected);
  return isGenuineIntel(thisProcessor) ? selection : ippStsOtherCpuVendor;
}

IppStatus ippGetCpuFeatures(std::uint64_t* features, std::uint32_t* cpuidInfo) {
  if (features == nullptr) return ippStsNullPtrErr;
  if (!thisProcessor.available) return ippStsCpuNotSupported;
  *features = ownGetMaskFeatures();
  if (cpuidInfo != nullptr) {
    const CpuidRegisters one = thisProcessor.leaf(1, 0);
    cpuidInfo[0] = one.eax;
    cpuidInfo[1] = one.ebx;
    cpuidInfo[2] = one.ecx;
    cpuidInfo[3] = one.edx;
  }
  return ippStsNoErr;
}

IppStatus ippSetCpuFeaturesMask(std::uint64_t features) {
  store(ownFeaturesMask, features);
  return ippStsNoErr;
}

std::uint64_t ippGetEnabledCpuFeatures() { return load(ownFeaturesMask); }

}  // extern "C"

void ippSafeInit() { ippInit(); }

int rowInForce() {
  if (jumpIndex() < 0) ippSafeInit();
  return jumpIndex();
}
