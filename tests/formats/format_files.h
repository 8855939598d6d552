// Loaders and savers driven the way their programs' callbacks drive them, without a host.
#pragma once

#include <gtest/gtest.h>
#include <vorn/host.h>
#include <vorn/library.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "formats/common/layout.h"
#include "formats/common/loader.h"
#include "formats/common/saver.h"
#include "tests/scratch_home.h"

using Bytes = std::vector<uint8_t>;

struct LoadedImage {
    formats::Description image;
    Bytes samples;

    std::string text() const { return {samples.begin(), samples.end()}; }

    // The sample that begins at this byte, which moves on to the next.
    unsigned next(size_t& at) const {
        const unsigned low = samples[at++];
        return image.bytesPerChannel == 1 ? low : low | static_cast<unsigned>(samples[at++]) << 8;
    }
};

template <class Loader>
LoadedImage load(const std::string& path, const formats::Wishes& wishes = {}) {
    Loader loader;
    loader.setWishes(wishes);
    LoadedImage loaded{loader.open(formats::InputFile(path)), {}};
    const auto lineBytes = static_cast<size_t>(loaded.image.lineBytes());
    loaded.samples.resize(lineBytes * static_cast<size_t>(loaded.image.height));
    for (size_t at = 0; at < loaded.samples.size(); at += lineBytes)
        loader.readLine(&loaded.samples[at]);
    return loaded;
}

// The code of the Failure that the body throws, 0 when it throws none.
template <class Body>
int32_t failureOf(Body body) {
    try {
        body();
    } catch (const formats::Failure& failure) {
        return failure.code;
    }
    return 0;
}

template <class Loader>
int32_t loadFailure(const std::string& path) {
    return failureOf([&] { load<Loader>(path); });
}

// The words of a description, by id.
inline std::map<uint32_t, VORN_Word> tagsOf(const formats::Description& image) {
    std::map<uint32_t, VORN_Word> tags;
    const auto& words = image.tags.words();
    for (size_t i = 0; i + 1 < words.size(); i += 2)
        tags[static_cast<uint32_t>(words[i])] = words[i + 1];
    return tags;
}

inline std::string textOf(const formats::Description& image, uint32_t id) {
    const auto tags = tagsOf(image);
    const auto found = tags.find(id);
    return found == tags.end() ? "(none)" : reinterpret_cast<const char*>(found->second);
}

// The entries of the description's palette.
inline std::vector<uint8_t> paletteOf(const formats::Description& image) {
    const auto* palette = reinterpret_cast<const VORN_Palette*>(tagsOf(image)[ITAG_Palette]);
    if (!palette) return {};
    const auto* entries = reinterpret_cast<const uint8_t*>(palette + 1);
    return {entries, entries + 3 * palette->format.width};
}

// "1x2 RGB 4 of 8 bits alpha": size, colours, channels and their significant bits. 16-bit samples
// are marked: "5 of 12/16 bits".
inline std::string summaryOf(const formats::Description& image) {
    static constexpr const char* kSpaces[] = {"None",   "Gray", "RGB",  "YUV",
                                              "YUV601", "CMY",  "CMYK", "CMAPPED"};
    return std::to_string(image.width) + 'x' + std::to_string(image.height) + ' ' +
           kSpaces[image.colorSpace] + ' ' + std::to_string(image.channels) + " of " +
           std::to_string(image.significantBits) + (image.bytesPerChannel == 2 ? "/16" : "") +
           " bits" + (image.alpha ? " alpha" : "");
}

