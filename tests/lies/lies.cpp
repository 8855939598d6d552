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
    constexpr int kSteps[] = {-8, -4, -1, 1, 4, 8};
    return chance(random, 3) ? near + static_cast<uint32_t>(oneOf(random, kSteps))
                             : static_cast<uint32_t>(oneOf(random, kEdges));
}

template <class List>
auto anyOf(Random& random, List& list) {
    return list.begin() + pick(random, 0, static_cast<int>(list.size()) - 1);
}

StreamStep& anyMessage(Random& random, Stream& stream) {
    for (;;) {
        StreamStep& step = *anyOf(random, stream.steps);
        if (!step.takes && !step.items.empty()) return step;
    }
}

MessageItem& anyItem(Random& random, Stream& stream) {
    return *anyOf(random, anyMessage(random, stream).items);
}

// An item of the stream with this id, or null.
MessageItem* itemOf(Random& random, Stream& stream, uint32_t id) {
    for (int tries = 0; tries < 20; ++tries) {
        for (MessageItem& item : anyMessage(random, stream).items) {
            if (item.id == id) return &item;
        }
    }
    return nullptr;
}

void lieAboutWord(Random& random, Bytes& data, int word) {
    if (data.size() < 4 * static_cast<size_t>(word + 1)) return;
    uint32_t value = 0;
    std::memcpy(&value, data.data() + 4 * word, sizeof value);
    value = edge(random, value);
    std::memcpy(data.data() + 4 * word, &value, sizeof value);
}

void lieAboutLength(Random& random, Stream& stream) {
    MessageItem* pixels = chance(random, 3) ? itemOf(random, stream, ITAG_Data) : nullptr;
    MessageItem& item = pixels ? *pixels : anyItem(random, stream);
    item.length = edge(random, item.length);
    if (chance(random, 2)) {  // and bring as many bytes, as far as they exist
        const uint32_t data = item.length < 8 ? 0 : item.length - 8;
        item.data.resize(std::min<uint32_t>(data, 4096));
    }
}

void leaveOut(Random& random, Stream& stream) {
    auto& items = anyMessage(random, stream).items;
    items.erase(anyOf(random, items));
}

void repeat(Random& random, Stream& stream) {
    auto& items = anyMessage(random, stream).items;
    MessageItem copy = *anyOf(random, items);
    if (copy.data.size() == 4 && chance(random, 2)) lieAboutWord(random, copy.data, 0);
    items.insert(anyOf(random, items), copy);
}

void reorder(Random& random, Stream& stream) {
    auto& items = anyMessage(random, stream).items;
    const ptrdiff_t end = chance(random, 4) ? 0 : 1;  // mostly the end stays where it is
    std::shuffle(items.begin(), items.end() - end, random);
}

void lieAboutNumber(Random& random, Stream& stream) {
    MessageItem* lines = chance(random, 3) ? itemOf(random, stream, ITAG_ReadHeight) : nullptr;
    MessageItem& item = lines ? *lines : anyItem(random, stream);
    if (item.data.size() == 4) lieAboutWord(random, item.data, 0);
}

// Sizes, steps and places: the first words of the record; and the palette's, which has another
// one before it.
void lieAboutFormat(Random& random, Stream& stream) {
    const uint32_t id = chance(random, 4) ? ITAG_Palette : ITAG_DataFormat;
    MessageItem* item = itemOf(random, stream, id);
    for (int lies = item ? pick(random, 1, 3) : 0; lies > 0; --lies)
        lieAboutWord(random, item->data, pick(random, 0, chance(random, 2) ? 5 : 30));
}

void rename(Random& random, Stream& stream) { anyItem(random, stream).id = oneOf(random, kIds); }

void scribble(Random& random, Stream& stream) {
    MessageItem& item = anyItem(random, stream);
    uint8_t* bytes = item.data.empty() ? reinterpret_cast<uint8_t*>(&item.id) : item.data.data();
    const int size = item.data.empty() ? 8 : static_cast<int>(item.data.size());
    for (int count = pick(random, 1, 4); count > 0; --count)
        bytes[pick(random, 0, size - 1)] = static_cast<uint8_t>(random());
}

// Any kind of message in any place: another one of this stream, an error, the module's own end, a
// host's command.
void sayAnotherThing(Random& random, Stream& stream) {
    const auto empty = [] { return MessageBytes(); };
    const std::vector<MessageItems> kinds = {
        empty().items(),
        empty().number(MTAG_Ack, 9).items(),
        empty().number(MTAG_Ack, 9).number(MTAG_Version, pick(random, -1, 4)).items(),
        empty().number(MTAG_Terminate, 1).items(),
        empty().number(MTAG_Command, CMD_LoadData).items(),
        empty().item(TAG_Interrupt, 8).number(MTAG_Command, CMD_Abort).items(),
        empty().error(7, 1).items(),
        empty().item(MTAG_ErrorCode, 8).number(MTAG_Ack, 9).items(),
        empty().error(0, 0).items(),
        {},
    };
    StreamStep& target = anyMessage(random, stream);
    target.items =
        chance(random, 2) ? oneOf(random, kinds) : MessageItems(anyMessage(random, stream).items);
}

void loseOrDoubleStep(Random& random, Stream& stream) {
    auto& steps = stream.steps;
    const auto at = anyOf(random, steps);
    if (chance(random, 2) && steps.size() > 2)
        steps.erase(at);
    else
        steps.insert(at, StreamStep(*at));
}

void exchangeSteps(Random& random, Stream& stream) {
    std::iter_swap(anyOf(random, stream.steps), anyOf(random, stream.steps));
}

}  // namespace

void tellLie(Random& random, Stream& stream) {
    static constexpr void (*kLies[])(Random&, Stream&) = {
        lieAboutLength, lieAboutLength,  lieAboutNumber,  lieAboutNumber,   lieAboutFormat,
        lieAboutFormat, leaveOut,        repeat,          reorder,          rename,
        scribble,       sayAnotherThing, sayAnotherThing, loseOrDoubleStep, exchangeSteps};
    oneOf(random, kLies)(random, stream);
    auto& steps = stream.steps;
    const bool silent = std::none_of(steps.begin(), steps.end(), [](const StreamStep& step) {
        return !step.takes && !step.items.empty();
    });
    if (silent) steps.push_back({false, MessageBytes().items()});  // the next lie needs a message
}
