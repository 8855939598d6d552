// A module's end of a connection inside the test: it plays a script of messages on a thread of its
// own, so that sanitizers see both sides and every byte can be chosen.
#pragma once

#include <unistd.h>
#include <vorn/host.h>
#include <vorn/library.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/process.h"
#include "tags/tag_walk.h"
#include "tests/support/message_bytes.h"
#include "transport/connection.h"
#include "transport/image.h"
#include "transport/os_layer.h"
#include "transport/tag_exchange.h"

// The value of ITAG_DataFormat in a user tag list.
struct FormatTag {
    uint32_t byteCount = sizeof(VORN_DataFormat);
    VORN_DataFormat format;
};

// A module's command line for the connection, with descriptors of its own for the module to close.
inline std::vector<std::string> commandLineOf(const SharedStuff& stuff) {
    std::vector<std::string> words = {std::to_string(::dup(stuff.shm.handle)), stuff.shm.name};
    for (const auto& entry : stuff.semaphores->entry) {
        words.push_back(std::to_string(::dup(entry.handle)));
        words.push_back(entry.name);
    }
    for (const int32_t number : {stuff.writeOffset, stuff.writeSize, stuff.readOffset,
                                 stuff.readSize, vorn::platform::currentThreadId()}) {
        words.push_back(std::to_string(number));
    }
    return words;
}

inline std::vector<char*> argumentsOf(std::vector<std::string>& words) {
    std::vector<char*> arguments;
    for (auto& word : words) arguments.push_back(word.data());
    return arguments;
}

// A host's handle with a connection.
class HostEnd {
  public:
    explicit HostEnd(int32_t type)
        : image_(VORN_L_ImageVaCreateHandle(0, MTAG_ModuleType, VORN_Word(type), TAG_End)) {
        vorn::SharedStuffCreate(*image_, type);
    }
    ~HostEnd() {
        vorn::SharedStuffClose(*image_);
        VORN_L_ImageDestroyHandle(image_);
    }
    HostEnd(const HostEnd&) = delete;
    HostEnd& operator=(const HostEnd&) = delete;

  protected:
    VORN_Image* const image_;
};

class ScriptedPeer : public HostEnd {
  public:
    explicit ScriptedPeer(int32_t type = VORN_LOADER) : HostEnd(type) {}
    ~ScriptedPeer() { join(); }

    VORN_Image* image() { return image_; }

    // Steps of the script, in order.
    ScriptedPeer& takes() {
        steps_.push_back([this] { take(); });
        return *this;
    }
    ScriptedPeer& sends(Bytes message) {
        steps_.push_back([this, message = std::move(message)] { send(message); });
        return *this;
    }

    // Plays the steps while `host` runs, and waits for their end.
    template <class Host>
    auto play(Host host) {
        thread_ = std::thread([this] {
            for (const auto& step : steps_) step();
        });
        auto result = host();
        join();
        steps_.clear();
        return result;
    }

    // The host's messages that the script took.
    const std::vector<Bytes>& taken() const { return taken_; }
    const VORN_TagItem* takenList(size_t index = 0) const {
        return reinterpret_cast<const VORN_TagItem*>(taken_.at(index).data());
    }

    int32_t errorCode() const { return VORN_ErrorPairCode(VORN_H_ImageGetError(image_)); }

  private:
    void take() {
        vorn::SemWait(*image_->stuff.semaphores, 1);
        const auto* list = reinterpret_cast<const VORN_TagItem*>(image_->stuff.writePointer);
        const auto* bytes = image_->stuff.writePointer;
        taken_.emplace_back(bytes, bytes + VORN_L_TagListSize(list, nullptr) + 8);
        vorn::SemPost(*image_->stuff.semaphores, 0);
    }
    void send(const Bytes& message) {
        vorn::SemWait(*image_->stuff.semaphores, 3);
        std::copy(message.begin(), message.end(), image_->stuff.readPointer);
        vorn::SemPost(*image_->stuff.semaphores, 2);
    }
    void join() {
        if (thread_.joinable()) thread_.join();
    }

    std::vector<std::function<void()>> steps_;
    std::vector<Bytes> taken_;
    std::thread thread_;
};
