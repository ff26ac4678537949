// Processor features: the bits of the masks that ippGetCpuFeatures and its companions exchange.
#pragma once

#include <cstdint>

enum : std::uint64_t {
  featureMmx = 0x1,
  featureSse = 0x2,
  featureSse2 = 0x4,
  featureSse3 = 0x8,
  featureSsse3 = 0x10,
  featureMovbe = 0x20,
  featureSse41 = 0x40,
  featureSse42 = 0x80,
  featureAvx = 0x100,
  featureAvxEnabled = 0x200,  // the operating system saves the 256-bit registers
  featureAes = 0x400,
  featureClmul = 0x800,
  featureRdrand = 0x2000,
  featureF16c = 0x4000,
  featureAvx2 = 0x8000,  // together with FMA, BMI1 and BMI2
  featureAdx = 0x10000,
  featureRdseed = 0x20000,
  featurePrefetchw = 0x40000,
  featureSha = 0x80000,
  featureAvx512F = 0x100000,
  featureAvx512Cd = 0x200000,
  featureAvx512Er = 0x400000,
  featureAvx512Pf = 0x800000,
  featureAvx512Bw = 0x1000000,
  featureAvx512Dq = 0x2000000,
  featureAvx512Vl = 0x4000000,
  featureAvx512Vbmi = 0x8000000,
  featureMpx = 0x10000000,
  featureAvx5124Fmaps = 0x20000000,
  featureAvx5124Vnniw = 0x40000000,
  featureSignature = 0x80000000,  // the processor signature 0xB10
  featureAvx512Ifma = 0x100000000,
  featureAvx512Enabled = 0x200000000,  // the operating system saves the 512-bit registers

  featuresUnknown = 0x7FFFFFFC00000000,          // bits that name no feature
  featuresTakenAsDetected = 0x8000000000000000,  // see ippSetCpuFeatures
  featuresOfAvx = featureAvx | featureAvx2,      // need featureAvxEnabled
  featuresOfAvx512 = 0x6FF00000,                 // need featureAvx512Enabled
};
