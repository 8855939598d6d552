// What a PNG file says beside its pixels, between libpng's records and VORN's tags.
#pragma once

#include <vector>

#include "formats/common/description.h"
#include "formats/common/image_to_save.h"
#include "formats/png/png_session.h"

namespace png {

// Adds orientation, resolution and text fields of a file that was read to its description.
// `behind` has read the chunks behind the pixels, or is null.
void describe(const Session& session, const Session* behind, formats::Description& image);

// Puts the resolution and the text fields of an image into the file that is being written.
void putResolution(Session& session, const formats::ImageToSave& image);
void putTexts(Session& session, const formats::ImageToSave& image);

}  // namespace png
