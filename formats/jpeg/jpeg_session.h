// libjpeg behind a border that no exception and no longjmp crosses the wrong way.
#pragma once

// clang-format off
#include <cstddef>
#include <cstdio>
#include <jpeglib.h>  // wants these two first
// clang-format on

#include <csetjmp>

#include "formats/common/failure.h"

namespace jpeg {

// What libjpeg calls when something is wrong, for one compressor or decompressor.
class Session {
  public:
    Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    jpeg_error_mgr* errors() { return &record_.manager; }

    // The file was damaged, in a way that libjpeg could bridge.
    bool isDamaged() const { return record_.damaged; }

    // Runs calls of libjpeg; throws when one of them fails. The body may be left in the middle, so
    // nothing in it may have a destructor.
    template <class Body>
    void run(Body body) {
        if (setjmp(record_.back) != 0) throw record_.failure;
        body();
    }

    // For callbacks of libjpeg, which must not throw: runs the body, and hands what it throws on to
    // the run() that libjpeg was called from.
    template <class Body>
    static void callback(j_common_ptr codec, Body body) {
        bool failed = false;
        try {
            body();
        } catch (const formats::Failure& failure) {
            recordOf(codec).failure = failure;
            failed = true;
        } catch (...) {
            recordOf(codec).failure = formats::Failure{formats::kOutOfMemory};
            failed = true;
        }
        if (failed) std::longjmp(recordOf(codec).back, 1);
    }

  private:
    struct Record {
        jpeg_error_mgr manager{};  // first: libjpeg's pointer to it is a pointer to the record
        std::jmp_buf back{};
        formats::Failure failure{formats::kDamaged};
        bool damaged = false;
    };

    static Record& recordOf(j_common_ptr codec) { return *reinterpret_cast<Record*>(codec->err); }
    static void fail(j_common_ptr codec);
    static void message(j_common_ptr codec, int level);

    Record record_;
};

}  // namespace jpeg
