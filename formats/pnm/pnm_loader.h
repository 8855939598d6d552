// Reads PNM files.
#pragma once

#include <vector>

#include "formats/common/loader.h"
#include "formats/pnm/pnm_header.h"

namespace pnm {

class PnmLoader final : public formats::Loader {
  public:
    formats::Description open(formats::InputFile file) override;
    void readLine(uint8_t* line) override;

  private:
    void makeScale();
    void readPlain(uint8_t* line);
    void readRawBits(uint8_t* line);
    void readRawBytes(uint8_t* line);
    void readRawWords(uint8_t* line);
    void store(uint8_t* line, size_t sample, int32_t value) const;

    formats::InputFile file_;
    Header header_;
    size_t samples_ = 0;           // in one line
    size_t bytes_ = 1;             // of one sample that is handed on
    std::vector<uint16_t> scale_;  // what each sample value of the file is handed on as
    std::vector<uint8_t> raw_;     // one line as it stands in the file
};

}  // namespace pnm
