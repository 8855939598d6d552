// The host's end of a conversation.
#pragma once

#include <gtest/gtest.h>
#include <vorn/host.h>
#include <vorn/library.h>

#include <string>
#include <utility>

#include "tests/conversation/module_home.h"
#include "tests/conversation/pictures.h"
#include "tests/conversation/traces.h"

// Tag words: ids as they stand, values cast.
template <class... Values>
std::vector<VORN_Word> words(Values... values) {
    return {VORN_Word(values)..., VORN_Word{TAG_End}};
}

// What a transfer's callbacks were told, and when they stop it.
struct Calls {
    std::vector<int32_t> counts;  // of the meter
    int aborts = 0;               // calls of the abort callback
    int stopAt = 0;               // the one that stops the transfer; 0: none
    size_t stopAfter = 0;         // the count behind which it is stopped; 0: none

    static void meter(VORN_Image*, VORN_Word self, int32_t count) {
        reinterpret_cast<Calls*>(self)->counts.push_back(count);
    }
    static int32_t abort(VORN_Image*, VORN_Word self) {
        auto& calls = *reinterpret_cast<Calls*>(self);
        return ++calls.aborts == calls.stopAt ||
               (calls.stopAfter > 0 && calls.counts.size() == calls.stopAfter);
    }
    // Tags of a transfer that calls them. Without `ticks` nothing is said of them.
    std::vector<VORN_Word> tags(bool metered, int ticks = -1) {
        return words(metered ? ITAG_MeterCallback : TAG_SkipTag, &meter, ITAG_MeterCallbackUserData,
                     this, ITAG_AbortCallback, &abort, ITAG_AbortCallbackUserData, this,
                     ticks >= 0 ? ITAG_MeterTicks : TAG_SkipTag, ticks);
    }
};

// A module handle that is closed at the end.
class Module {
  public:
    Module(const std::string& name, int32_t type)
        : image_(VORN_H_ModuleVaOpen(name.c_str(), type, TAG_End)) {}
    ~Module() { close(); }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    VORN_Image* image() const { return image_; }
    operator VORN_Image*() const { return image_; }

    bool open(const std::string& fileName) {
        return VORN_H_ImageVaOpen(image_, ITAG_Filename, VORN_Word(fileName.c_str()), TAG_End);
    }
    bool closeImage() { return VORN_H_ImageClose(image_); }
    void close() { VORN_H_ModuleClose(std::exchange(image_, nullptr)); }

    int32_t code() const { return VORN_ErrorPairCode(VORN_H_ImageGetError(image_)); }
    int32_t subcode() const { return VORN_ErrorPairSubcode(VORN_H_ImageGetError(image_)); }
    int32_t number(uint32_t id) const {
        int32_t value = -1;
        VORN_H_ImageVaGetTags(image_, id, VORN_Word(&value), TAG_End);
        return value;
    }

    int program() const;  // the number of the module program, -1 when there is none
    int watch() const { return watchProgram(program()); }

  private:
    VORN_Image* image_;
};

class Loader : public Module {
  public:
    explicit Loader(const std::string& name = "loader")
        : Module((installLoader(name), name), VORN_LOADER) {}

    bool read(const Picture& target) {
        const VORN_ImageBuffer buffer = bufferOf(target);
        return VORN_H_ImageVaReadData(image(), &buffer, TAG_End);
    }
    bool read(const Picture& target, const std::vector<VORN_Word>& tags) {
        const VORN_ImageBuffer buffer = bufferOf(target);
        return VORN_H_ImageReadData(image(), &buffer, tags.data());
    }

    // Opens and reads a picture of test_loader's into plain memory and compares it.
    testing::AssertionResult reads(const std::string& fileName) {
        const Picture expected = loadersPicture(fileName);
        const Picture target = plainPicture(shapeOf(expected));
        if (!open(fileName)) return testing::AssertionFailure() << "open: error " << code();
        if (!read(target)) return testing::AssertionFailure() << "read: error " << code();
        return same(target, expected);
    }
};

class Saver : public Module {
  public:
    explicit Saver(const std::string& name = "saver",
                   const std::string& colorSpaces = "RGB,Gray,YUV601,CMYK")
        : Module((installSaver(name, colorSpaces), name), VORN_SAVER) {}

    // Sets what describes a picture. `wishes` are test_saver's.
    void describe(const Picture& picture,
                  int colorSpace,
                  const std::string& wishes = "",
                  int orientation = 0) {
        const VORN_ChunkyBuffer& record = picture.record;
        VORN_H_ImageVaSetTags(image(), ITAG_Width, VORN_Word(record.width), ITAG_Height,
                              VORN_Word(record.height), ITAG_Channels, VORN_Word(record.channels),
                              ITAG_ImageChannelSize, VORN_Word(record.bytesPerChannel),
                              ITAG_ColorSpace, VORN_Word(colorSpace), ITAG_Orientation,
                              VORN_Word(orientation), ITAG_DocumentName, VORN_Word(wishes.c_str()),
                              TAG_End);
    }
    bool write(const Picture& source) { return write(source, words()); }
    bool write(const Picture& source, const std::vector<VORN_Word>& tags) {
        const VORN_ImageBuffer buffer = bufferOf(source);
        return VORN_H_ImageWriteData(image(), &buffer, tags.data());
    }
};

class ConversationTest : public NothingStays {
  protected:
    void SetUp() override {
        moduleHome();
        NothingStays::SetUp();
    }
    void TearDown() override {
        awaitProgramsIn(moduleHome().path());
        NothingStays::TearDown();
    }
};
