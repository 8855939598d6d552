#include "tests/conversation/host.h"

#include "transport/image.h"

ModuleHome& moduleHome() {
    static ModuleHome home;
    return home;
}

int Module::program() const { return image_->process.id; }
