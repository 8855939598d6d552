// A flat tag list in memory of its own, written item by item.
#pragma once

#include <vorn/library.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

class TagBuilder {
  public:
    TagBuilder& add(uint32_t id, const void* data, size_t size) {
        next_ = VORN_L_writetag(next_, id, data, static_cast<uint32_t>(size));
        return *this;
    }
    TagBuilder& addLong(uint32_t id, int32_t value) { return add(id, &value, sizeof value); }
    TagBuilder& addText(uint32_t id, const std::string& text) {
        return add(id, text.c_str(), text.size() + 1);
    }

    VORN_TagItem* end() {
        VORN_L_writetag(next_, TAG_End, nullptr, 0);
        return reinterpret_cast<VORN_TagItem*>(bytes_);
    }

  private:
    alignas(8) uint8_t bytes_[1024] = {};
    void* next_ = bytes_;
};

struct TrackerDeleter {
    void operator()(VORN_Tracker* tracker) const { FreeTracker(tracker); }
};
using OwnedTracker = std::unique_ptr<VORN_Tracker, TrackerDeleter>;

inline VORN_Word word(const void* pointer) { return reinterpret_cast<VORN_Word>(pointer); }
