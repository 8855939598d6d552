#include "tools/fields.h"

#include <vorn/library.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <string_view>

#include "tools/failure.h"
#include "tools/handle.h"

namespace vorn::tool {

namespace {

constexpr std::array kTextFieldIds = {ITAG_Description,  ITAG_Artist,   ITAG_DateTime,
                                      ITAG_DocumentName, ITAG_PageName, ITAG_Software,
                                      ITAG_Make,         ITAG_Model,    ITAG_HostComputer};
constexpr std::array kNumberFieldIds = {ITAG_XDPI, ITAG_YDPI, ITAG_XAspect, ITAG_YAspect,
                                        ITAG_PageNumber};
constexpr std::string_view kPrefix = "ITAG_";

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    const auto same = [](unsigned char x, unsigned char y) {
        return std::tolower(x) == std::tolower(y);
    };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), same);
}

bool isNamed(unsigned id, std::string_view name) {
    const std::string plain = fieldName(id);
    return equalIgnoringCase(name, plain) ||
           equalIgnoringCase(name, std::string(kPrefix).append(plain));
}

std::string allNames() {
    std::string names;
    for (const auto ids : {textFieldIds(), numberFieldIds()}) {
        for (const unsigned id : ids) {
            names += (names.empty() ? "" : ", ") + fieldName(id);
        }
    }
    return names;
}

int32_t wholeNumber(const std::string& name, std::string_view value) {
    int32_t number = 0;
    const char* const end = value.data() + value.size();
    const auto result = std::from_chars(value.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end) {
        throw WrongUsage{"--set " + name + ": \"" + std::string(value) + "\" is no whole number"};
    }
    return number;
}

unsigned findNamed(std::span<const unsigned> ids, std::string_view name) {
    const auto found = std::ranges::find_if(ids, [name](unsigned id) { return isNamed(id, name); });
    return found == ids.end() ? TAG_End : *found;
}

}  // namespace

std::span<const unsigned> textFieldIds() { return kTextFieldIds; }

std::span<const unsigned> numberFieldIds() { return kNumberFieldIds; }

std::string fieldName(unsigned id) {
    std::string_view name = VORN_L_gettagid(id);
    name = name.substr(0, name.find(' '));
    if (name.starts_with(kPrefix)) {
        name.remove_prefix(kPrefix.size());
    }
    return std::string(name);
}

Fields fieldsOf(VORN_Image* image) {
    Fields fields;
    for (const unsigned id : kTextFieldIds) {
        if (auto text = textTag(image, id)) {
            fields.texts[id] = *std::move(text);
        }
    }
    for (const unsigned id : kNumberFieldIds) {
        if (const auto number = longTag(image, id)) {
            fields.numbers[id] = *number;
        }
    }
    return fields;
}

void setField(Fields& fields, const std::string& assignment) {
    const size_t equals = assignment.find('=');
    const std::string name = assignment.substr(0, equals);
    if (equals == std::string::npos) {
        throw WrongUsage{"--set " + name + ": write NAME=VALUE"};
    }
    const std::string value = assignment.substr(equals + 1);
    const unsigned textId = findNamed(kTextFieldIds, name);
    const unsigned numberId = findNamed(kNumberFieldIds, name);
    if (textId == TAG_End && numberId == TAG_End) {
        throw WrongUsage{"--set " + name + ": no such field; there are " + allNames()};
    }
    if (value.empty()) {
        fields.texts.erase(textId);
        fields.numbers.erase(numberId);
    } else if (textId != TAG_End) {
        fields.texts[textId] = value;
    } else {
        fields.numbers[numberId] = wholeNumber(name, value);
    }
}

void addFields(TagWords& words, const Fields& fields) {
    for (const auto& [id, text] : fields.texts) {
        words.addAddress(id, text.c_str());
    }
    for (const auto& [id, number] : fields.numbers) {
        words.addLong(id, number);
    }
}

}  // namespace vorn::tool
