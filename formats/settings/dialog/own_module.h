// Whose dialog this is: the library is called like its module and lies beside it.
#pragma once

#include <cstdint>
#include <string>

namespace settings {

struct OwnModule {
    std::string name;
    int32_t type = 0;
};

OwnModule ownModule();

}  // namespace settings
