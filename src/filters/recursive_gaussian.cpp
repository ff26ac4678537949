// The recursive Gaussian of an image, and the recursion along the rows of a plane: a few rows at a time, turned so that
// they lie side by side.

#include "filters/recursive_gaussian.h"

#include <cmath>
#include <cstddef>

#include "filters/gaussian_blur.h"
#include "image/scratch.h"

RecursiveGaussian::RecursiveGaussian(double sigma)
    : q_(sigma <= 2.5 ? 3.97156 - 4.14554 * std::sqrt(1.0 - 0.26891 * sigma) : 0.98711 * sigma - 0.9633) {
  const double q = q_;
  const double b0 = 1.57825 + q * (2.44413 + q * (1.4281 + 0.422205 * q));
  const double b1 = q * (2.44413 + q * (2.85619 + 1.26661 * q));
  const double b2 = q * q * (-1.4281 - 1.26661 * q);
  const double b3 = 0.422205 * (q * q * q);
  gain_ = 1.0 - (b1 + b2 + b3) / b0;
  feedback_[0] = b1 / -b0;
  feedback_[1] = b2 / -b0;
  feedback_[2] = b3 / -b0;
  findEndWeights();
}

// Behind the end the input is u, so the differences d = w - u follow the recursion without input. As state e it has d
// and its first and second backward differences: for a large sigma the latter are small where d hardly changes, and
// written in them no step loses digits. One step is e' = e + N e. What the backward run makes of e is a fixed weighing
// m of it that solves the backward recursion, m e = gain e(0) - (f1 m F e + f2 m F^2 e + f3 m F^3 e) with F = 1 + N,
// for every e:
//   m (gain + (f1 + 2 f2 + 3 f3) N + (f2 + 3 f3) N^2 + f3 N^3) = (gain, 0, 0), as gain = 1 + f1 + f2 + f3.
// The rows of the weights are then m F, m F^2 and m F^3.
void RecursiveGaussian::findEndWeights() {
  const double f2 = feedback_[1];
  const double f3 = feedback_[2];
  const double ofChange = f2 + 2.0 * f3;
  const double n[order][order] = {
      {-gain_, ofChange, -f3}, {-gain_, ofChange - 1.0, -f3}, {-gain_, ofChange - 1.0, -f3 - 1.0}};
  const auto timesN = [&n](const double(&row)[order], double(&product)[order]) {
    for (int j = 0; j < order; ++j) product[j] = row[0] * n[0][j] + row[1] * n[1][j] + row[2] * n[2][j];
  };

  const double factors[order] = {feedback_[0] + 2.0 * f2 + 3.0 * f3, f2 + 3.0 * f3, f3};
  double matrix[order][order];
  for (int i = 0; i < order; ++i) {
    double power[order] = {};  // row i of N^k
    power[i] = 1.0;
    for (int j = 0; j < order; ++j) matrix[i][j] = gain_ * power[j];
    for (const double factor : factors) {
      double next[order];
      timesN(power, next);
      for (int j = 0; j < order; ++j) {
        power[j] = next[j];
        matrix[i][j] += factor * power[j];
      }
    }
  }
  // m is gain times the first row of the inverse: cofactors over the determinant.
  const auto cofactor = [&matrix](int row) {
    const double* const a = matrix[(row + 1) % order];
    const double* const b = matrix[(row + 2) % order];
    return a[1] * b[2] - a[2] * b[1];
  };
  double m[order] = {cofactor(0), cofactor(1), cofactor(2)};
  const double determinant = matrix[0][0] * m[0] + matrix[1][0] * m[1] + matrix[2][0] * m[2];
  for (double& weight : m) weight *= gain_ / determinant;
  for (auto& row : endWeights_) {
    double change[order];
    timesN(m, change);
    for (int j = 0; j < order; ++j) {
      m[j] += change[j];
      row[j] = m[j];
    }
  }
}

namespace {

// Rows that are filtered side by side: enough to keep the arithmetic units busy while each recursion waits for itself.
constexpr int lanes = 8;

struct Lane {
  double of[lanes];
};

Lane loadLane(const double* from) {
  Lane lane;
  for (int i = 0; i < lanes; ++i) lane.of[i] = from[i];
  return lane;
}

}  // namespace

// Sample n of line i stands at n * lanes + i.
void RecursiveGaussian::filterLines(double* samples, int length) const {
  const double gain = gain_;
  const double f1 = feedback_[0];
  const double f2 = feedback_[1];
  const double f3 = feedback_[2];
  // The recent outputs, latest first.
  Lane a = loadLane(samples);
  Lane b = a;
  Lane c = a;
  const auto step = [&](double* at) {
    for (int i = 0; i < lanes; ++i) {
      const double next = (gain * at[i] - (f2 * b.of[i] + f3 * c.of[i])) - f1 * a.of[i];
      c.of[i] = b.of[i];
      b.of[i] = a.of[i];
      a.of[i] = next;
      at[i] = next;
    }
  };
  double* const end = samples + std::ptrdiff_t{length} * lanes;
  const Lane edge = loadLane(end - lanes);
  for (double* at = samples; at != end; at += lanes) step(at);
  for (int i = 0; i < lanes; ++i) {
    const double u = edge.of[i];
    const double change = a.of[i] - b.of[i];
    const double e[order] = {a.of[i] - u, change, change - (b.of[i] - c.of[i])};
    const auto behind = [&](int j) {
      const double(&weights)[order] = endWeights_[j];
      return u + (weights[0] * e[0] + weights[1] * e[1] + weights[2] * e[2]);
    };
    a.of[i] = behind(0);
    b.of[i] = behind(1);
    c.of[i] = behind(2);
  }
  for (double* at = end; at != samples; at -= lanes) step(at - lanes);
}

void RecursiveGaussian::filterRows(KivImage& image, int plane) const {
  const int width = image.size.width;
  const int height = image.size.height;
  const Scratch block = makeScratch(std::int64_t{width} * lanes * std::int64_t{sizeof(double)});
  double* const samples = static_cast<double*>(block.get());
  for (int y = 0; y < height; y += lanes) {
    // The last row stands in for rows that aren't there.
    float* rows[lanes];
    for (int i = 0; i < lanes; ++i) rows[i] = image.At(plane, 0, y + i < height ? y + i : height - 1);
    for (int x = 0; x < width; ++x) {
      for (int i = 0; i < lanes; ++i) samples[std::ptrdiff_t{x} * lanes + i] = double{rows[i][x]};
    }
    filterLines(samples, width);
    for (int x = 0; x < width; ++x) {
      for (int i = 0; i < lanes; ++i) rows[i][x] = static_cast<float>(samples[std::ptrdiff_t{x} * lanes + i]);
    }
  }
}

void gaussianBlurRecursive(KivImage& target, const KivImage& src, double sigma) {
  target.Copy(src);
  const RecursiveGaussian gaussian(sigma);
  if (!gaussian.blurs()) return;
  KivImage turned(target.size.height, target.size.width, 1);
  for (int i = 0; i < target.channels; ++i) {
    gaussian.filterRows(target, i);
    ippiTranspose_32f_C1R(target.planes[i], target.stride, turned.planes[0], turned.stride, target.size);
    gaussian.filterRows(turned, 0);
    ippiTranspose_32f_C1R(turned.planes[0], turned.stride, target.planes[i], target.stride, turned.size);
  }
}
