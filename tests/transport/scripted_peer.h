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
#include "transport/connection.h"
#include "transport/image.h"
#include "transport/os_layer.h"
#include "transport/tag_exchange.h"

using Bytes = std::vector<uint8_t>;

// A data format with its steps filled in.
inline VORN_DataFormat formatOf(int32_t layout, int32_t width, int32_t height, int32_t channels) {
    VORN_DataFormat format{layout, width, height, channels, 0, 0, {}, {}, {}, {}};
    VORN_L_DataFormatMacroSetup(&format);
    return format;
}

// The value of ITAG_DataFormat in a user tag list.
struct FormatTag {
    uint32_t byteCount = sizeof(VORN_DataFormat);
    VORN_DataFormat format;
};

// A message as its bytes, written item by item or wrong on purpose.
class MessageBytes {
  public:
    MessageBytes& item(uint32_t id, uint32_t length, const Bytes& data = {}) {
        word(id);
        word(length);
        bytes_.insert(bytes_.end(), data.begin(), data.end());
        return *this;
    }
    MessageBytes& number(uint32_t id, int32_t value) {
        item(id, 12);
        return word(static_cast<uint32_t>(value));
    }
    MessageBytes& data(uint32_t id, const void* data, size_t size) {
        const auto* first = static_cast<const uint8_t*>(data);
        const size_t padded = (size + 3) & ~size_t{3};
        item(id, static_cast<uint32_t>(8 + padded), Bytes(first, first + size));
        bytes_.resize(bytes_.size() + padded - size);
        return *this;
    }
    MessageBytes& text(uint32_t id, const std::string& text) {
        return data(id, text.c_str(), text.size() + 1);
    }
    MessageBytes& real(uint32_t id, double value) { return data(id, &value, sizeof value); }
    MessageBytes& error(int32_t code, int32_t subcode) {
        const int32_t pair[2] = {code, subcode};
        return data(MTAG_ErrorCode, pair, sizeof pair);
    }
    MessageBytes& format(const VORN_DataFormat& format) {
        return data(ITAG_DataFormat, &format, sizeof format);
    }
    MessageBytes& palette(const VORN_DataFormat& format, const Bytes& entries) {
        Bytes value(4 + sizeof format);
        value[0] = VORN_CS_RGB;
        std::memcpy(value.data() + 4, &format, sizeof format);
        value.insert(value.end(), entries.begin(), entries.end());
        return data(ITAG_Palette, value.data(), value.size());
    }
    MessageBytes& word(uint32_t value) {
        for (int shift = 0; shift < 32; shift += 8)
            bytes_.push_back(static_cast<uint8_t>(value >> shift));
        return *this;
    }
    Bytes end() {
        item(TAG_End, 8);
        return bytes_;
    }
    Bytes unfinished() const { return bytes_; }

  private:
    Bytes bytes_;
};

inline Bytes acknowledgement(int32_t version = 3) {
    return MessageBytes().number(MTAG_Ack, 1).number(MTAG_Version, version).end();
}

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

class ScriptedPeer {
  public:
    explicit ScriptedPeer(int32_t type = VORN_LOADER)
        : image_(VORN_L_ImageVaCreateHandle(0, MTAG_ModuleType, VORN_Word(type), TAG_End)) {
        vorn::SharedStuffCreate(*image_, type);
    }
    ~ScriptedPeer() {
        join();
        vorn::SharedStuffClose(*image_);
        VORN_L_ImageDestroyHandle(image_);
    }
    ScriptedPeer(const ScriptedPeer&) = delete;
    ScriptedPeer& operator=(const ScriptedPeer&) = delete;

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

    VORN_Image* image_;
    std::vector<std::function<void()>> steps_;
    std::vector<Bytes> taken_;
    std::thread thread_;
};
