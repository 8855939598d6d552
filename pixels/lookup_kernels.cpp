#include "pixels/line_kernels.h"
#include "pixels/samples.h"

namespace vorn {
namespace {

// Indices may lie in memory that another program can write to: each is fetched once, so that what
// was compared is what is used.
template <class Index>
int32_t fetchIndex(const uint8_t* indexAt) {
    const volatile uint8_t* bytes = indexAt;
    int32_t index = bytes[0];
    if constexpr (sizeof(Index) == 2) {
        index |= bytes[1] << 8;
    }
    return index;
}

template <class Index, class Destination>
void lookUp(const uint8_t* indices,
            ptrdiff_t indexStep,
            const uint8_t* table,
            int32_t entries,
            uint8_t* destination,
            ptrdiff_t destinationStep,
            int32_t count) {
    for (ptrdiff_t x = 0; x < count; x++) {
        const int32_t index = fetchIndex<Index>(indices + x * indexStep);
        const auto sample = index < entries
                                ? loadSample<Destination>(
                                      table + index * static_cast<ptrdiff_t>(sizeof(Destination)))
                                : Destination{0};
        storeSample(destination + x * destinationStep, sample);
    }
}

}  // namespace

const LookupKernels& lookupKernels() {
    static constexpr LookupKernels kPlain = {{lookUp<uint8_t, uint8_t>, lookUp<uint8_t, uint16_t>,
                                              lookUp<uint16_t, uint8_t>,
                                              lookUp<uint16_t, uint16_t>}};
    return kPlain;
}

}  // namespace vorn
