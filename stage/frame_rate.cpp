#include "frame_rate.h"

#include <cmath>

namespace stage {

double exact_frame_rate(double written) {
    constexpr double kRounding = 0.004;  // of rates with two decimals: 23.98
    const double television = std::round(written * 1.001) * 1000.0 / 1001.0;
    return std::abs(written - television) < kRounding && written != std::round(written) ? television : written;
}

}  // namespace stage
