// The tool, run as users run it, and the pictures that it is given.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/scratch_home.h"
#include "tests/support/program.h"

using nlohmann::json;

Ended vorn(Arguments arguments, const ProgramOptions& options = {});

// Expects that the run has done what it should, without a word on standard error.
void expectDone(const Ended& ended);

// Expects one line "vorn: FILE: text (code, subcode)" on standard error, and exit status 1.
void expectFailure(const Ended& ended, const std::string& file, const std::string& numbers);

// What the command shows with "--json".
json shownAsJson(Arguments arguments);

// A raw anymap of 8 bits: "P5" or "P6".
std::string anymap(const std::string& kind,
                   int width,
                   int height,
                   const std::vector<uint8_t>& samples);
