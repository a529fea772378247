#include "geomath/proj/methods/kms_conversion.h"

#include <atomic>
#include <cmath>
#include <limits>

#include "geomath/proj/internal/kms_blocks.h"

namespace zel_cs::geomath {
namespace {

constexpr int kNoSuchSystem = 1;

int PrepareNothing(double&, double&, int) { return 0; }

int ConvertOwnSystem(double a, double b, double& outA, double& outB, int system, int) {
  if (system != kKmsOwnSystem) return kNoSuchSystem;
  outA = a;
  outB = b;
  return 0;
}

std::atomic<KmsPrepareFunction> currentPrepare{&PrepareNothing};
std::atomic<KmsConvertFunction> currentConvert{&ConvertOwnSystem};

}  // namespace

KmsConversion SetKmsConversion(KmsConversion conversion) noexcept {
  return {currentPrepare.exchange(conversion.prepare ? conversion.prepare : &PrepareNothing),
          currentConvert.exchange(conversion.convert ? conversion.convert : &ConvertOwnSystem)};
}

namespace {

// `step` of the points that have come so far.
template <class Step>
void RunEach(double* first, double* second, std::size_t count, Step step) {
  for (std::size_t i = 0; i < count; ++i)
    if (std::isfinite(first[i] + second[i]) && step(first[i], second[i]) != 0)
      first[i] = std::numeric_limits<double>::quiet_NaN();
}

}  // namespace

bool KmsPreparesNothing() { return currentPrepare.load() == &PrepareNothing; }

bool KmsConvertsNothing(int system) {
  return currentConvert.load() == &ConvertOwnSystem && system == kKmsOwnSystem;
}

void KmsPrepareBlock(double* lat, double* lon, std::size_t count, int direction) {
  const KmsPrepareFunction prepare = currentPrepare.load();
  if (prepare == &PrepareNothing) return;
  RunEach(lat, lon, count, [&](double& b, double& l) { return prepare(b, l, direction); });
}

void KmsConvertBlock(double* a, double* b, std::size_t count, int system, int direction) {
  const KmsConvertFunction convert = currentConvert.load();
  if (convert == &ConvertOwnSystem && system == kKmsOwnSystem) return;
  RunEach(a, b, count,
          [&](double& x, double& y) { return convert(x, y, x, y, system, direction); });
}

int KmsPrepare(double& lat, double& lon, int direction) {
  return currentPrepare.load()(lat, lon, direction);
}

int KmsConvert(double a, double b, double& outA, double& outB, int system, int direction) {
  return currentConvert.load()(a, b, outA, outB, system, direction);
}

}  // namespace zel_cs::geomath
