// What test_saver has written.
#pragma once

#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

#include "tests/conversation/pictures.h"
#include "tests/modules/saved_picture.h"

class Saved {
  public:
    explicit Saved(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        bytes_.assign(std::istreambuf_iterator<char>(file), {});
        EXPECT_GE(bytes_.size(), sizeof head_) << path;
        if (bytes_.size() >= sizeof head_) std::memcpy(&head_, bytes_.data(), sizeof head_);
    }

    const SavedHead& head() const { return head_; }

    // What the saver was told with the command to save.
    const VORN_TagItem* told() const {
        return reinterpret_cast<const VORN_TagItem*>(bytes_.data() + sizeof head_);
    }
    int32_t toldNumber(uint32_t id) const {
        const VORN_TagItem* item = VORN_L_TagFind(told(), id);
        return item ? VORN_L_TagGetLongVal(item) : -1;
    }

    std::vector<SavedBlock> blocks() const {
        std::vector<SavedBlock> all(static_cast<size_t>(head_.blocks));
        std::memcpy(all.data(), bytes_.data() + sizeof head_ + toldBytes(),
                    all.size() * sizeof(SavedBlock));
        return all;
    }

    Picture picture() const {
        Picture result =
            plainPicture({head_.width, head_.height, head_.channels, head_.bytesPerChannel});
        const uint8_t* at = reinterpret_cast<const uint8_t*>(bytes_.data()) + sizeof head_ +
                            toldBytes() + static_cast<size_t>(head_.blocks) * sizeof(SavedBlock);
        const size_t size = static_cast<size_t>(head_.width * head_.height * head_.channels *
                                                head_.bytesPerChannel);
        EXPECT_EQ(reinterpret_cast<const uint8_t*>(bytes_.data()) + bytes_.size(), at + size);
        std::memcpy(result.record.channelPlace[0], at, size);
        return result;
    }

  private:
    size_t toldBytes() const { return static_cast<size_t>(head_.tagBytes); }

    std::vector<char> bytes_;
    SavedHead head_;
};
