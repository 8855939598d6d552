// The file "Errors" of the home directory.
#include <sys/mman.h>
#include <unistd.h>

#include "errors/error_strings.h"
#include "fuzz/texts.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text = textOf(data, size);
    // A file in memory: it has a path as long as it is open.
    static const int file = ::memfd_create("Errors", MFD_CLOEXEC);
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    expect(::ftruncate(file, 0) == 0 &&
           ::pwrite(file, data, size, 0) == static_cast<ssize_t>(size));
    vorn::ErrorStrings table;
    table.load(path.c_str());
    expect(table.isLoaded() == (size > 0));
    for (const int32_t number : {0, 1, 17, 1001, -1, INT32_MAX, INT32_MIN}) {
        std::string_view found;
        if (!table.find(number, found)) continue;
        expect(found.size() <= 255);
        expect(found.empty() || text.find(found) != std::string::npos);
    }
    return 0;
}
