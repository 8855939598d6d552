// Single numbers in the byte order of a file.
#include <vorn/xd.h>

#include <bit>
#include <cstring>

namespace {

static_assert(std::endian::native == std::endian::little,
              "the order that is not '+' is the machine's own");

constexpr char kBigEndian = '+';

template <class Number>
Number load(const void* bytes) {
    Number value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

template <class Number>
uint8_t* store(uint8_t* bytes, Number value) {
    std::memcpy(bytes, &value, sizeof value);
    return bytes + sizeof value;
}

}  // namespace

uint32_t XD_ConvertLong(uint32_t value, char order) {
    if (order != kBigEndian) return value;
    return value << 24 | (value & 0xFF00u) << 8 | (value >> 8 & 0xFF00u) | value >> 24;
}

uint16_t XD_ConvertWord(uint16_t value, char order) {
    return order == kBigEndian ? static_cast<uint16_t>(value << 8 | value >> 8) : value;
}

void XDP_ConvertLong(uint32_t* value, char order) {
    const uint32_t converted = XD_ConvertLong(load<uint32_t>(value), order);
    std::memcpy(value, &converted, sizeof converted);
}

void XDP_ConvertWord(uint16_t* value, char order) {
    const uint16_t converted = XD_ConvertWord(load<uint16_t>(value), order);
    std::memcpy(value, &converted, sizeof converted);
}

uint8_t XD_ReadByte(const uint8_t* bytes) { return *bytes; }

uint16_t XD_ReadWord(const uint8_t* bytes, char order) {
    return XD_ConvertWord(load<uint16_t>(bytes), order);
}

uint32_t XD_ReadLong(const uint8_t* bytes, char order) {
    return XD_ConvertLong(load<uint32_t>(bytes), order);
}

float XD_ReadFloat(const uint8_t* bytes) {
    return std::bit_cast<float>(XD_ReadLong(bytes, kBigEndian));
}

double XD_ReadDouble(const uint8_t* bytes) {
    const uint64_t low = XD_ReadLong(bytes, kBigEndian);
    const uint64_t high = XD_ReadLong(bytes + 4, kBigEndian);
    return std::bit_cast<double>(high << 32 | low);
}

uint8_t* XD_WriteByte(uint8_t* bytes, uint8_t value) { return store(bytes, value); }

uint8_t* XD_WriteWord(uint8_t* bytes, uint16_t value, char order) {
    return store(bytes, XD_ConvertWord(value, order));
}

uint8_t* XD_WriteLong(uint8_t* bytes, uint32_t value, char order) {
    return store(bytes, XD_ConvertLong(value, order));
}

uint8_t* XD_WriteFloat(uint8_t* bytes, float value) {
    return XD_WriteLong(bytes, std::bit_cast<uint32_t>(value), kBigEndian);
}

uint8_t* XD_WriteDouble(uint8_t* bytes, double value) {
    const auto bits = std::bit_cast<uint64_t>(value);
    bytes = XD_WriteLong(bytes, static_cast<uint32_t>(bits), kBigEndian);
    return XD_WriteLong(bytes, static_cast<uint32_t>(bits >> 32), kBigEndian);
}
