// digests POINTS [NAME]: one line for each conversion, its name and the digest of the results of that
// many points; with NAME for one of them. GEOMATH_INSTRUCTION_SET=baseline, avx2 or avx512 chooses.
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "geomath/geomath.h"
#include "geomath/simd/instruction_set.h"
#include "tests/digests/digest.h"

namespace {

namespace simd = zel_cs::geomath::simd;

bool ChooseInstructionSet() {
  const char* name = std::getenv("GEOMATH_INSTRUCTION_SET");
  if (!name) return true;
  const auto wanted = std::strcmp(name, "avx512") == 0 ? simd::InstructionSet::avx512
                      : std::strcmp(name, "avx2") == 0 ? simd::InstructionSet::avx2
                                                       : simd::InstructionSet::baseline;
  simd::ForceInstructionSet(wanted);
  return simd::ActiveInstructionSet() == wanted;
}

}  // namespace

int main(int argc, char** argv) {
  constexpr int kSkipped = 77;
  if (!ChooseInstructionSet()) return kSkipped;
  const std::size_t points = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 100000;
  std::vector<DigestSubject> subjects;
  AppendProjections(subjects);
  AppendTransformations(subjects);
  AppendHeights(subjects);
  Block block;
  for (const DigestSubject& subject : subjects) {
    if (argc > 2 && subject.name != argv[2]) continue;
    Random random;
    Digest digest;
    for (std::size_t done = 0; done < points; done += kDigestBlock)
      subject.convert(random, block, digest);
    std::printf("%s %016" PRIx64 "\n", subject.name.c_str(), digest.Value());
  }
}
