// Difference of each pixel from one colour, one pass per arithmetic step.

#include <cmath>

#include "tone/colours.h"

void colourDifference(KivImage& target, const KivImage& lab, const float* reference, const float* weights) {
  const float a0 = reference[1];
  const float b0 = reference[2];
  const float chroma0 = std::sqrt(a0 * a0 + b0 * b0);

  KivImage sum;  // of the terms' squares; the target is written last, so that it may be lab
  KivImage t;
  t = lab.Plane(0) - reference[0];
  t *= weights[2];
  sum = t * t;

  KivImage chroma;
  KivImage u;
  chroma = lab.Plane(1) * lab.Plane(1);
  u = lab.Plane(2) * lab.Plane(2);
  chroma += u;
  chroma.Sqrt();
  KivImage chromaChange;
  chromaChange = chroma - chroma0;
  KivImage scale;
  scale = chroma * 0.045F;
  scale += 1.0F;
  u = chromaChange / scale;
  u *= weights[1];
  u *= u;
  sum += u;

  // Hue: what is left of the distance in the plane of a and b.
  t = lab.Plane(1) - a0;
  u = lab.Plane(2) - b0;
  t *= t;
  u *= u;
  u += t;
  t = chromaChange * chromaChange;
  u -= t;
  u.Sqrt();
  scale = chroma * 0.015F;
  scale += 1.0F;
  u /= scale;
  u *= weights[0];
  u *= u;
  sum += u;

  if (target.channels == 0) target.Init(lab.size, 1);
  target.Plane(0).Sqrt(sum);
}
