#include "errors/error_strings.h"

#include <algorithm>

#include "support/text.h"
#include "support/text_file.h"

namespace vorn {
namespace {

constexpr size_t kLongestLine = 255;
constexpr std::string_view kLineEnds = "\r\n";

// Cuts the next line off the front of a text that is not empty.
std::string_view takeLine(std::string_view& text) {
    const size_t length = std::min(text.find_first_of(kLineEnds), text.size());
    const std::string_view line = text.substr(0, std::min(length, kLongestLine));
    text.remove_prefix(line.size());
    if (line.size() == length) {
        text.remove_prefix(text.starts_with("\r\n") ? 2 : text.empty() ? 0 : 1);
    }
    return line;
}

size_t countLines(std::string_view text) {
    size_t lines = 0;
    for (; !text.empty(); ++lines) {
        takeLine(text);
    }
    return lines;
}

// The line's text without its number, which is left alone when the line has none.
std::string_view splitLine(std::string_view line, int32_t& number) {
    line = line.substr(0, line.find_last_not_of(" \t") + 1);
    const size_t equals = line.find('=');
    if (equals != std::string_view::npos) {
        number = leadingNumber(line.substr(equals + 1));
    }
    return line.substr(0, equals);
}

int32_t successor(int32_t number) {
    return static_cast<int32_t>(static_cast<uint32_t>(number) + 1);
}

}  // namespace

void ErrorStrings::load(const char* path) {
    release();
    size_t length = 0;
    Owned<char> text = readTextFile(path, length);
    if (text == nullptr || length == 0) {
        return;
    }
    std::string_view rest(text.get(), length);
    const size_t count = countLines(rest);
    entries_ = allocCleared<Entry>(count);
    if (entries_ == nullptr) {
        return;
    }
    int32_t number = 0;
    for (count_ = 0; count_ < count; ++count_) {
        const std::string_view line = splitLine(takeLine(rest), number);
        entries_.get()[count_] = {number, static_cast<uint32_t>(line.data() - text.get()),
                                  static_cast<uint32_t>(line.size())};
        number = successor(number);
    }
    text_ = std::move(text);
}

void ErrorStrings::release() {
    entries_.reset();
    text_.reset();
    count_ = 0;
}

bool ErrorStrings::find(int32_t number, std::string_view& text) const {
    for (size_t i = 0; i < count_; ++i) {
        const Entry& entry = entries_.get()[i];
        if (entry.number == number) {
            text = {text_.get() + entry.start, entry.length};
            return true;
        }
    }
    return false;
}

}  // namespace vorn
