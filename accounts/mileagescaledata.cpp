// The kilometric scales published by the French tax authority, as scale text (mileagescale.h).
// A year range ("2022-2024") stands for a scale carried over unchanged. A business imports the
// scale of a new year with `kontavo mileage scale import FILE`.
#include "accounts/mileagescale.h"

namespace {

constexpr std::string_view kPublished = R"scale(
# Distances of 2020 (scale unchanged since 2019).
2020 car 1 3 5000 0.456 0
2020 car 1 3 20000 0.273 915
2020 car 1 3 - 0.318 0
2020 car 4 4 5000 0.523 0
2020 car 4 4 20000 0.294 1147
2020 car 4 4 - 0.352 0
2020 car 5 5 5000 0.548 0
2020 car 5 5 20000 0.308 1200
2020 car 5 5 - 0.368 0
2020 car 6 6 5000 0.574 0
2020 car 6 6 20000 0.323 1256
2020 car 6 6 - 0.386 0
2020 car 7 - 5000 0.601 0
2020 car 7 - 20000 0.340 1301
2020 car 7 - - 0.405 0
2020 motorcycle 1 2 3000 0.341 0
2020 motorcycle 1 2 6000 0.085 768
2020 motorcycle 1 2 - 0.213 0
2020 motorcycle 3 5 3000 0.404 0
2020 motorcycle 3 5 6000 0.071 999
2020 motorcycle 3 5 - 0.237 0
2020 motorcycle 6 - 3000 0.523 0
2020 motorcycle 6 - 6000 0.068 1365
2020 motorcycle 6 - - 0.295 0
2020 moped 0 - 3000 0.272 0
2020 moped 0 - 6000 0.064 416
2020 moped 0 - - 0.147 0

# Distances of 2021: 10 % more; electric vehicles 20 % more from this year.
2021 electric 20
2021 car 1 3 5000 0.502 0
2021 car 1 3 20000 0.300 1007
2021 car 1 3 - 0.350 0
2021 car 4 4 5000 0.575 0
2021 car 4 4 20000 0.323 1262
2021 car 4 4 - 0.387 0
2021 car 5 5 5000 0.603 0
2021 car 5 5 20000 0.339 1320
2021 car 5 5 - 0.405 0
2021 car 6 6 5000 0.631 0
2021 car 6 6 20000 0.355 1382
2021 car 6 6 - 0.425 0
2021 car 7 - 5000 0.661 0
2021 car 7 - 20000 0.374 1435
2021 car 7 - - 0.446 0
2021 motorcycle 1 2 3000 0.375 0
2021 motorcycle 1 2 6000 0.094 845
2021 motorcycle 1 2 - 0.234 0
2021 motorcycle 3 5 3000 0.444 0
2021 motorcycle 3 5 6000 0.078 1099
2021 motorcycle 3 5 - 0.261 0
2021 motorcycle 6 - 3000 0.575 0
2021 motorcycle 6 - 6000 0.075 1502
2021 motorcycle 6 - - 0.325 0
2021 moped 0 - 3000 0.299 0
2021 moped 0 - 6000 0.070 458
2021 moped 0 - - 0.162 0

# Distances of 2022 (5.4 % more), carried over unchanged for 2023 and 2024.
2022-2024 electric 20
2022-2024 car 1 3 5000 0.529 0
2022-2024 car 1 3 20000 0.316 1065
2022-2024 car 1 3 - 0.370 0
2022-2024 car 4 4 5000 0.606 0
2022-2024 car 4 4 20000 0.340 1330
2022-2024 car 4 4 - 0.407 0
2022-2024 car 5 5 5000 0.636 0
2022-2024 car 5 5 20000 0.357 1395
2022-2024 car 5 5 - 0.427 0
2022-2024 car 6 6 5000 0.665 0
2022-2024 car 6 6 20000 0.374 1457
2022-2024 car 6 6 - 0.447 0
2022-2024 car 7 - 5000 0.697 0
2022-2024 car 7 - 20000 0.394 1515
2022-2024 car 7 - - 0.470 0
2022-2024 motorcycle 1 2 3000 0.395 0
2022-2024 motorcycle 1 2 6000 0.099 891
2022-2024 motorcycle 1 2 - 0.248 0
2022-2024 motorcycle 3 5 3000 0.468 0
2022-2024 motorcycle 3 5 6000 0.082 1158
2022-2024 motorcycle 3 5 - 0.275 0
2022-2024 motorcycle 6 - 3000 0.606 0
2022-2024 motorcycle 6 - 6000 0.079 1583
2022-2024 motorcycle 6 - - 0.343 0
2022-2024 moped 0 - 3000 0.315 0
2022-2024 moped 0 - 6000 0.079 711
2022-2024 moped 0 - - 0.198 0
)scale";

}  // namespace

std::string_view LMileageScalePublished() { return kPublished; }