// The first words of an image's description for a saver, and more of them.
inline std::vector<VORN_Word> imageWords(VORN_Word width,
                                         VORN_Word height,
                                         VORN_Word channels,
                                         VORN_Word colorSpace,
                                         VORN_Word bytes = 1,
                                         const std::vector<VORN_Word>& more = {}) {
    std::vector<VORN_Word> words{
        ITAG_Width,      width,      ITAG_Height,           height, ITAG_Channels, channels,
        ITAG_ColorSpace, colorSpace, ITAG_ImageChannelSize, bytes};
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

// The value of a saver's palette tag.
class PaletteTag {
  public:
    PaletteTag(Bytes entries,
               int32_t channels = 3,
               int32_t bytes = 1,
               int32_t colorSpace = VORN_CS_RGB) {
        const auto count = static_cast<int32_t>(entries.size()) / (channels * bytes);
        const VORN_ChunkyBuffer line =
            formats::interleavedBuffer(entries.data(), count, 1, channels, bytes);
        palette_ = VORN_H_CreatePaletteData(&line, colorSpace);
    }
    ~PaletteTag() { VORN_H_FreePaletteData(palette_); }
    PaletteTag(const PaletteTag&) = delete;
    PaletteTag& operator=(const PaletteTag&) = delete;

    operator VORN_Word() const { return reinterpret_cast<VORN_Word>(palette_); }

  private:
    VORN_Palette* palette_;
};

// Noise for sample c of pixel (x, y), so that an exchange of any two shows.
inline unsigned noiseAt(uint32_t x, uint32_t y, int c) {
    return (x * 2654435761u + y * 40503u + static_cast<unsigned>(c) * 97u + 1) * 2246822519u >> 7;
}

inline std::vector<uint8_t> noiseOf(size_t count) {
    std::vector<uint8_t> samples(count);
    uint32_t state = 12345;
    for (uint8_t& sample : samples)
        sample = static_cast<uint8_t>((state = state * 1103515245 + 12345) >> 16);
    return samples;
}

// A host's message: the stored form of a user tag list.
class Message {
  public:
    explicit Message(std::vector<VORN_Word> words) {
        words.push_back(TAG_End);
        const auto id = static_cast<uint32_t>(words[0]);
        items_.resize(VORN_L_UserTagListSize(id, &words[1]) / sizeof(VORN_TagItem) + 1);
        VORN_L_CopyUserTags(id, &words[1], items_.data(), 0);
    }

    const VORN_TagItem* list() const { return items_.data(); }

  private:
    std::vector<VORN_TagItem> items_;
};

inline VORN_Word word(const std::string& text) { return reinterpret_cast<VORN_Word>(text.c_str()); }
inline VORN_Word word(const char* text) { return reinterpret_cast<VORN_Word>(text); }

// The user's settings, none at first, for the time of a test.
class UserSettings {
  public:
    void store(const char* saver, const char* text) const {
        EXPECT_TRUE(VORN_H_ModuleStoreParameters(saver, VORN_SAVER, text));
    }

  private:
    ScratchDirectory directory_;
    ScopedVariable variable_{"XDG_CONFIG_HOME", directory_.path()};
};

// Saves lines that lie one after another as the saver wants them.
template <class Saver>
void save(const std::string& path,
          std::vector<VORN_Word> description,
          const std::vector<uint8_t>& samples) {
    description.insert(description.end(), {ITAG_Filename, word(path)});
    const Message message(std::move(description));
    formats::OutputFile file(path);
    Saver saver;
    const formats::ImageToSave image = formats::imageToSave(message.list());
    const formats::LineLayout layout = saver.open(image, file);
    const auto lineBytes =
        static_cast<size_t>(image.width * layout.channels * layout.bytesPerChannel);
    ASSERT_EQ(samples.size(), lineBytes * static_cast<size_t>(image.height));
    for (size_t at = 0; at < samples.size(); at += lineBytes) saver.writeLine(&samples[at]);
    saver.finish();
    file.commit();
}

inline Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

// The largest difference of two bytes; 256 when there are more of one than of the other.
inline int furthest(const Bytes& a, const Bytes& b) {
    int most = a.size() == b.size() ? 0 : 256;
    for (size_t i = 0; most < 256 && i < a.size(); ++i)
        most = std::max(most, std::abs(a[i] - b[i]));
    return most;
}

// A number as it stands in files, its least or its most significant byte first.
inline std::string little(uint64_t value, size_t bytes) {
    std::string text;
    for (; bytes > 0; --bytes, value >>= 8) text += static_cast<char>(value);
    return text;
}
inline std::string big(uint64_t value, size_t bytes) {
    const std::string text = little(value, bytes);
    return {text.rbegin(), text.rend()};
}

// A HEIF file with this size in its boxes, wherever the picture's own is.
inline std::string withSize(std::string file, uint32_t width, uint32_t height) {
    for (size_t at = 0; (at = file.find("ispe", at)) != std::string::npos; ++at)
        file.replace(at + 8, 8, big(width, 4) + big(height, 4));
    return file;
}

// Saves noise (or these samples), and expects the loader to bring the same picture back.
template <class Saver, class Loader>
LoadedImage throughFile(const std::string& path,
                        const std::vector<VORN_Word>& words,
                        Bytes samples = {}) {
    if (samples.empty()) samples = noiseOf(words[1] * words[3] * words[5] * words[9]);
    save<Saver>(path, words, samples);
    LoadedImage back = load<Loader>(path);
    const auto colorSpace = static_cast<int32_t>(words[7]);
    const auto channels = static_cast<int32_t>(words[5]);
    EXPECT_EQ(VORN_Word(back.image.width), words[1]);
    EXPECT_EQ(VORN_Word(back.image.height), words[3]);
    EXPECT_EQ(back.image.channels, channels);
    EXPECT_EQ(back.image.colorSpace, colorSpace);
    EXPECT_EQ(VORN_Word(back.image.bytesPerChannel), words[9]);
    EXPECT_EQ(back.image.alpha, channels > VORN_L_ColorSpaceChannels(colorSpace));
    EXPECT_TRUE(back.samples == samples);
    return back;
}

// What the saver says of an image that it can't save.
template <class Saver>
int32_t saveFailure(const std::string& path,
                    std::vector<VORN_Word> words,
                    const Bytes& samples = {}) {
    return failureOf([&] { save<Saver>(path, std::move(words), samples); });
}

// A test with files and settings of its own.
class FormatTest : public testing::Test {
  protected:
    ScratchDirectory files_;
    UserSettings settings_;
};
