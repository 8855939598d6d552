#include "tags/gathered_words.h"

#include <cstring>

namespace vorn {

GatheredWords::GatheredWords(va_list arguments) {
    const uint32_t first = va_arg(arguments, unsigned);
    gather(first, arguments);
}

GatheredWords::GatheredWords(uint32_t first, va_list arguments) { gather(first, arguments); }

void GatheredWords::gather(uint32_t first, va_list arguments) {
    uint32_t id = first;
    while (append(id) && id != TAG_End) {
        if (!append(va_arg(arguments, VORN_Word))) {
            return;
        }
        id = va_arg(arguments, unsigned);
    }
}

bool GatheredWords::append(VORN_Word word) {
    if (count_ == capacity_) {
        Owned<VORN_Word> larger(
            static_cast<VORN_Word*>(AllocMemory(2 * capacity_ * sizeof(VORN_Word), 0)));
        if (larger == nullptr) {
            words_ = nullptr;
            return false;
        }
        std::memcpy(larger.get(), words_, count_ * sizeof(VORN_Word));
        grown_ = std::move(larger);
        words_ = grown_.get();
        capacity_ *= 2;
    }
    words_[count_++] = word;
    return true;
}

}  // namespace vorn
