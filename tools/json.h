// JSON as the tool writes it.
#pragma once

#include <nlohmann/json.hpp>

namespace vorn::tool {

// Members in the order in which they were added.
using Json = nlohmann::ordered_json;

// Two blanks of indentation; everything but printable ASCII escaped, bytes that are no UTF-8
// replaced.
inline void printJson(const Json& json) {
    const std::string text = json.dump(2, ' ', true, Json::error_handler_t::replace);
    std::printf("%s\n", text.c_str());
}

}  // namespace vorn::tool
