#include <utility>

#include "pixels/line_kernels.h"
#include "pixels/samples.h"
#include "support/cpu.h"
#if defined(VORN_X86)
#include "pixels/x86/kernels.h"
#endif

namespace vorn {
namespace {

// A form of 0 stands for a step that is only known at run time.
template <class Source, class Destination, int kSourceForm, int kDestinationForm>
void copySamples(const uint8_t* source,
                 ptrdiff_t sourceStep,
                 uint8_t* destination,
                 ptrdiff_t destinationStep,
                 int32_t count) {
    if constexpr (kSourceForm == 1 && kDestinationForm == 1 &&
                  sizeof(Source) == sizeof(Destination)) {
        std::memcpy(destination, source, static_cast<size_t>(count) * sizeof(Source));
    } else {
        constexpr ptrdiff_t kSourceStep = kSourceForm * sizeof(Source);
        constexpr ptrdiff_t kDestinationStep = kDestinationForm * sizeof(Destination);
        const ptrdiff_t in = kSourceForm == 0 ? sourceStep : kSourceStep;
        const ptrdiff_t out = kDestinationForm == 0 ? destinationStep : kDestinationStep;
        for (ptrdiff_t x = 0; x < count; x++) {
            const auto sample = loadSample<Source>(source + x * in);
            storeSample(destination + x * out, resizedSample<Destination>(sample));
        }
    }
}

template <class Source, class Destination, int... kForms>
constexpr void fillForms(CopyKernel (&form)[kStepForms][kStepForms],
                         std::integer_sequence<int, kForms...>) {
    ((form[kForms / kStepForms][kForms % kStepForms] =
          copySamples<Source, Destination, kForms / kStepForms, kForms % kStepForms>),
     ...);
}

constexpr CopyKernels plainKernels() {
    CopyKernels kernels{};
    constexpr auto kForms = std::make_integer_sequence<int, kStepForms * kStepForms>{};
    fillForms<uint8_t, uint8_t>(kernels.form[0], kForms);
    fillForms<uint8_t, uint16_t>(kernels.form[1], kForms);
    fillForms<uint16_t, uint8_t>(kernels.form[2], kForms);
    fillForms<uint16_t, uint16_t>(kernels.form[3], kForms);
    return kernels;
}

int stepForm(ptrdiff_t step, bool wide) {
    const ptrdiff_t samples = wide ? step >> 1 : step;
    const bool whole = !wide || (step & 1) == 0;
    return samples >= 1 && samples < kStepForms && whole ? static_cast<int>(samples) : 0;
}

}  // namespace

const CopyKernels& copyKernels() {
    static constexpr CopyKernels kPlain = plainKernels();
#if defined(VORN_X86)
    return chooseKernels<CopyKernels>(kPlain, x86::overwrite);
#else
    return kPlain;
#endif
}

CopyKernel copyKernelFor(uint32_t sizeFlags, ptrdiff_t sourceStep, ptrdiff_t destinationStep) {
    const int sourceForm = stepForm(sourceStep, (sizeFlags & 2) != 0);
    const int destinationForm = stepForm(destinationStep, (sizeFlags & 1) != 0);
    return copyKernels().form[sizeFlags][sourceForm][destinationForm];
}

}  // namespace vorn
