// Whole records between their packed file form and their form in memory.
#include <vorn/xd.h>

namespace {

constexpr char kBigEndian = '+';

// A field is `units` numbers of `unitSize` bytes, which are turned around where the file's order is
// not the machine's: a double is two of four bytes, low half first in both forms.
struct FieldType {
    unsigned unitSize;
    unsigned units;
    bool inMemory;
    bool reversed;

    unsigned size() const { return unitSize * units; }
};

bool findType(char letter, bool bigEndian, FieldType& type) {
    switch (letter) {
        case 'B':
        case 'b':
            type = {1, 1, true, false};
            return true;
        case 'W':
        case 'w':
            type = {2, 1, true, bigEndian};
            return true;
        case 'L':
        case 'l':
            type = {4, 1, true, bigEndian};
            return true;
        case 'F':
            type = {4, 1, true, true};
            return true;
        case 'D':
            type = {4, 2, true, true};
            return true;
        case 'P':
        case 'p':
            type = {1, 1, false, false};
            return true;
        default:
            return false;
    }
}

bool isWhiteSpace(char letter) {
    return letter == ' ' || letter == '\t' || letter == '\n' || letter == '\r';
}

// Reads the repeat count, if one stands here.
uint16_t readCount(const char*& at) {
    if (*at != '[') return 1;
    uint16_t count = 0;
    for (++at; *at >= '0' && *at <= '9'; ++at) {
        count = static_cast<uint16_t>(count * 10u + static_cast<unsigned>(*at - '0'));
    }
    if (*at == ']') ++at;
    return count;
}

// Calls move(type, file position, memory position) for each number of the record and answers how
// many bytes the record has in memory.
template <class Move>
int16_t walkRecord(const char* descriptor, Move move) {
    if (descriptor == nullptr || (*descriptor != '+' && *descriptor != '-')) return 0;
    const bool bigEndian = *descriptor == kBigEndian;
    size_t inFile = 0;
    size_t inMemory = 0;
    for (const char* at = descriptor + 1;;) {
        while (isWhiteSpace(*at)) ++at;
        if (*at == '\0') return static_cast<int16_t>(inMemory);
        FieldType type;
        if (!findType(*at++, bigEndian, type)) return 0;
        for (uint16_t left = readCount(at); left > 0; --left) {
            const size_t size = type.size();
            if (type.inMemory) inMemory = (inMemory + size - 1) / size * size;
            move(type, inFile, inMemory);
            inFile += size;
            if (type.inMemory) inMemory += size;
        }
    }
}

void copyNumber(uint8_t* out, const uint8_t* in, const FieldType& type) {
    for (unsigned unit = 0; unit < type.units; ++unit) {
        const unsigned start = unit * type.unitSize;
        for (unsigned i = 0; i < type.unitSize; ++i) {
            out[start + (type.reversed ? type.unitSize - 1 - i : i)] = in[start + i];
        }
    }
}

}  // namespace

int16_t XD_CopyFileToStruct(const char* descriptor, const uint8_t* file, int32_t, void* record) {
    auto* memory = static_cast<uint8_t*>(record);
    return walkRecord(descriptor, [=](const FieldType& type, size_t inFile, size_t inMemory) {
        if (type.inMemory) copyNumber(memory + inMemory, file + inFile, type);
    });
}

int16_t XD_CopyStructToFile(const char* descriptor, const void* record, int32_t, uint8_t* file) {
    const auto* memory = static_cast<const uint8_t*>(record);
    return walkRecord(descriptor, [=](const FieldType& type, size_t inFile, size_t inMemory) {
        if (type.inMemory)
            copyNumber(file + inFile, memory + inMemory, type);
        else
            file[inFile] = 0;
    });
}
