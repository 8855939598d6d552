#include <gtest/gtest.h>
#include <vorn/xd.h>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

// What a writer makes of a place that is not aligned, and how far it goes.
template <class Write>
Bytes written(Write write) {
    std::array<uint8_t, 16> buffer;
    buffer.fill(0xEE);
    uint8_t* start = buffer.data() + 1;
    uint8_t* end = write(start);
    EXPECT_EQ(buffer[0], 0xEE);
    EXPECT_EQ(*end, 0xEE);
    return {start, end};
}

Bytes shifted(Bytes bytes) {
    bytes.insert(bytes.begin(), 0xEE);
    return bytes;
}

TEST(Numbers, OnlyPlusReversesBytes) {
    for (const char order : {'+', '-', ' ', '\0', 'x'}) {
        const uint32_t expected = order == '+' ? 0x44332281u : 0x81223344u;
        uint32_t value = 0x81223344;
        EXPECT_EQ(XD_ConvertLong(value, order), expected);
        XDP_ConvertLong(&value, order);
        EXPECT_EQ(value, expected);
        const uint16_t expectedWord = order == '+' ? 0x22FF : 0xFF22;
        uint16_t word = 0xFF22;
        EXPECT_EQ(XD_ConvertWord(word, order), expectedWord);
        XDP_ConvertWord(&word, order);
        EXPECT_EQ(word, expectedWord);
    }
}

TEST(Numbers, IntegersLieInTheAskedOrder) {
    EXPECT_EQ(written([](uint8_t* at) { return XD_WriteByte(at, 0x80); }), Bytes{0x80});
    EXPECT_EQ(XD_ReadByte(&shifted({0x80})[1]), 0x80);
    const struct {
        char order;
        Bytes word, longWord;
    } orders[] = {{'+', {0x80, 0x01}, {0x80, 0x01, 0xFE, 0x7F}},
                  {'-', {0x01, 0x80}, {0x7F, 0xFE, 0x01, 0x80}}};
    for (const auto& [o, word, longWord] : orders) {
        EXPECT_EQ(XD_ReadWord(&shifted(word)[1], o), 0x8001);
        EXPECT_EQ(XD_ReadLong(&shifted(longWord)[1], o), 0x8001FE7Fu);
        EXPECT_EQ(written([=](uint8_t* at) { return XD_WriteWord(at, 0x8001, o); }), word);
        EXPECT_EQ(written([=](uint8_t* at) { return XD_WriteLong(at, 0x8001FE7F, o); }), longWord);
    }
}

TEST(Numbers, FloatsAreBigEndianAndDoublesBeginWithTheirLowHalf) {
    const struct {
        double value;
        Bytes bytes;
    } numbers[] = {
        {1.0, {0, 0, 0, 0, 0x3F, 0xF0, 0, 0}},
        {-0.1, {0x99, 0x99, 0x99, 0x9A, 0xBF, 0xB9, 0x99, 0x99}},
        {std::numeric_limits<double>::denorm_min(), {0, 0, 0, 1, 0, 0, 0, 0}},
        {-HUGE_VAL, {0, 0, 0, 0, 0xFF, 0xF0, 0, 0}},
        {1.0, {0x3F, 0x80, 0, 0}},
        {-0.1f, {0xBD, 0xCC, 0xCC, 0xCD}},
        {std::numeric_limits<float>::max(), {0x7F, 0x7F, 0xFF, 0xFF}},
        {-0.0, {0x80, 0, 0, 0}},
    };
    for (const auto& [number, bytes] : numbers) {
        const double value = number;
        const bool isFloat = bytes.size() == 4;
        const auto write = [&](uint8_t* at) {
            return isFloat ? XD_WriteFloat(at, static_cast<float>(value))
                           : XD_WriteDouble(at, value);
        };
        EXPECT_EQ(written(write), bytes) << value;
        const Bytes file = shifted(bytes);
        EXPECT_EQ(isFloat ? XD_ReadFloat(&file[1]) : XD_ReadDouble(&file[1]), value);
    }
    EXPECT_TRUE(std::signbit(XD_ReadFloat(&shifted({0x80, 0, 0, 0})[1])));
    EXPECT_TRUE(std::isnan(XD_ReadFloat(&shifted({0x7F, 0xC0, 0, 0})[1])));
}

}  // namespace
