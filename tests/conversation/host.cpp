#include "tests/conversation/host.h"

#include "transport/image.h"

int Module::program() const { return image_->process.id; }
