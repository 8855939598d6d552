// The host's end of a conversation.
#pragma once

#include <gtest/gtest.h>
#include <vorn/host.h>
#include <vorn/library.h>

#include <string>
#include <vector>

#include "tests/conversation/module_home.h"
#include "tests/conversation/pictures.h"
#include "tests/conversation/traces.h"
#include "tests/support/module_image.h"
#include "transport/image.h"

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

// A module's handle, and one picture after the other.
class Module : public Image {
  public:
    Module(const std::string& name, int32_t type) : Image(name.c_str(), type) {}
    operator VORN_Image*() const { return get(); }

    // Closes the picture before, if there is one.
    bool open(const std::string& fileName) {
        if (isOpen_) close();
        isOpen_ = true;
        return Image::open(fileName);
    }
    bool close() {
        isOpen_ = false;
        return Image::close();
    }

    template <class... Values>
    bool set(Values... values) const {
        return VORN_H_ImageSetTags(get(), words(values...).data());
    }
    int32_t number(uint32_t id) const {
        int32_t value = -1;
        VORN_H_ImageVaGetTags(get(), id, VORN_Word(&value), TAG_End);
        return value;
    }

    // Sets what describes a picture to a saver. `wishes` are test_saver's.
    void describe(const Picture& picture,
                  int colorSpace,
                  const std::string& wishes = "",
                  int orientation = 0) const {
        const VORN_ChunkyBuffer& record = picture.record;
        set(ITAG_Width, record.width, ITAG_Height, record.height, ITAG_Channels, record.channels,
            ITAG_ImageChannelSize, record.bytesPerChannel, ITAG_ColorSpace, colorSpace,
            ITAG_Orientation, orientation, ITAG_DocumentName, wishes.c_str());
    }

    bool read(const Picture& target, const std::vector<VORN_Word>& tags = words()) const {
        const VORN_ImageBuffer buffer = bufferOf(target);
        return VORN_H_ImageReadData(get(), &buffer, tags.data());
    }
    bool write(const Picture& source, const std::vector<VORN_Word>& tags = words()) const {
        const VORN_ImageBuffer buffer = bufferOf(source);
        return VORN_H_ImageWriteData(get(), &buffer, tags.data());
    }

    // The number of the module program, -1 when there is none.
    int program() const { return get()->process.id; }
    int watch() const { return watchProgram(program()); }

  private:
    bool isOpen_ = false;
};

class Loader : public Module {
  public:
    explicit Loader(const std::string& name = "loader")
        : Module((installLoader(name), name), VORN_LOADER) {}

    // Opens and reads a picture of test_loader's into plain memory and compares it.
    testing::AssertionResult reads(const std::string& fileName) {
        const Picture expected = loadersPicture(fileName);
        const Picture target = plainPicture(shapeOf(expected));
        if (!open(fileName)) return testing::AssertionFailure() << "open: error " << error();
        if (!read(target)) return testing::AssertionFailure() << "read: error " << error();
        return same(target, expected);
    }
};

class Saver : public Module {
  public:
    explicit Saver(const std::string& name = "saver",
                   const std::string& colorSpaces = "RGB,Gray,YUV601,CMYK")
        : Module((installSaver(name, colorSpaces), name), VORN_SAVER) {}
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
