// Reads BMP files.
#pragma once

#include <vector>

#include "formats/bmp/bmp_header.h"
#include "formats/common/loader.h"
#include "formats/common/upward_lines.h"

namespace bmp {

class BmpLoader final : public formats::Loader {
  public:
    formats::Description open(formats::InputFile file) override;
    void readLine(uint8_t* line) override;

  private:
    bool hasRuns() const {
        return header_.compression == kRunLength8 || header_.compression == kRunLength4;
    }
    void readIndices(uint8_t* line, const uint8_t* raw) const;
    void readFields(uint8_t* line, const uint8_t* raw) const;
    void readRuns(uint8_t* line);
    void readCommand(uint8_t* line, int command);
    void readLiterals(uint8_t* line, int count);
    void put(uint8_t* line, int index);
    int nextByte();

    formats::InputFile file_;
    Header header_;
    size_t width_ = 0;
    bool alpha_ = false;
    bool upward_ = false;         // lines are read from the end of the file on
    formats::UpwardLines lines_;  // where they are
    std::vector<uint8_t> raw_;    // else one line as it stands in the file
    size_t column_ = 0;           // of the next pixel of a run
    int32_t emptyLines_ = 0;      // that the runs have skipped
    bool ended_ = false;          // nothing more is to come
};

}  // namespace bmp
