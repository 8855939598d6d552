// Pictures that test_loader makes up. Their "file name" says what they are, as in
// "w=37,h=21,c=3,b=2,orient=5,space=RGB", and every sample follows from its place, so the tests
// know what must arrive without any file.
#pragma once

#include <vorn/library.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>

// Comma-separated key=value pairs.
class Wishes {
  public:
    explicit Wishes(const std::string& text) {
        for (size_t at = 0; at < text.size();) {
            const size_t end = std::min(text.find(',', at), text.size());
            const std::string pair = text.substr(at, end - at);
            const size_t equals = std::min(pair.find('='), pair.size());
            values_[pair.substr(0, equals)] = pair.substr(std::min(equals + 1, pair.size()));
            at = end + 1;
        }
    }

    std::string text(const std::string& key, const std::string& otherwise = "") const {
        const auto found = values_.find(key);
        return found == values_.end() ? otherwise : found->second;
    }
    int number(const std::string& key, int otherwise) const {
        const auto found = values_.find(key);
        return found == values_.end() ? otherwise : std::atoi(found->second.c_str());
    }

  private:
    std::map<std::string, std::string> values_;
};

struct WishedPicture {
    explicit WishedPicture(const std::string& name) : wishes(name) {}

    // 8-bit samples use all values, 16-bit ones too; palette pictures hold indices, some of them
    // beyond the entries.
    int sample(int channel, int x, int y) const {
        const uint32_t value = scramble(seed, channel, x, y);
        if (palette > 0) return static_cast<int>(value % static_cast<uint32_t>(palette + 2));
        return static_cast<int>(value & (bytes == 2 ? 0xFFFFu : 0xFFu));
    }
    int entry(int channel, int index) const {
        return static_cast<int>(scramble(seed + 1000, channel, index, 0) &
                                (paletteBytes == 2 ? 0xFFFFu : 0xFFu));
    }

    Wishes wishes;
    int width = wishes.number("w", 8);
    int height = wishes.number("h", 6);
    int channels = wishes.number("c", 3);
    int layout = wishes.number("layout", 0);  // a layout code
    int bytes = layout >= DF_LineInterleaved16 ? 2 : wishes.number("b", 1);
    std::string form = wishes.text("form", "cells");  // the steps where the code is 0
    int orientation = wishes.number("orient", -1);    // -1: none is announced
    int colorSpace = VORN_L_FindColorSpace(wishes.text("space", "RGB").c_str());
    bool alpha = wishes.number("alpha", 0) != 0;
    int blockLines = wishes.number("block", 0);       // 0: as many as fit, at most 16
    bool inPlace = wishes.number("inplace", 0) != 0;  // the shared area is written directly
    int palette = wishes.number("palette", 0);        // entries
    int paletteBytes = wishes.number("palbytes", 1);
    int paletteSpace = VORN_L_FindColorSpace(wishes.text("palspace", "RGB").c_str());
    int seed = wishes.number("seed", 1);

  private:
    static uint32_t scramble(int seed, int channel, int x, int y) {
        uint32_t value = static_cast<uint32_t>(seed) * 0x9E3779B1u;
        for (const int part : {channel, x, y}) {
            value = (value ^ static_cast<uint32_t>(part)) * 0x85EBCA6Bu;
            value ^= value >> 13;
        }
        return value;
    }
};
