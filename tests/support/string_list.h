#pragma once

#include <vorn/host.h>

#include <string>
#include <vector>

using Strings = std::vector<std::string>;

// Takes a string list over.
inline Strings taken(char** list) {
    Strings strings;
    for (char** entry = list; entry != nullptr && *entry != nullptr; ++entry)
        strings.emplace_back(*entry);
    VORN_H_FreeStringList(list);
    return strings;
}
