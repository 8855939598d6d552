// The messages of a module, and what a host makes of them: the input is what the module sends from
// its start on. The first byte says which kind of module it is, how large its area, and what the
// host wishes; then come the messages, each behind two bytes with its length, in whose highest bit
// it says that it takes a message of the host before.
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "tests/lies/talk.h"

namespace {

constexpr uint32_t kTakesBefore = 0x8000;

std::vector<ScriptStep> scriptFrom(std::span<const uint8_t> input) {
    std::vector<ScriptStep> steps;
    while (input.size() > 2) {
        const uint32_t word = input[0] + 256u * input[1];
        const size_t length = std::min<size_t>(word % kTakesBefore, input.size() - 2);
        const auto message = input.subspan(2, length);
        if (word & kTakesBefore) steps.push_back({true});
        if (length > 0) steps.push_back({false, Bytes(message.begin(), message.end())});
        input = input.subspan(2 + length);
    }
    steps.push_back({true});  // the end
    return steps;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    Stream stream;
    stream.type = data[0] & 1 ? VORN_LOADER : VORN_SAVER;
    stream.format = formatOf(DF_LineInterleaved8, 7, 7, 1 + (data[0] & 3));
    stream.hasCommand = data[0] & 8;
    const uint32_t areaSize = 8 + 32u * (data[0] >> 4) * (data[0] >> 4);
    ScriptedModule module(stream.type, scriptFrom({data + 1, size - 1}), areaSize, data[0] & 2);
    Random random(data[0]);
    const TalkResult result = talk(random, module, stream);
    if (result.mistake.empty()) return 0;
    std::fprintf(stderr, "%s\n", result.mistake.c_str());
    std::abort();
}
