// Fuzzes the reading of a kilometric scale file (`kontavo mileage scale import`): no input may
// crash it; a scale it accepts writes back to text that reads the same, and gives an allowance
// (or none) for any distance without overflow.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "accounts/mileagescale.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  std::vector<LMileageScale> scales;
  std::string error;
  if (!LMileageScaleParse(text, scales, error)) {
    if (error.empty() || !scales.empty()) std::abort();
    return 0;
  }
  for (const LMileageScale& scale : scales) {
    std::vector<LMileageScale> again;
    if (!LMileageScaleParse(LMileageScaleText(scale), again, error) || again.size() != 1 ||
        LMileageScaleText(again[0]) != LMileageScaleText(scale))
      std::abort();
    for (const LMileageBand& band : scale.bands) {
      long long cents = 0;
      for (long long km : {1LL, band.upToKm, 100000LL})
        if (LMileageAllowance(scale, band.kind, band.minHorsepower, true, km, cents) && cents < 0) std::abort();
    }
  }
  return 0;
}
