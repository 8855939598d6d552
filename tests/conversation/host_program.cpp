// A host of its own. Arguments: "idle", "reading" and "writing" begin a conversation, write the
// numbers of the host's and the module's programs to the pipe that the environment names, and wait
// to be killed; "leaving" ends without closing anything.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "tests/conversation/host.h"

// The test that starts this program has installed them.
void installLoader(const std::string&) {}
void installSaver(const std::string&, const std::string&) {}

namespace {

int32_t tellAndWait(const Module& module) {
    std::ofstream(std::getenv("VORN_TEST_PIPE")) << ::getpid() << " " << module.program() << "\n";
    for (;;) ::pause();
}

void meterAndWait(VORN_Image*, VORN_Word data, int32_t) {
    tellAndWait(*reinterpret_cast<const Module*>(data));
}

int hold(const std::string& how) {
    Loader loader;
    Saver saver;
    const Picture picture = plainPicture({10, 100, 3, 1});
    if (how == "writing") {
        if (!saver.open(std::getenv("VORN_TEST_TARGET"))) return 1;
        saver.describe(picture, VORN_CS_RGB);
        return saver.write(picture,
                           words(ITAG_MeterCallback, meterAndWait, ITAG_MeterCallbackUserData,
                                 static_cast<Module*>(&saver)));
    }
    if (!loader.open("w=10,h=100,block=4")) return 1;
    if (how == "leaving") std::_Exit(0);
    if (how == "idle") return tellAndWait(loader);
    return loader.read(picture, words(ITAG_MeterCallback, meterAndWait, ITAG_MeterCallbackUserData,
                                      static_cast<Module*>(&loader)));
}

}  // namespace

int main(int argc, char** argv) { return hold(argc > 1 ? argv[1] : ""); }
