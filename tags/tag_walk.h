// Stepping through a tag list in memory:
//
//     for (auto* item = firstItem(list); item->id != TAG_End; item = nextItem(item))
//
// meets every item but TAG_Goto, hidden ones (TAG_SkipTag) included, and stops at the end item. The
// list is trusted.
#pragma once

#include <vorn/library.h>

#include <bit>
#include <cstdint>
#include <cstring>

namespace vorn {

static_assert(std::endian::native == std::endian::little, "items hold the machine's own numbers");
static_assert(sizeof(VORN_TagItem) == 8 && offsetof(VORN_TagItem, length) == 4);

inline constexpr uint32_t kItemHead = sizeof(VORN_TagItem);
inline constexpr uint32_t kEndItemSize = kItemHead;
inline constexpr uint32_t kLongItemSize = kItemHead + sizeof(int32_t);
inline constexpr uint32_t kDoubleItemSize = kItemHead + sizeof(double);
inline constexpr uint32_t kGotoItemSize = kItemHead + sizeof(VORN_TagItem*);

inline constexpr uint32_t roundUp4(uint32_t size) { return (size + 3) & ~uint32_t{3}; }

inline const uint8_t* itemData(const VORN_TagItem* item) {
    return reinterpret_cast<const uint8_t*>(item + 1);
}

inline uint32_t itemDataSize(const VORN_TagItem* item) { return item->length - kItemHead; }

inline const VORN_TagItem* firstItem(const VORN_TagItem* list) {
    while (list->id == TAG_Goto) {
        // Items are aligned to 4 only, which is less than an address wants.
        std::memcpy(&list, itemData(list), sizeof list);
    }
    return list;
}

inline const VORN_TagItem* nextItem(const VORN_TagItem* item) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(item);
    return firstItem(reinterpret_cast<const VORN_TagItem*>(bytes + item->length));
}

}  // namespace vorn
