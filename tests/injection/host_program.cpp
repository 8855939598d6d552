// A host of its own that goes through one conversation: "Loading" or "Saving", and the
// directory for the file. It dies at the step that the environment names.
#include <string>

#include "tests/injection/talk.h"

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    const bool saving = std::string(argv[1]) == nameOf(Kind::Saving);
    Talk talk(saving ? Kind::Saving : Kind::Loading, argv[2]);
    if (!talk.whole()) return 1;
    talk.close();
    talk.closeConnection();
    return 0;
}
