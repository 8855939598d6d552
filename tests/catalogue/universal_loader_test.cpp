#include "catalogue/universal_loader.h"

#include "tests/catalogue/catalogue_fixture.h"

namespace {

// The answer on a thread that has not loaded the library yet, or "none".
std::string ask() {
    std::string result = "none";
    std::thread([&] {
        char answer[vorn::platform::kMaxPath];
        if (vorn::askUniversalLoader("x", answer)) {
            result = answer;
        }
    }).join();
    return result;
}

TEST(UniversalLoader, IsFoundWhereTheHomeDirectoryLies) {
    const ScratchDirectory place;
    place.write("VORN/Errors", "");
    const ScopedVariable home("VORN", place.path("VORN"));
    EXPECT_EQ(ask(), "none");
    for (const char* name : {"lib/libvornunv.so", "libvornunv.so"}) {
        place.makeDirectory("lib");
        std::filesystem::copy_file(FAKE_UNIVERSAL_LOADER, place.path(name));
        EXPECT_EQ(ask(), "loader-of-x") << name;
        place.remove(name);
    }
    place.write("libvornunv.so", "not a library");
    EXPECT_EQ(ask(), "none");
}

}  // namespace
