#include "scale/bicubic_plan.h"

#include <algorithm>
#include <cmath>

namespace vorn {
namespace {

constexpr double kTiny = 1.0 / (1 << 20);

// The Mitchell-Netravali cubics with C = (1 - B) / 2, as the polynomials of its two sections.
class CubicKernel {
  public:
    // B = C = 1/3 for a blur of 1 or more, towards the cubic B-spline (B = 1, C = 0) below.
    explicit CubicKernel(double blur) {
        if (blur >= 1.0) return;
        const double b = std::min(5.0 / 3.0 - (4.0 / 3.0) * blur, 1.0);
        near3_ = (9.0 - 6.0 * b) / 6.0;
        near2_ = (9.0 * b - 15.0) / 6.0;
        near0_ = (6.0 - 2.0 * b) / 6.0;
        far3_ = (2.0 * b - 3.0) / 6.0;
        far2_ = (15.0 - 9.0 * b) / 6.0;
        far1_ = (12.0 * b - 24.0) / 6.0;
        far0_ = (12.0 - 4.0 * b) / 6.0;
    }

    double operator()(double x) const {
        const double d = std::fabs(x);
        if (d < 1.0) return near3_ * d * d * d + near2_ * d * d + near0_;
        if (d < 2.0) return far3_ * d * d * d + far2_ * d * d + far1_ * d + far0_;
        return 0.0;
    }

  private:
    double near3_ = 7.0 / 6.0;
    double near2_ = -2.0;
    double near0_ = 8.0 / 9.0;
    double far3_ = -7.0 / 18.0;
    double far2_ = 2.0;
    double far1_ = -10.0 / 3.0;
    double far0_ = 16.0 / 9.0;
};

// Turns weights into whole numbers that add up to kBicubicUnit. What is cut off one weight is
// carried into the next, from the image's edge towards its middle.
void roundWeights(
    const double* exact, double sum, int32_t count, bool fromFirst, int16_t* weights) {
    const double scale = kBicubicUnit / sum;
    double carry = 0.5;
    for (int32_t i = 0; i < count; ++i) {
        const int32_t k = fromFirst ? i : count - 1 - i;
        const double weight = exact[k] * scale + carry + kTiny;
        weights[k] = static_cast<int16_t>(std::floor(weight));
        carry = weight - std::floor(weight);
    }
}

}  // namespace

// The filter at one ratio: how far it reaches and how it is stepped through.
struct BicubicPlan::Filter {
    double blur;
    double ratio;    // source items for each destination item
    double radius;   // in source items
    double step;     // kernel distance of neighbouring source items
    double advance;  // kernel distance of neighbouring destination items

    Filter(int32_t in, int32_t out, double wantedBlur)
        : blur(wantedBlur), ratio(static_cast<double>(in) / out) {
        const double inverse = static_cast<double>(out) / in;
        if (in <= out) {
            if (blur < 1.0) blur = 0.75 * blur + 0.25;
            radius = 2.0 * blur;
            step = 1.0 / blur;
            advance = ratio / blur;
        } else {
            if (blur < 1.0) blur = 1.0 - (1.0 - inverse * 0.25) * (1.0 - blur);
            radius = 2.0 * blur * ratio;
            step = inverse / blur;
            advance = 1.0 / blur;
        }
    }
};

bool BicubicPlan::build(int32_t in, int32_t out, double blur) {
    inSize = in;
    outSize = out;
    const Filter filter(in, out, blur);
    const size_t total = placeContributions(filter);
    if (total == 0) return false;
    weights.reset(static_cast<int16_t*>(AllocMemory(total * sizeof(int16_t), MEMORY_Clear)));
    return weights && fillWeights(filter);
}

// The source items of every position; the result is the number of weights, 0 when memory is short.
size_t BicubicPlan::placeContributions(const Filter& filter) {
    const auto items = static_cast<size_t>(outSize);
    contributions.reset(static_cast<Contribution*>(AllocMemory(items * sizeof(Contribution), 0)));
    firsts.reset(static_cast<int32_t*>(AllocMemory(items * sizeof(int32_t), 0)));
    if (!contributions || !firsts) return 0;
    size_t total = 0;
    maxCount = 0;
    double centre = 0.5 * filter.ratio - 0.5;
    for (int32_t i = 0; i < outSize; ++i, centre += filter.ratio) {
        const double left = std::ceil(centre - filter.radius + kTiny);
        const double right = std::floor(centre + filter.radius - kTiny);
        const int32_t first = std::clamp(static_cast<int32_t>(left), 0, inSize - 1);
        const int32_t last = std::clamp(static_cast<int32_t>(right), first, inSize - 1);
        const int32_t count = last - first + 1;
        contributions.get()[i] = {first, count, total};
        firsts.get()[i] = first;
        maxCount = std::max(maxCount, count);
        total += static_cast<size_t>((count + kWeightRun - 1) / kWeightRun * kWeightRun);
    }
    return total;
}

// False when memory is short.
bool BicubicPlan::fillWeights(const Filter& filter) {
    const Owned<double> exact(
        static_cast<double*>(AllocMemory(static_cast<size_t>(maxCount) * sizeof(double), 0)));
    if (!exact) return false;
    const CubicKernel kernel(filter.blur);
    double offset = (filter.advance - filter.step) * 0.5;
    for (int32_t i = 0; i < outSize; ++i, offset += filter.advance) {
        const Contribution& entry = contributions.get()[i];
        double x = offset - entry.first * filter.step;
        double sum = 0.0;
        for (int32_t k = 0; k < entry.count; ++k, x -= filter.step) {
            exact.get()[k] = kernel(x);
            sum += exact.get()[k];
        }
        int16_t* out = weights.get() + entry.weights;
        if (entry.count == 1) {
            *out = kBicubicUnit;  // a single sample is taken as it is
        } else {
            roundWeights(exact.get(), sum, entry.count, 2 * i < outSize, out);
        }
    }
    return true;
}

void BicubicPlan::release() {
    contributions.reset();
    firsts.reset();
    weights.reset();
}

}  // namespace vorn
