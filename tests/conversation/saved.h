// What test_saver has written.
#pragma once

#include <cstring>
#include <vector>

#include "tests/conversation/pictures.h"
#include "tests/modules/saved_picture.h"
#include "tests/scratch_home.h"

class Saved {
  public:
    explicit Saved(const std::string& path) : bytes_(contentOf(path)) {
        EXPECT_GE(bytes_.size(), sizeof head_) << path;
        if (bytes_.size() >= sizeof head_) std::memcpy(&head_, bytes_.data(), sizeof head_);
    }

    // What the saver was told with the command to save.
    const VORN_TagItem* told() const {
        return reinterpret_cast<const VORN_TagItem*>(bytes_.data() + sizeof head_);
    }
    int32_t toldNumber(uint32_t id) const {
        const VORN_TagItem* item = VORN_L_TagFind(told(), id);
        return item ? VORN_L_TagGetLongVal(item) : -1;
    }

    Picture picture() const {
        Picture result =
            plainPicture({head_.width, head_.height, head_.channels, head_.bytesPerChannel});
        const auto size = static_cast<size_t>(head_.width * head_.height * head_.channels *
                                              head_.bytesPerChannel);
        const size_t place = sizeof head_ + static_cast<size_t>(head_.tagBytes);
        EXPECT_EQ(bytes_.size(), place + size);
        std::memcpy(result.record.channelPlace[0], bytes_.data() + place, size);
        return result;
    }

  private:
    std::string bytes_;
    SavedHead head_;
};
