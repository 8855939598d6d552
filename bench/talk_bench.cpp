// What it costs to go through other programs: hand-offs, blocks, starts, whole pictures, each side
// by side with the same done without the library.
//
//     talk_bench [hand-off|start|pictures]...
#include <string>

#include "rows.h"

int main(int argc, char** argv) {
    const auto wanted = [&](const std::string& name) {
        if (argc == 1) return true;
        for (int i = 1; i < argc; ++i) {
            if (argv[i] == name) return true;
        }
        return false;
    };
    if (wanted("hand-off")) vorn_bench::handOffRows();
    if (wanted("start")) vorn_bench::startRows();
    if (wanted("pictures")) vorn_bench::pictureRows();
    return 0;
}
