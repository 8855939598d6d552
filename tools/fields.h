// The tags that say something about a picture without changing its pixels. They are carried from
// the picture that is read to the one that is written, and may be set on the command line.
#pragma once

#include <vorn/host.h>

#include <cstdint>
#include <map>
#include <span>
#include <string>

#include "tools/tag_words.h"

namespace vorn::tool {

std::span<const unsigned> textFieldIds();
std::span<const unsigned> numberFieldIds();

// The name in the tag catalogue, without prefix: "Artist", "XDPI".
std::string fieldName(unsigned id);

struct Fields {
    std::map<unsigned, std::string> texts;
    std::map<unsigned, int32_t> numbers;
};

// What the image says about itself, in the orientation that the host has asked for.
Fields fieldsOf(VORN_Image* image);

// Applies one NAME=VALUE (names without regard to case, with or without "ITAG_"). An empty value
// removes the field. Throws WrongUsage.
void setField(Fields& fields, const std::string& assignment);

// Adds the fields to a tag list, which then points into `fields`.
void addFields(TagWords& words, const Fields& fields);

}  // namespace vorn::tool
