// Messages, made item by item, whole or wrong on purpose.
#pragma once

#include <vorn/library.h>

#include <cstring>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

struct MessageItem {
    uint32_t id;
    uint32_t length;  // what the item says of its length
    Bytes data;       // what follows its head
};
using MessageItems = std::vector<MessageItem>;

inline Bytes bytesOf(const MessageItems& items) {
    Bytes bytes;
    for (const MessageItem& item : items) {
        for (const uint32_t word : {item.id, item.length})
            for (int shift = 0; shift < 32; shift += 8)
                bytes.push_back(static_cast<uint8_t>(word >> shift));
        bytes.insert(bytes.end(), item.data.begin(), item.data.end());
    }
    return bytes;
}

class MessageBytes {
  public:
    MessageBytes& item(uint32_t id, uint32_t length, const Bytes& data = {}) {
        items_.push_back({id, length, data});
        return *this;
    }
    MessageBytes& data(uint32_t id, const void* data, size_t size) {
        const auto* first = static_cast<const uint8_t*>(data);
        const size_t padded = (size + 3) & ~size_t{3};
        item(id, static_cast<uint32_t>(8 + padded), Bytes(first, first + size));
        items_.back().data.resize(padded);
        return *this;
    }
    MessageBytes& number(uint32_t id, int32_t value) { return data(id, &value, sizeof value); }
    MessageBytes& real(uint32_t id, double value) { return data(id, &value, sizeof value); }
    MessageBytes& text(uint32_t id, const std::string& text) {
        return data(id, text.c_str(), text.size() + 1);
    }
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

    MessageItems items() { return item(TAG_End, 8).items_; }
    Bytes end() { return bytesOf(items()); }
    Bytes unfinished() const { return bytesOf(items_); }

  private:
    MessageItems items_;
};

// A data format with its steps filled in.
inline VORN_DataFormat formatOf(int32_t layout, int32_t width, int32_t height, int32_t channels) {
    VORN_DataFormat format{layout, width, height, channels, 0, 0, {}, {}, {}, {}};
    VORN_L_DataFormatMacroSetup(&format);
    return format;
}

inline Bytes emptyMessage() { return MessageBytes().end(); }

inline Bytes command(uint32_t number) {
    return MessageBytes().number(MTAG_Command, static_cast<int32_t>(number)).end();
}

// The host's message that stops a transfer.
inline Bytes interrupt() {
    return MessageBytes().item(TAG_Interrupt, 8).number(MTAG_Command, CMD_Abort).end();
}

inline Bytes acknowledgementOf(int32_t round, int32_t version = 3) {
    return MessageBytes().number(MTAG_Ack, round).number(MTAG_Version, version).end();
}
inline Bytes acknowledgementWithError(int32_t round, int32_t code, int32_t subcode) {
    return MessageBytes()
        .number(MTAG_Ack, round)
        .error(code, subcode)
        .number(MTAG_Version, 3)
        .end();
}
inline Bytes acknowledgement(int32_t version = 3) { return acknowledgementOf(1, version); }
