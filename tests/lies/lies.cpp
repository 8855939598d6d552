// The lies that a module may tell. Each goes for one place of a stream, drawn anew until a place
// fits.
#include <vorn/library.h>

#include <algorithm>
#include <cstring>

#include "tests/lies/streams.h"

namespace {

constexpr int64_t kEdges[] = {
    0,          1,          2,          3,          4,          7,       8,
    9,          11,         12,         13,         16,         255,     256,
    65535,      65536,      65537,      0x17FF8,    0x18000,    0x18004, 0x7FFFFFFF,
    0x80000000, 0x80000001, 0xFFFFFFF8, 0xFFFFFFFC, 0xFFFFFFFF, -24,     -25};

constexpr uint32_t kIds[] = {
    TAG_End,       TAG_Goto,         TAG_Taglist,        TAG_SkipTag,     TAG_Interrupt,
    TAG_VaList,    MTAG_Terminate,   MTAG_ModuleType,    MTAG_Command,    MTAG_Ack,
    MTAG_Version,  MTAG_ErrorCode,   ITAG_ReadLineNo,    ITAG_ReadWidth,  ITAG_ReadHeight,
    ITAG_Input,    ITAG_Width,       ITAG_Height,        ITAG_Channels,   ITAG_ImageChannelSize,
    ITAG_Alpha,    ITAG_Orientation, ITAG_XAspect,       ITAG_YAspect,    ITAG_ColorSpace,
    ITAG_Filename, MTAG_ModuleName,  ITAG_Description,   ITAG_Data,       ITAG_DataFormat,
    ITAG_Palette,  ITAG_Aspect,      ITAG_MeterCallback, MTAG_ModuleList, 0x010001F4,
    0x07000001,    0xFFFFFFFF};

uint32_t edge(Random& random, uint32_t near) {
    if (chance(random, 3))
        return near + static_cast<uint32_t>(
                          oneOf(random, std::initializer_list<int>{-8, -4, -1, 1, 4, 8}));
    return static_cast<uint32_t>(oneOf(random, kEdges));
}

uint32_t wordAt(const Bytes& bytes, size_t place) {
    uint32_t word = 0;
    std::memcpy(&word, bytes.data() + place, sizeof word);
    return word;
}

void setWord(Bytes& bytes, size_t place, uint32_t word) {
    std::memcpy(bytes.data() + place, &word, sizeof word);
}

size_t place(Random& random, size_t count) {
    return static_cast<size_t>(pick(random, 0, static_cast<int64_t>(count) - 1));
}

StreamStep& anyMessage(Random& random, Stream& stream) {
    for (;;) {
        StreamStep& step = stream.steps[place(random, stream.steps.size())];
        if (!step.takes && !step.items.empty()) return step;
    }
}

StreamItem& anyItem(Random& random, Stream& stream) {
    auto& items = anyMessage(random, stream).items;
    return items[place(random, items.size())];
}

// An item of the stream with this id, or null.
StreamItem* itemOf(Random& random, Stream& stream, uint32_t id) {
    for (int tries = 0; tries < 20; ++tries) {
        for (StreamItem& item : anyMessage(random, stream).items) {
            if (item.id == id) return &item;
        }
    }
    return nullptr;
}

void lieAboutLength(Random& random, Stream& stream) {
    StreamItem& item = anyItem(random, stream);
    item.length = edge(random, item.length);
    if (chance(random, 2)) {  // and bring as many bytes, as far as they exist
        const uint32_t data = item.length < 8 ? 0 : item.length - 8;
        item.data.resize(std::min<uint32_t>(data, 4096));
    }
}

void leaveOut(Random& random, Stream& stream) {
    auto& items = anyMessage(random, stream).items;
    items.erase(items.begin() + static_cast<ptrdiff_t>(place(random, items.size())));
}

void repeat(Random& random, Stream& stream) {
    auto& items = anyMessage(random, stream).items;
    StreamItem copy = items[place(random, items.size())];
    if (copy.data.size() == 4 && chance(random, 2))
        setWord(copy.data, 0, edge(random, wordAt(copy.data, 0)));
    items.insert(items.begin() + static_cast<ptrdiff_t>(place(random, items.size())), copy);
}

void reorder(Random& random, Stream& stream) {
    auto& items = anyMessage(random, stream).items;
    const ptrdiff_t end = chance(random, 4) ? 0 : 1;  // mostly the end stays where it is
    if (items.size() > 1) std::shuffle(items.begin(), items.end() - end, random);
}

void lieAboutNumber(Random& random, Stream& stream) {
    for (int tries = 0; tries < 20; ++tries) {
        StreamItem& item = anyItem(random, stream);
        if (item.data.size() != 4) continue;
        setWord(item.data, 0, edge(random, wordAt(item.data, 0)));
        return;
    }
}

void lieAboutLines(Random& random, Stream& stream) {
    StreamItem* item = itemOf(random, stream, ITAG_ReadHeight);
    if (item && item->data.size() == 4)
        setWord(item->data, 0, chance(random, 2) ? wordAt(item->data, 0) + 1 : edge(random, 1));
}

// Sizes, steps and places: the first 30 words of the record; and the palette's, which has another
// one before it.
void lieAboutFormat(Random& random, Stream& stream) {
    const uint32_t id = chance(random, 4) ? ITAG_Palette : ITAG_DataFormat;
    StreamItem* item = itemOf(random, stream, id);
    if (!item) return;
    for (int64_t lies = pick(random, 1, 3); lies > 0; --lies) {
        const size_t words = std::min<size_t>(item->data.size() / 4, id == ITAG_Palette ? 31 : 30);
        if (words == 0) return;
        const size_t word =
            chance(random, 2) ? place(random, std::min<size_t>(words, 6)) : place(random, words);
        setWord(item->data, 4 * word, edge(random, wordAt(item->data, 4 * word)));
    }
}

void rename(Random& random, Stream& stream) { anyItem(random, stream).id = oneOf(random, kIds); }

void shortenData(Random& random, Stream& stream) {
    StreamItem* item = itemOf(random, stream, ITAG_Data);
    if (!item || item->data.size() < 4) return;
    item->data.resize(
        item->data.size() -
        4 * static_cast<size_t>(pick(random, 1, static_cast<int64_t>(item->data.size() / 4))));
    item->length = static_cast<uint32_t>(8 + item->data.size());
}

void scribble(Random& random, Stream& stream) {
    StreamItem& item = anyItem(random, stream);
    uint8_t* bytes = item.data.empty() ? reinterpret_cast<uint8_t*>(&item.id) : item.data.data();
    const size_t size = item.data.empty() ? 8 : item.data.size();
    for (int64_t count = pick(random, 1, 4); count > 0; --count)
        bytes[place(random, size)] = static_cast<uint8_t>(random());
}

// Any kind of message in any place: another one of this stream, an error, the module's own end, a
// host's command.
void sayAnotherThing(Random& random, Stream& stream) {
    StreamStep& target = anyMessage(random, stream);
    const auto word = [](int32_t value) {
        Bytes bytes(4);
        std::memcpy(bytes.data(), &value, sizeof value);
        return bytes;
    };
    const StreamItem end{TAG_End, 8, {}};
    const std::vector<StreamItem> kinds[] = {
        {end},
        {{MTAG_Ack, 12, word(9)}, end},
        {{MTAG_Ack, 12, word(9)},
         {MTAG_Version, 12, word(static_cast<int32_t>(pick(random, -1, 4)))},
         end},
        {{MTAG_Terminate, 12, word(1)}, end},
        {{MTAG_Command, 12, word(CMD_LoadData)}, end},
        {{TAG_Interrupt, 8, {}}, {MTAG_Command, 12, word(CMD_Abort)}, end},
        {{MTAG_ErrorCode, 16, {7, 0, 0, 0, 1, 0, 0, 0}}, end},
        {{MTAG_ErrorCode, 8, {}}, {MTAG_Ack, 12, word(9)}, end},
        {{MTAG_ErrorCode, 16, Bytes(8)}, end},
        {},
    };
    if (chance(random, 2))
        target.items = oneOf(random, kinds);
    else
        target.items = std::vector<StreamItem>(anyMessage(random, stream).items);
}

void loseOrDoubleStep(Random& random, Stream& stream) {
    auto& steps = stream.steps;
    const auto at = steps.begin() + static_cast<ptrdiff_t>(place(random, steps.size()));
    if (chance(random, 2) && steps.size() > 2)
        steps.erase(at);
    else
        steps.insert(at, StreamStep(*at));
}

void exchangeSteps(Random& random, Stream& stream) {
    auto& steps = stream.steps;
    std::swap(steps[place(random, steps.size())], steps[place(random, steps.size())]);
}

}  // namespace

void tellLie(Random& random, Stream& stream) {
    static constexpr void (*kLies[])(Random&, Stream&) = {
        lieAboutLength, leaveOut,        repeat,          reorder,          lieAboutNumber,
        lieAboutLines,  lieAboutFormat,  lieAboutFormat,  rename,           shortenData,
        scribble,       sayAnotherThing, sayAnotherThing, loseOrDoubleStep, exchangeSteps};
    oneOf(random, kLies)(random, stream);
    auto& steps = stream.steps;
    const bool silent = std::none_of(steps.begin(), steps.end(), [](const StreamStep& step) {
        return !step.takes && !step.items.empty();
    });
    if (silent) steps.push_back({false, {{TAG_End, 8, {}}}});  // the next lie needs a message
}
