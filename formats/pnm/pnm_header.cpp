#include "formats/pnm/pnm_header.h"

#include <vorn/types.h>

#include <charconv>
#include <string>
#include <string_view>

#include "formats/common/failure.h"

namespace pnm {
namespace {

using formats::Failure;
using formats::InputFile;

constexpr int32_t kLargestMaxValue = 65535;
constexpr int32_t kLargestNumber = 1'000'000'000;
constexpr size_t kLongestPamLine = 1000;

bool isSpace(int c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool isDigit(int c) { return c >= '0' && c <= '9'; }

// The next character; a comment counts as the line end behind it.
int nextCharacter(InputFile& file) {
    int c = file.nextByte();
    if (c != '#') return c;
    while (c != '\n' && c != '\r' && c >= 0) c = file.nextByte();
    return c;
}

int firstBeyondSpace(InputFile& file) {
    int c = nextCharacter(file);
    while (isSpace(c)) c = nextCharacter(file);
    return c;
}

// Takes one character behind the number.
int32_t numberFrom(InputFile& file, int c) {
    int32_t number = 0;
    for (; isDigit(c); c = nextCharacter(file)) {
        if (number > kLargestNumber / 10) throw Failure{formats::kDamaged};
        number = number * 10 + (c - '0');
    }
    if (c >= 0 && !isSpace(c)) throw Failure{formats::kDamaged};
    return number;
}

int32_t headerNumber(InputFile& file) {
    const int32_t number = readNumber(file);
    if (number < 0) throw Failure{formats::kDamaged};
    return number;
}

void readNetpbmHeader(InputFile& file, int kind, Header& header) {
    header.plain = kind <= '3';
    header.bitmap = kind == '1' || kind == '4';
    header.channels = kind == '3' || kind == '6' ? 3 : 1;
    header.colorSpace = header.channels == 3 ? VORN_CS_RGB : VORN_CS_GRAY;
    header.width = headerNumber(file);
    header.height = headerNumber(file);
    if (!header.bitmap) header.maxValue = headerNumber(file);
}

std::string readPamLine(InputFile& file) {
    std::string line;
    for (int c = file.nextByte(); c != '\n'; c = file.nextByte()) {
        if (c < 0 || line.size() == kLongestPamLine) throw Failure{formats::kDamaged};
        line.push_back(static_cast<char>(c));
    }
    return line;
}

// Takes the first word off the line; empty at its end.
std::string_view takeWord(std::string_view& line) {
    while (!line.empty() && isSpace(line.front())) line.remove_prefix(1);
    size_t length = 0;
    while (length < line.size() && !isSpace(line[length])) ++length;
    const std::string_view word = line.substr(0, length);
    line.remove_prefix(length);
    return word;
}

int32_t pamNumber(std::string_view& line) {
    const std::string_view word = takeWord(line);
    int32_t number = -1;
    const auto end = std::from_chars(word.data(), word.data() + word.size(), number).ptr;
    if (end != word.data() + word.size() || number < 0) throw Failure{formats::kDamaged};
    return number;
}

// What the tuple type leaves open is judged by the number of channels.
void nameColors(const std::string& tupleType, Header& header) {
    static constexpr int32_t kColorSpaces[] = {VORN_CS_NONE, VORN_CS_GRAY, VORN_CS_GRAY,
                                               VORN_CS_RGB, VORN_CS_RGB};
    const int32_t channels = header.channels;
    const bool known = tupleType.empty() || tupleType.rfind("RGB", 0) == 0 ||
                       tupleType.rfind("GRAYSCALE", 0) == 0 ||
                       tupleType.rfind("BLACKANDWHITE", 0) == 0;
    header.alpha = known && (channels == 2 || channels == 4);
    header.colorSpace = known && channels <= 4 ? kColorSpaces[channels] : VORN_CS_NONE;
}

void readPamHeader(InputFile& file, Header& header) {
    std::string tupleType;
    for (;;) {
        const std::string line = readPamLine(file);
        std::string_view words = line;
        const std::string_view keyword = takeWord(words);
        if (keyword.empty() || keyword[0] == '#') continue;
        if (keyword == "ENDHDR") break;
        if (keyword == "WIDTH")
            header.width = pamNumber(words);
        else if (keyword == "HEIGHT")
            header.height = pamNumber(words);
        else if (keyword == "DEPTH")
            header.channels = pamNumber(words);
        else if (keyword == "MAXVAL")
            header.maxValue = pamNumber(words);
        else if (keyword == "TUPLTYPE")
            tupleType = takeWord(words);
        else
            throw Failure{formats::kDamaged};
    }
    if (header.channels > VORN_MAX_CHANNELS) throw Failure{formats::kUnsupported};
    nameColors(tupleType, header);
}

void check(const Header& header) {
    if (header.width < 1 || header.height < 1 || header.channels < 1 || header.maxValue < 1 ||
        header.maxValue > kLargestMaxValue)
        throw Failure{formats::kDamaged};
    if (header.width > VORN_MAX_SIZE || header.height > VORN_MAX_SIZE)
        throw Failure{formats::kUnsupported};
}

}  // namespace

Header readHeader(InputFile& file) {
    const bool letter = file.nextByte() == 'P';
    const int kind = file.nextByte();
    const int behind = nextCharacter(file);
    if (!letter || kind < '1' || kind > '7' || !isSpace(behind))
        throw Failure{formats::kNotThisFormat};
    Header header;
    if (kind == '7')
        readPamHeader(file, header);
    else
        readNetpbmHeader(file, kind, header);
    check(header);
    return header;
}

int32_t readNumber(InputFile& file) {
    const int c = firstBeyondSpace(file);
    if (c >= 0 && !isDigit(c)) throw Failure{formats::kDamaged};
    return c < 0 ? -1 : numberFrom(file, c);
}

int32_t readBit(InputFile& file) {
    const int c = firstBeyondSpace(file);
    if (c >= 0 && c != '0' && c != '1') throw Failure{formats::kDamaged};
    return c < 0 ? -1 : c - '0';
}

}  // namespace pnm
