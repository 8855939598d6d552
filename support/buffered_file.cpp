#include <vorn/support.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/file.h"
#include "support/file_error.h"
#include "support/memory.h"

namespace {

constexpr size_t kBufferSize = 65536;

int32_t& lastError() { return vorn::lastFileError(); }

}  // namespace

// One buffer serves reading (the bytes [start, end) come next) and writing ([0, end) are still to
// be written): a file is opened for one of the two.
struct VORN_File {
    vorn::platform::File file;
    bool writing = false;
    int32_t failed = 0;  // the first write error: what was written since may have gaps
    int64_t position =
        0;  // of the system's file: behind the buffer when reading, before it when writing
    size_t start = 0;
    size_t end = 0;
    uint8_t buffer[kBufferSize];

    int32_t flush() {
        size_t moved = 0;
        const int32_t error = file.write(buffer, end, moved);
        position += static_cast<int64_t>(moved);
        std::memmove(buffer, buffer + moved, end - moved);
        end -= moved;
        if (error && !failed) failed = error;
        return error;
    }

    int32_t read(uint8_t* destination, size_t count, size_t& done) {
        while (done < count) {
            if (start == end) {
                size_t moved = 0;
                start = end = 0;
                const bool direct = count - done >= kBufferSize;
                const int32_t error = direct ? file.read(destination + done, count - done, moved)
                                             : file.read(buffer, kBufferSize, moved);
                position += static_cast<int64_t>(moved);
                if (direct)
                    done += moved;
                else
                    end = moved;
                if (error || moved == 0 || direct) return error;
            }
            const size_t part = std::min(count - done, end - start);
            std::memcpy(destination + done, buffer + start, part);
            start += part;
            done += part;
        }
        return 0;
    }

    int32_t write(const uint8_t* source, size_t count, size_t& done) {
        while (done < count) {
            const size_t part = std::min(count - done, kBufferSize - end);
            std::memcpy(buffer + end, source + done, part);
            end += part;
            done += part;
            if (end < kBufferSize) break;
            if (const int32_t error = flush()) return error;
        }
        return 0;
    }

    int64_t tell() const {
        return writing ? position + static_cast<int64_t>(end)
                       : position - static_cast<int64_t>(end - start);
    }

    int32_t seek(int64_t target) {
        if (!writing && target >= position - static_cast<int64_t>(end) && target <= position) {
            start = static_cast<size_t>(target - (position - static_cast<int64_t>(end)));
            return 0;
        }
        if (writing) {
            if (const int32_t error = flush()) return error;
        }
        if (const int32_t error = file.seek(target)) return error;
        position = target;
        start = end = 0;
        return 0;
    }
};

extern "C" {

VORN_File* BOpenFile(const char* path, int32_t mode) {
    if (!path || (mode != BFILE_Read && mode != BFILE_Write)) {
        lastError() = EINVAL;
        return nullptr;
    }
    void* memory = AllocMemory(sizeof(VORN_File), 0);
    if (!memory) {
        lastError() = ENOMEM;
        return nullptr;
    }
    auto* file = new (memory) VORN_File;
    file->writing = mode == BFILE_Write;
    lastError() =
        file->writing ? file->file.openForReplacing(path) : file->file.openForReading(path);
    if (lastError() == 0) return file;
    const int32_t error = lastError();
    BClose(file);
    lastError() = error;
    return nullptr;
}

int32_t BRead(VORN_File* file, void* buffer, int32_t count) {
    size_t done = 0;
    lastError() = file->writing || count < 0
                      ? EBADF
                      : file->read(static_cast<uint8_t*>(buffer), static_cast<size_t>(count), done);
    return static_cast<int32_t>(done);
}

int32_t BWrite(VORN_File* file, const void* buffer, int32_t count) {
    size_t done = 0;
    lastError() = !file->writing || count < 0 ? EBADF
                                              : file->write(static_cast<const uint8_t*>(buffer),
                                                            static_cast<size_t>(count), done);
    return lastError() ? 0 : static_cast<int32_t>(done);
}

int64_t BSeek(VORN_File* file, int64_t offset, int32_t origin) {
    int64_t target = offset;
    const bool valid = (origin == 0 || origin == 1) &&
                       !(origin == 1 && __builtin_add_overflow(file->tell(), offset, &target)) &&
                       target >= 0;
    lastError() = valid ? file->seek(target) : EINVAL;
    return lastError() ? -1 : target;
}

int64_t BFileSize(VORN_File* file) {
    int64_t bytes = 0;
    lastError() = file->file.size(bytes);
    if (lastError()) return -1;
    return file->writing ? std::max(bytes, file->tell()) : bytes;
}

VORN_Bool BCommit(VORN_File* file) {
    lastError() = file->writing ? file->flush() : EBADF;
    if (lastError() == 0) lastError() = file->failed;
    if (lastError() == 0) lastError() = file->file.commit();
    return lastError() == 0;
}

void BClose(VORN_File* file) {
    if (!file) return;
    file->~VORN_File();
    FreeMemory(file);
    lastError() = 0;
}

int32_t BGetErrorCode(void) { return lastError(); }

}  // extern "C"
