// A user tag list that grows entry by entry. What the values point at must outlive it.
#pragma once

#include <vorn/tags.h>

#include <vector>

namespace vorn::tool {

class TagWords {
  public:
    void add(unsigned id, VORN_Word value) {
        words_.back() = id;
        words_.push_back(value);
        words_.push_back(TAG_End);
    }

    void addLong(unsigned id, int32_t value) { add(id, static_cast<VORN_Word>(value)); }

    // The address of a record, a string or a function.
    template <typename Target>
    void addAddress(unsigned id, Target* target) {
        add(id, reinterpret_cast<VORN_Word>(target));
    }

    const VORN_Word* data() const { return words_.data(); }

  private:
    std::vector<VORN_Word> words_ = {TAG_End};
};

}  // namespace vorn::tool
