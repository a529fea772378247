#include "geomath/proj/methods/kms_conversion.h"

#include <atomic>

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

int KmsPrepare(double& lat, double& lon, int direction) {
  return currentPrepare.load()(lat, lon, direction);
}

int KmsConvert(double a, double b, double& outA, double& outB, int system, int direction) {
  return currentConvert.load()(a, b, outA, outB, system, direction);
}

}  // namespace zel_cs::geomath
