#include "formats/png/png_text.h"

#include <vorn/tags.h>

namespace png {

const TextField kTextFields[kTextFieldCount] = {
    {ITAG_Artist, "Author", "Artist"},
    {ITAG_DateTime, "Creation Time", nullptr},
    {ITAG_HostComputer, "HostComputer", nullptr},
    {ITAG_Description, "Description", "Comment"},
    {ITAG_Make, "Make", nullptr},
    {ITAG_Model, "Model", "Source"},
    {ITAG_Software, "Software", nullptr},
    {ITAG_DocumentName, "Title", nullptr},
    {ITAG_PageName, "PageName", nullptr},
};

}  // namespace png
