#include "tags/tag_dump.h"

#include <cstdio>

#include "tags/tag_walk.h"

namespace vorn {
namespace {

constexpr size_t kValueSize = 128;

const char* typeText(uint32_t id) {
    switch (VORN_TAG_TYPE(id)) {
        case VORN_TYPE_LONG:
            return "Type: LONG";
        case VORN_TYPE_STRING:
            return "Type: STRING";
        case VORN_TYPE_DATA:
            return "Type: DATA";
        case VORN_TYPE_STRING_LIST:
            return "Type: STRING LIST";
        case VORN_TYPE_FUNCPTR:
            return "Type: FUNCPTR";
        case VORN_TYPE_DOUBLE:
            return "Type: DOUBLE";
        default:
            return "<unknown type>";
    }
}

void valueText(const VORN_TagItem* item, char (&text)[kValueSize]) {
    switch (VORN_TAG_TYPE(item->id)) {
        case VORN_TYPE_LONG:
            std::snprintf(text, kValueSize, "%d", VORN_L_TagGetLongVal(item));
            break;
        case VORN_TYPE_STRING:
            std::snprintf(text, kValueSize, "%.*s", static_cast<int>(itemDataSize(item)),
                          reinterpret_cast<const char*>(itemData(item)));
            break;
        case VORN_TYPE_DOUBLE:
            std::snprintf(text, kValueSize, "%g", VORN_L_TagGetDoubleVal(item));
            break;
        default:
            std::snprintf(text, kValueSize, "<unknown value>");
            break;
    }
}

}  // namespace
}  // namespace vorn

using namespace vorn;

void VORN_L_DumpTagList(const VORN_TagItem* list) {
    if (list == nullptr) {
        dbprint("< null tag list >\n");
        return;
    }
    for (const auto* item = firstItem(list); item->id != TAG_End; item = nextItem(item)) {
        char value[kValueSize];
        valueText(item, value);
        dbprint("\tTAG ID=%s, TAG %s, value: %s\n", VORN_L_gettagid(item->id), typeText(item->id),
                value);
    }
}
